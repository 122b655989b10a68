// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"
#include "Model/Albums/BWAlbum.h"
#include "Model/Export/BWFileExport.h"
#include "Model/Export/BWMovieExport.h"
#include "Views/Albums/BWFileActions.h"

#include <functional>
#include <QList>
#include <QObject>
#include <QUrl>

class BWAlbumFooter;
class BWAlbumManager;
class BWAlbumNotice;
class BWFilePanels;

/// What the user does with files of the current album: save them elsewhere, open them, move them to the Trash and bring
/// them back. Asks and reports over the album window. GUI thread.
class BWAlbumFileActions : public QObject {
    Q_OBJECT

public:
    /// The world outside the program.
    struct Callbacks {
        BWFilePanels &panels;
        std::function<bool(const QUrl &file)> open; ///< with the desktop's program for it; false if there is none
        std::function<void(const QUrl &file)> show; ///< in the main window
        std::function<void(const QUrl &file)> compare; ///< with the live image
        std::function<BWMovieExport::Choices()> movieChoices = {}; ///< what the user chose last
        std::function<void(const BWMovieExport::Choices &choices)> setMovieChoices = {};
        std::function<void(bool isSaving)> savingChanged = {};
    };

    BWAlbumFileActions(QWidget &window, BWAlbumManager &albums, Callbacks callbacks, const BWAlbumTexts &texts,
                       BWAlbumFooter &footer, BWAlbumNotice &notice, BWClock &clock = BWClock::system());

    /// Asks where, then saves in the background: one file as a copy, several as a ZIP archive named after the album. A
    /// second request waits for the first.
    void save(const QList<QUrl> &files, BWMediaType type);
    /// Asks how, and where, then saves smaller copies of movies in the same way: several into one folder.
    void makeSmaller(const QList<QUrl> &movies);
    /// Asks how fast, and where, then makes one movie of the pictures.
    void joinPictures(const QList<QUrl> &pictures);
    bool isSaving() const { return m_export.isRunning(); }
    /// Stops saving, and drops the requests that wait.
    void cancelSaving();

    /// In the main window.
    void show(const QUrl &file) { m_callbacks.show(file); }
    /// With the live image.
    void compare(const QUrl &file) { m_callbacks.compare(file); }
    /// Asks first if there are many.
    void open(const QList<QUrl> &files);

    /// False, without any effect, unless the user confirms it.
    bool trash(const QList<QUrl> &files, BWMediaType type);
    /// Brings back the files of the last move to the Trash, or undoes what was done later with files(), once.
    void undo();

    /// What can be done with them elsewhere, too.
    BWFileActions &files() { return m_files; }

private:
    struct Job {
        QUrl target;
        QList<QUrl> files;
        BWFileExport::Work work = {}; ///< if they are not saved as they are
    };

    BWMovieExport::Choices movieChoices() const;
    void makeSmaller(const QList<QUrl> &movies, BWSmallerMovie::Quality quality);
    void askWhereToJoin(const QList<QUrl> &pictures, int rate);
    void enqueue(const Job &job);
    void startNextExport();
    void showProgress(const QString &text, double done);
    void exportFinished(const BWExportResult &result);

    QWidget &m_window;
    BWAlbumManager &m_albums;
    const Callbacks m_callbacks;
    const BWAlbumTexts &m_texts;
    BWAlbumFooter &m_footer;
    BWAlbumNotice &m_notice;
    BWFileActions m_files;
    BWFileExport m_export;
    QList<Job> m_waiting;
    BWClock &m_clock;
    BWTimeLeft m_timeLeft;
};
