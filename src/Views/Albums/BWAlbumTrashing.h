#pragma once

#include "Model/Albums/BWAlbum.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QUrl>

class BWAlbumManager;
class BWAlbumNotice;
struct BWAlbumTexts;

/// Moves files of the current album to the Trash when the user confirms it, and offers the way back. GUI thread.
class BWAlbumTrashing : public QObject {
    Q_OBJECT

public:
    BWAlbumTrashing(BWAlbumManager &albums, const BWAlbumTexts &texts, BWAlbumNotice &notice);

    /// False, and nothing happens, unless the user confirms it.
    bool trash(const QList<QUrl> &files, BWMediaType type);
    /// Brings back what was moved the last time, if that has not been done yet.
    void undo();

private:
    BWAlbumManager &m_albums;
    const BWAlbumTexts &m_texts;
    BWAlbumNotice &m_notice;
};
