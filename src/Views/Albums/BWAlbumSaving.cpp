#include "Views/Albums/BWAlbumSaving.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Utils/BWFilePanels.h"

#include <QFileInfo>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

BWAlbumSaving::BWAlbumSaving(QWidget &window, BWFilePanels &panels, const BWAlbumTexts &texts, BWAlbumFooter &footer,
                             BWAlbumNotice &notice)
    : m_window(window), m_panels(panels), m_texts(texts), m_footer(footer), m_notice(notice)
{
    connect(&footer, &BWAlbumFooter::cancelTriggered, this, &BWAlbumSaving::cancel);
}

void BWAlbumSaving::save(const QList<QUrl> &files, BWMediaType type, const QString &archiveName)
{
    if (files.isEmpty())
        return;
    const bool one = files.size() == 1;
    const BWAlbumTexts::Alert &texts = m_texts.saving(type).of(files.size());
    BWFilePanels::Save panel;
    panel.title = texts.title;
    panel.message = texts.message;
    panel.extension = !one ? u"zip"_s : type == BWMediaType::Image ? u"jpg"_s : u"mov"_s;
    panel.folder = BWFilePath::fromLocal(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation));
    panel.name = one ? files.first().fileName() : u"%1.zip"_s.arg(archiveName);
    m_panels.save(&m_window, panel, [this, files](const QUrl &target) {
        m_waiting.append({files, target});
        startNext();
    });
}

void BWAlbumSaving::startNext()
{
    if (m_waiting.isEmpty() || m_export.isRunning())
        return;
    const Job job = m_waiting.takeFirst();
    const QString text = m_texts.savingProgress.arg(job.target.fileName());
    m_export.start(
        job.files, job.target, [this](const BWExportResult &result) { finished(result); },
        [this, text](qint64 done, qint64 total) { m_footer.showProgress(text, total > 0 ? double(done) / total : 0); });
}

void BWAlbumSaving::finished(const BWExportResult &result)
{
    m_footer.endProgress();
    if (result.outcome == BWExportResult::Outcome::Done) {
        m_notice.showNotice(m_texts.saved.arg(result.file.fileName()), false);
    } else if (result.outcome == BWExportResult::Outcome::Failed) {
        QString message = m_texts.errorSaving.value(result.problem) + u"\n\n"_s + result.file.toLocalFile();
        if (!result.leftover.isEmpty())
            message += u"\n\n"_s + m_texts.leftArchive.arg(result.leftover.toLocalFile());
        // The panel that asked where is only just gone, and no window is active yet.
        BWUIUtils::displayOKAlertOver(m_window, m_texts.errorSavingTitle, message);
    }
    startNext();
}

void BWAlbumSaving::cancel()
{
    m_waiting.clear();
    m_export.cancel();
}
