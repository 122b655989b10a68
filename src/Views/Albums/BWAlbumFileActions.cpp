#include "Views/Albums/BWAlbumFileActions.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Utils/BWFilePanels.h"

#include <QPointer>
#include <QStandardPaths>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype manyFiles = 20; // to open at once

/// The name of a single file, the number of several.
QString nameOrCount(const QList<QUrl> &files)
{
    return files.size() == 1 ? files.first().fileName() : QString::number(files.size());
}

template <typename File>
QString nameOrCount(const QList<File> &files, QUrl File::*url)
{
    QList<QUrl> urls;
    for (const File &file : files)
        urls.append(file.*url);
    return nameOrCount(urls);
}

} // namespace

BWAlbumFileActions::BWAlbumFileActions(QWidget &window, BWAlbumManager &albums, Callbacks callbacks,
                                       const BWAlbumTexts &texts, BWAlbumFooter &footer, BWAlbumNotice &notice)
    : m_window(window),
      m_albums(albums),
      m_callbacks(std::move(callbacks)),
      m_texts(texts),
      m_footer(footer),
      m_notice(notice)
{
    connect(&footer, &BWAlbumFooter::cancelTriggered, this, &BWAlbumFileActions::cancelSaving);
    connect(&notice, &BWAlbumNotice::undoTriggered, this, &BWAlbumFileActions::undoTrash);
}

void BWAlbumFileActions::save(const QList<QUrl> &files, BWMediaType type)
{
    if (files.isEmpty())
        return;
    const bool one = files.size() == 1;
    const BWAlbumPtr album = m_albums.currentAlbum();
    const QString albumName = album ? album->shownName(m_texts.defaultAlbumDisplayName) : QString();
    const BWAlbumTexts::Alert &texts = m_texts.saving(type).of(files.size());
    BWFilePanels::Save panel;
    panel.title = texts.title;
    panel.message = texts.message;
    panel.extension = !one ? u"zip"_s : type == BWMediaType::Image ? u"jpg"_s : u"mov"_s;
    panel.folder = BWFilePath::fromLocal(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation));
    panel.name = one ? files.first().fileName() : u"%1.zip"_s.arg(albumName);
    m_callbacks.panels.save(&m_window, panel, [this, files](const QUrl &target) {
        m_waiting.append({files, target});
        startNextExport();
    });
}

void BWAlbumFileActions::startNextExport()
{
    if (m_waiting.isEmpty() || m_export.isRunning())
        return;
    const Job job = m_waiting.takeFirst();
    const QString text = m_texts.savingProgress.arg(job.target.fileName());
    m_export.start(
        job.files, job.target, [this](const BWExportResult &result) { exportFinished(result); },
        [this, text](qint64 done, qint64 total) { m_footer.showProgress(text, total > 0 ? double(done) / total : 0); });
}

void BWAlbumFileActions::exportFinished(const BWExportResult &result)
{
    m_footer.endProgress();
    if (result.outcome == BWExportResult::Outcome::Done) {
        m_notice.showNotice(m_texts.saved.arg(result.file.fileName()), false);
    } else if (result.outcome == BWExportResult::Outcome::Failed) {
        QString message = m_texts.errorSaving.value(result.problem) + u"\n\n"_s + result.file.toLocalFile();
        if (!result.leftover.isEmpty())
            message += u"\n\n"_s + m_texts.leftArchive.arg(result.leftover.toLocalFile());
        // The save panel has only just closed, and no window is active yet.
        BWUIUtils::displayOKAlertOver(m_window, m_texts.errorSavingTitle, message);
    }
    startNextExport();
}

void BWAlbumFileActions::cancelSaving()
{
    m_waiting.clear();
    m_export.cancel();
}

void BWAlbumFileActions::open(const QList<QUrl> &files)
{
    if (files.size() > manyFiles
        && !BWUIUtils::displayOKCancelAlert(m_texts.openMany.title.arg(files.size()), m_texts.openMany.message))
        return;
    QList<QUrl> unopened;
    for (const QUrl &file : files) {
        if (!m_callbacks.open(file))
            unopened.append(file);
    }
    if (unopened.isEmpty())
        return;
    const BWAlbumTexts::Alert &texts = m_texts.errorOpening.of(unopened.size());
    BWUIUtils::displayOKAlertOver(m_window, texts.title, texts.message.arg(nameOrCount(unopened)));
}

bool BWAlbumFileActions::trash(const QList<QUrl> &files, BWMediaType type)
{
    if (files.isEmpty())
        return false;
    const BWAlbumTexts::Alert &texts = m_texts.trashing(type).of(files.size());
    if (!BWUIUtils::displayChoiceAlert(texts.title, texts.message, m_texts.trashOk, m_texts.trashCancel))
        return false;
    m_albums.removeFiles(files, [self = QPointer(this)](const BWTrash::Moved &result) {
        if (!self)
            return;
        QStringList lines;
        if (!result.files.isEmpty())
            lines << self->m_texts.movedToTrash.arg(nameOrCount(result.files));
        if (!result.stayed.isEmpty())
            lines << self->m_texts.stayedOutOfTrash.arg(nameOrCount(result.stayed, &BWTrash::Failure::file));
        // Undo brings back the last removal that moved something, which may be an earlier one.
        self->m_notice.showNotice(lines.join(u'\n'), !result.files.isEmpty() && self->m_albums.canUndoRemoving());
    });
    return true;
}

void BWAlbumFileActions::undoTrash()
{
    if (!m_albums.canUndoRemoving())
        return;
    m_notice.endNotice();
    m_albums.undoRemoving([self = QPointer(this)](const BWTrash::Restored &result) {
        if (!self)
            return;
        QStringList lines;
        if (!result.files.isEmpty())
            lines << self->m_texts.broughtBack.arg(nameOrCount(result.files, &BWTrash::Restored::File::now));
        if (!result.failed.isEmpty())
            lines << self->m_texts.notBroughtBack.arg(nameOrCount(result.failed, &BWTrash::Failure::file));
        self->m_notice.showNotice(lines.join(u'\n'), false);
    });
}
