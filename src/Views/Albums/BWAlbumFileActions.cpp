// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWAlbumFileActions.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Utils/BWFilePanels.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype manyFiles = 20; // to open at once

template <typename File>
QString nameOrCount(const QList<File> &files, QUrl File::*url)
{
    QList<QUrl> urls;
    for (const File &file : files)
        urls.append(file.*url);
    return BWFileActions::nameOrCount(urls);
}

} // namespace

BWAlbumFileActions::BWAlbumFileActions(QWidget &window, BWAlbumManager &albums, Callbacks callbacks,
                                       const BWAlbumTexts &texts, BWAlbumFooter &footer, BWAlbumNotice &notice,
                                       BWClock &clock)
    : m_window(window),
      m_albums(albums),
      m_callbacks(std::move(callbacks)),
      m_texts(texts),
      m_footer(footer),
      m_notice(notice),
      m_files(window, albums, texts,
              {[&notice](const QString &text, bool canUndo) { notice.showNotice(text, canUndo); }, m_callbacks.open}),
      m_clock(clock)
{
    connect(&footer, &BWAlbumFooter::cancelTriggered, this, &BWAlbumFileActions::cancelSaving);
    connect(&notice, &BWAlbumNotice::undoTriggered, this, &BWAlbumFileActions::undo);
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
    m_callbacks.panels.save(&m_window, panel, [this, files](const QUrl &target) { enqueue({target, files}); });
}

BWMovieExport::Choices BWAlbumFileActions::movieChoices() const
{
    return m_callbacks.movieChoices ? m_callbacks.movieChoices() : BWMovieExport::Choices();
}

void BWAlbumFileActions::makeSmaller(const QList<QUrl> &movies)
{
    if (movies.isEmpty())
        return;
    auto *dialog = new BWSmallerMovieDialog(m_texts.movies, movieChoices().quality, &m_window);
    connect(dialog, &QDialog::accepted, this, [this, dialog, movies] {
        BWMovieExport::Choices choices = movieChoices();
        choices.quality = dialog->quality();
        if (m_callbacks.setMovieChoices)
            m_callbacks.setMovieChoices(choices);
        makeSmaller(movies, choices.quality);
    });
    dialog->open();
}

void BWAlbumFileActions::makeSmaller(const QList<QUrl> &movies, BWSmallerMovie::Quality quality)
{
    const auto enqueueOne = [this, quality](const QUrl &movie, const QUrl &target) {
        enqueue({target, {movie}, [movie, target, quality](BWExportWatch &watch) {
                     return BWMovieExport::makeSmaller(movie, target, quality, watch);
                 }});
    };
    const auto nameOf = [](const QUrl &movie) { return QFileInfo(movie.fileName()).completeBaseName() + u".mp4"_s; };
    const QUrl beside = movies.first().adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
    if (movies.size() == 1) {
        BWFilePanels::Save panel;
        panel.title = m_texts.movies.smallerTitle;
        panel.message = m_texts.movies.smallerMessage;
        panel.extension = u"mp4"_s;
        panel.folder = beside;
        panel.name = nameOf(movies.first());
        m_callbacks.panels.save(
            &m_window, panel, [enqueueOne, movie = movies.first()](const QUrl &target) { enqueueOne(movie, target); });
        return;
    }
    BWFilePanels::Folder panel;
    panel.title = m_texts.movies.smallerTitle;
    panel.message = m_texts.movies.smallerFolderMessage;
    panel.folder = beside;
    panel.make = [this](const QUrl &folder) {
        if (BWAlbumManager::makeAlbumFolder(folder) == BWAlbumManager::FolderProblem::None)
            return true;
        BWUIUtils::displayOKAlert(m_texts.folderNotMade, m_texts.folderFailed.arg(folder.fileName()));
        return false;
    };
    m_callbacks.panels.chooseFolder(&m_window, panel, [enqueueOne, nameOf, movies](const QUrl &folder) {
        for (const QUrl &movie : movies) {
            const QByteArray name = QFile::encodeName(nameOf(movie));
            QUrl target = BWFilePath::entry(folder, name);
            for (int number = 2; BWFilePath::exists(target); ++number)
                target = BWFilePath::entry(folder, BWFilePath::numbered(name, number));
            enqueueOne(movie, target);
        }
    });
}

void BWAlbumFileActions::joinPictures(const QList<QUrl> &pictures)
{
    auto *dialog = new BWPicturesMovieDialog(m_texts.movies, pictures.size(), movieChoices().rate, &m_window);
    connect(dialog, &QDialog::accepted, this, [this, dialog, pictures] {
        BWMovieExport::Choices choices = movieChoices();
        choices.rate = dialog->rate();
        if (m_callbacks.setMovieChoices)
            m_callbacks.setMovieChoices(choices);
        askWhereToJoin(pictures, choices.rate);
    });
    dialog->open();
}

void BWAlbumFileActions::askWhereToJoin(const QList<QUrl> &pictures, int rate)
{
    const BWAlbumPtr album = m_albums.albumOfFile(pictures.first()); // a series need not have been in the current one
    BWFilePanels::Save panel;
    panel.title = m_texts.movies.joinTitle;
    panel.message = m_texts.movies.joinMessage;
    panel.extension = u"mov"_s;
    panel.folder = pictures.first().adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
    panel.name = u"%1.mov"_s.arg(album ? album->shownName(m_texts.defaultAlbumDisplayName)
                                       : QFile::decodeName(BWFilePath::lastComponent(panel.folder)));
    m_callbacks.panels.save(&m_window, panel, [this, pictures, rate](const QUrl &target) {
        enqueue({target, pictures, [pictures, rate, target](BWExportWatch &watch) {
                     return BWMovieExport::joinPictures(BWMovieExport::inOrder(pictures), rate, target, watch);
                 }});
    });
}

void BWAlbumFileActions::enqueue(const Job &job)
{
    m_waiting.append(job);
    startNextExport();
}

void BWAlbumFileActions::startNextExport()
{
    if (m_export.isRunning())
        return;
    if (m_callbacks.savingChanged)
        m_callbacks.savingChanged(!m_waiting.isEmpty());
    if (m_waiting.isEmpty())
        return;
    const Job job = m_waiting.takeFirst();
    const QString text = m_texts.savingProgress.arg(job.target.fileName());
    const auto finished = [this](const BWExportResult &result) { exportFinished(result); };
    const auto progress = [this, text](qint64 done, qint64 total) {
        showProgress(text, total > 0 ? double(done) / total : 0);
    };
    m_timeLeft = {};
    if (job.work)
        m_export.start(job.work, job.target, finished, progress);
    else
        m_export.start(job.files, job.target, finished, progress);
}

void BWAlbumFileActions::showProgress(const QString &text, double done)
{
    using namespace std::chrono_literals;
    const std::optional<std::chrono::seconds> left = m_timeLeft.add(m_clock.now(), done);
    if (!left)
        m_footer.showProgress(text, done);
    else if (*left < 2min)
        m_footer.showProgress(text + u'\n' + m_texts.movies.secondsLeft.arg(left->count()), done);
    else
        m_footer.showProgress(text + u'\n' + m_texts.movies.minutesLeft.arg(*left / 1min), done);
}

void BWAlbumFileActions::exportFinished(const BWExportResult &result)
{
    m_footer.endProgress();
    if (result.outcome == BWExportResult::Outcome::Done) {
        QString text = m_texts.saved.arg(result.file.fileName());
        if (result.leftOut > 0)
            text += u'\n' + m_texts.movies.leftOut.arg(result.leftOut);
        m_notice.showNotice(text, false);
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
    BWUIUtils::displayOKAlertOver(m_window, texts.title, texts.message.arg(BWFileActions::nameOrCount(unopened)));
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
            lines << self->m_texts.movedToTrash.arg(BWFileActions::nameOrCount(result.files));
        if (!result.stayed.isEmpty())
            lines << self->m_texts.stayedOutOfTrash.arg(nameOrCount(result.stayed, &BWTrash::Failure::file));
        if (!result.files.isEmpty())
            self->m_albums.moves().forget(); // the Trash comes first now
        // Undo brings back the last removal that moved something, which may be an earlier one.
        self->m_notice.showNotice(lines.join(u'\n'), !result.files.isEmpty() && self->m_albums.canUndoRemoving());
    });
    return true;
}

void BWAlbumFileActions::undo()
{
    if (m_files.canUndo()) {
        m_notice.endNotice();
        m_files.undo();
        return;
    }
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
