// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbumManager.h"
#include "Model/Albums/BWFileManager.h"
#include "Views/Albums/BWAlbumTexts.h"

#include <functional>
#include <QObject>
#include <QPointer>

class QMenu;
class QProgressDialog;

/// What the user does with files of albums in whichever window they show: copy them for other programs, show them in the
/// file manager, rename them, move them to another album, undo that. Asks and reports over that window. GUI thread.
class BWFileActions : public QObject {
    Q_OBJECT

public:
    struct Callbacks {
        /// How it went, for the user; whether that can be undone.
        std::function<void(const QString &text, bool canUndo)> report;
        std::function<bool(const QUrl &file)> open; ///< with the desktop's program for it; false if there is none
    };

    /// All must outlive this object. The texts are used as they are by then.
    BWFileActions(QWidget &window, BWAlbumManager &albums, const BWAlbumTexts &texts, Callbacks callbacks);

    /// The names of several files are too long: their number.
    static QString nameOrCount(const QList<QUrl> &files);

    /// One with the desktop's program for it, or says that there is none.
    void open(const QUrl &file);
    /// To the clipboard; a single picture also as such.
    void copy(const QList<QUrl> &files);
    /// A picture that is in no file.
    void copyPicture(const QByteArray &jpeg);
    void showInFileManager(const QList<QUrl> &files);
    /// Asks what it is to be called; its number stays.
    void rename(const QUrl &file);
    void move(const QList<QUrl> &files, const BWAlbumPtr &album);
    /// Fills a menu with the albums to which these files can go.
    void offerAlbums(QMenu &menu, const QList<QUrl> &files);
    bool canUndo() const { return m_albums.moves().canUndo(); }
    void undo();

private:
    QPointer<QProgressDialog> beginProgress(const QString &text);
    void put(const QList<QUrl> &files, const std::function<QByteArray()> &picture, const QString &said);
    void report(const BWFileMoves::Result &result, const std::function<QString(const QString &names)> &done,
                bool canUndo);

    QWidget &m_window;
    BWAlbumManager &m_albums;
    const BWAlbumTexts &m_texts;
    const Callbacks m_callbacks;
    BWFileManager m_fileManager;
    QPointer<QProgressDialog> m_progress; // while files are moved
    int m_copies = 0; // to the clipboard, begun
    BWAliveToken m_alive;
    BWWorkerPool m_workers{2, std::chrono::milliseconds(0)}; // one may wait for a disk
};
