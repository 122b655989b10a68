// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbumContents.h"
#include "Model/Albums/BWAlbumStepper.h"
#include "Model/Albums/BWStillLoader.h"
#include "Views/Albums/BWAlbumTexts.h"

#include <functional>
#include <QObject>

class BWLocalizationManager;
class BWMainWindow;
class BWPictureCaption;
class BWSceneController;
class BWStatusLine;

/// Looks back at the captures of the current album in the main window, in place of the live image: shows one, steps
/// through the others, moves it to the Trash, plays a movie, goes back. GUI thread.
class BWLookBackController : public QObject {
    Q_OBJECT

public:
    /// Opens a file with the desktop's program for it; false if there is none.
    using OpenUrl = std::function<bool(const QUrl &)>;

    /// All must outlive this object. `contents` follows the albums.
    BWLookBackController(BWMainWindow &window, BWSceneController &scene, BWAlbumManager &albums,
                         const BWAlbumContents &contents, BWStatusLine &statusLine, BWLocalizationManager &texts,
                         OpenUrl openUrl, BWClock &clock = BWClock::system());

    /// A file of the current album.
    void show(const QUrl &file);
    /// Back to the live image; without effect unless a file is shown.
    void end();
    /// The one that is shown, or on its way; empty if there is none.
    const QUrl &file() const { return m_stepper.file(); }
    bool isActive() const { return !m_stepper.file().isEmpty(); }

Q_SIGNALS:
    /// What was done last with a file is not that it was moved to the Trash.
    void undoMoveRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeCaption();
    bool takes(const QKeyEvent &key) const;
    bool press(const QKeyEvent &key);
    void load();
    void loaded(const BWAlbumPicture &still);
    void followFile();
    void updateCaption();
    void followAlbum();
    void leave();
    void step(bool forward);
    void play();
    void trash();
    bool isMeasuring() const;
    void undoTrash();

    BWMainWindow &m_window;
    BWSceneController &m_scene;
    BWAlbumManager &m_albums;
    const BWAlbumContents &m_contents;
    BWStatusLine &m_statusLine;
    BWLocalizationManager &m_texts;
    const OpenUrl m_openUrl;
    BWAlbumTexts m_albumTexts;
    BWAlbumPtr m_album;
    BWAlbumStepper m_stepper;
    BWStillLoader m_loader;
    BWAlbumPicture m_still; // that shows; without its image
    bool m_isLoading = false;
    bool m_isReading = false; // for so long that the view is empty
    bool m_mayDiffer = false; // the file, from what shows of it
    QString m_liveName; // of the view, for screen readers
    BWPictureCaption *m_caption = nullptr; // the window's
    BWAliveToken m_alive;
};
