// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbumContents.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Model/Thumbnails/BWThumbnails.h"
#include "Utils/BWMainQueue.h"
#include "Views/Albums/BWAlbumFileActions.h"
#include "Views/Albums/BWAlbumGridModel.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <memory>
#include <QHash>
#include <QUrl>

class BWAlbumFooter;
class BWAlbumManager;
class BWAlbumNotice;
class BWLightTabView;
class QComboBox;
class QLabel;
class QToolButton;

/// The album window: the current album, its images and videos as grids of thumbnails, and actions on them. A utility
/// window beside the camera window. It wires its parts together; the manager has the rules of albums. GUI thread.
class BWAlbumManagerWindowController : public BWUtilityPanel, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    static constexpr QLatin1StringView frameName{"albums"}; ///< BWFrameAutosave's
    static constexpr QSize defaultContentSize{287, 550};

    using Callbacks = BWAlbumFileActions::Callbacks;

    BWAlbumManagerWindowController(BWAlbumManager &albums, BWUserDefaults &defaults, Callbacks callbacks,
                                   QWidget *cameraWindow, BWClock &clock = BWClock::system());
    ~BWAlbumManagerWindowController() override;

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Whether files are being saved elsewhere.
    bool isSaving() const { return m_actions->isSaving(); }

    /// Asks how fast, and where, then makes a movie of the pictures, in the order of their names.
    void joinPictures(const QList<QUrl> &pictures) { m_actions->joinPictures(pictures); }

    void onAddAlbum();
    void onRemoveAlbum();
    void onChangeAlbum(int index);

protected:
    /// Gives the window its default size and puts it to the right of the camera window, which makes room.
    void place(QWidget &cameraWindow) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void layOut();
    void connectParts();
    void reloadAlbums();
    bool makeFolder(const QUrl &folder);
    void reloadGrids(bool keepSelection);
    void changedByUser();
    void updateNotices();
    void updateSummary();
    void wantThumbnails();
    BWThumbnailTableView &currentGrid() const;

    BWAlbumManager &m_albums;
    BWFilePanels &m_panels;
    BWAlbumTexts m_texts;
    QComboBox *m_popUp;
    QLabel *m_popUpLabel;
    QToolButton *m_add;
    QToolButton *m_remove;
    BWLightTabView *m_tabs;
    BWThumbnailTableView *m_images;
    BWThumbnailTableView *m_videos;
    BWAlbumFooter *m_footer;
    BWAlbumNotice *m_notice;
    BWAlbumContents m_contents;
    BWThumbnails m_thumbnails;
    QList<QUrl> m_wanted;
    int m_wantedPixels = 0;
    std::unique_ptr<BWAlbumFileActions> m_actions;
    std::unique_ptr<BWAlbumGridModel> m_model;
    bool m_shown = false; // at least once; only then the album is listed
    bool m_reloading = false;
    QHash<QUrl, QUrl> m_renamed; // since the last reload
    BWAliveToken m_alive;
};
