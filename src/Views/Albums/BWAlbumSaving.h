#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Model/Export/BWFileExport.h"

#include <QList>
#include <QObject>
#include <QUrl>

class BWAlbumFooter;
class BWAlbumNotice;
class BWFilePanels;
struct BWAlbumTexts;

/// Saves files of an album where the user wants them: asks where, saves in the background, shows how far it is, and
/// tells how it ended. GUI thread.
class BWAlbumSaving : public QObject {
    Q_OBJECT

public:
    BWAlbumSaving(QWidget &window, BWFilePanels &panels, const BWAlbumTexts &texts, BWAlbumFooter &footer,
                  BWAlbumNotice &notice);

    /// One file is copied, several become one ZIP archive, for which `archiveName` is suggested. What is asked for while
    /// something is being saved comes after that.
    void save(const QList<QUrl> &files, BWMediaType type, const QString &archiveName);
    bool isSaving() const { return m_export.isRunning(); }

    /// Ends what is being saved, and forgets what was to follow.
    void cancel();

private:
    struct Job {
        QList<QUrl> files;
        QUrl target;
    };

    void startNext();
    void finished(const BWExportResult &result);

    QWidget &m_window;
    BWFilePanels &m_panels;
    const BWAlbumTexts &m_texts;
    BWAlbumFooter &m_footer;
    BWAlbumNotice &m_notice;
    BWFileExport m_export;
    QList<Job> m_waiting;
};
