// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWFileActions.h"

#include "Model/Export/BWCopiedCaptures.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWRenameDialog.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMenu>
#include <QProgressDialog>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int noticeable = 500; // ms
constexpr int steps = 1000; // of the progress

QString nameOf(const QUrl &file)
{
    return QFile::decodeName(BWFilePath::lastComponent(file));
}

QUrl folderOf(const QUrl &file)
{
    return file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
}

} // namespace

BWFileActions::BWFileActions(QWidget &window, BWAlbumManager &albums, const BWAlbumTexts &texts, Callbacks callbacks)
    : m_window(window), m_albums(albums), m_texts(texts), m_callbacks(std::move(callbacks))
{
}

QString BWFileActions::nameOrCount(const QList<QUrl> &files)
{
    return files.size() == 1 ? nameOf(files.first()) : QString::number(files.size());
}

void BWFileActions::open(const QUrl &file)
{
    if (!m_callbacks.open(file))
        BWUIUtils::displayOKAlertOver(m_window, m_texts.errorOpening.single.title,
                                      m_texts.errorOpening.single.message.arg(nameOf(file)));
}

void BWFileActions::copy(const QList<QUrl> &files)
{
    if (files.isEmpty())
        return;
    m_disk.run([this, files, alive = m_alive.watch()] {
        // Its bytes only: what is copied stays there even if the file is renamed or moved.
        const QByteArray jpeg = files.size() == 1 ? BWCopiedCaptures::pictureOf(files.first()) : QByteArray();
        BWMainQueue::post(alive, [this, files, jpeg] {
            QGuiApplication::clipboard()->setMimeData(new BWCopiedCaptures(files, jpeg));
            m_callbacks.report(m_texts.copied.arg(nameOrCount(files)), false);
        });
    });
}

void BWFileActions::copyPicture(const QByteArray &jpeg)
{
    QGuiApplication::clipboard()->setMimeData(new BWCopiedCaptures({}, jpeg));
    m_callbacks.report(m_texts.pictureCopied, false);
}

void BWFileActions::showInFileManager(const QList<QUrl> &files)
{
    if (!files.isEmpty())
        m_fileManager.show(files, [this, folder = folderOf(files.first())] { open(folder); });
}

void BWFileActions::rename(const QUrl &file)
{
    const auto rename = [this, file](const QByteArray &name, const std::function<void(const QString &)> &done) {
        m_albums.moves().rename(file, name, [this, alive = m_alive.watch(), done](const BWFileMoves::Result &result) {
            if (alive.expired())
                return;
            done(result.failed.isEmpty() ? QString() : m_texts.errorSaving.value(result.failed.first().problem));
            if (!result.files.isEmpty())
                report(
                    result, [this](const QString &names) { return m_texts.renamed.arg(names); }, true);
        });
    };
    (new BWRenameDialog(BWFilePath::lastComponent(file), m_texts, rename, &m_window))->open();
}

void BWFileActions::move(const QList<QUrl> &files, const BWAlbumPtr &album)
{
    if (files.isEmpty())
        return;
    const QString name = album->shownName(m_texts.defaultAlbumDisplayName);
    delete m_progress; // of a move that is nearly over
    m_progress = new QProgressDialog(m_texts.moving.arg(name), m_texts.trashCancel, 0, steps, &m_window);
    m_progress->setWindowTitle(m_texts.moveTitle);
    m_progress->setMinimumDuration(noticeable);
    m_progress->setAutoReset(false); // shown until the disk has it
    connect(m_progress, &QProgressDialog::canceled, this, [this] { m_albums.moves().cancel(); });
    m_albums.moves().move(
        files, album->path(),
        [this, alive = m_alive.watch(), name, progress = m_progress](const BWFileMoves::Result &result) {
            if (alive.expired())
                return;
            delete progress;
            report(
                result, [this, name](const QString &names) { return m_texts.movedTo.arg(name, names); }, true);
        },
        [progress = m_progress](qint64 done, qint64 total) {
            if (progress && total > 0 && !progress->wasCanceled())
                progress->setValue(static_cast<int>(double(done) / double(total) * steps));
        });
}

void BWFileActions::undo()
{
    if (!canUndo())
        return;
    m_albums.moves().undo([this, alive = m_alive.watch()](const BWFileMoves::Result &result) {
        if (!alive.expired())
            report(
                result, [this](const QString &names) { return m_texts.movedBack.arg(names); }, false);
    });
}

void BWFileActions::report(const BWFileMoves::Result &result, const std::function<QString(const QString &)> &done,
                           bool canUndo)
{
    QList<QUrl> moved;
    for (const BWFileMoves::Result::File &file : result.files)
        moved.append(file.now);
    if (!moved.isEmpty())
        m_callbacks.report(done(nameOrCount(moved)), canUndo);
    if (result.failed.isEmpty())
        return;
    QStringList names;
    for (const BWExportResult &failure : result.failed)
        names.append(nameOf(failure.file));
    constexpr qsizetype mostNames = 10;
    if (names.size() > mostNames)
        names = names.first(mostNames) << u"…"_s;
    BWUIUtils::displayOKAlertOver(m_window, m_texts.notMoved,
                                  m_texts.errorSaving.value(result.failed.first().problem) + u"\n\n"_s
                                      + names.join(u'\n'));
}

void BWFileActions::offerAlbums(QMenu &menu, const QList<QUrl> &files)
{
    menu.clear();
    const QUrl here = files.isEmpty() ? QUrl() : BWFilePath::normalized(folderOf(files.first()));
    for (const BWAlbumPtr &album : m_albums.albums()) {
        if (album->path() == here)
            continue;
        QString name = album->shownName(m_texts.defaultAlbumDisplayName);
        QAction *item = menu.addAction(name.replace(u'&', u"&&"_s));
        item->setToolTip(album->path().toLocalFile()); // two may have the same name
        item->setEnabled(!files.isEmpty());
        connect(item, &QAction::triggered, this, [this, files, album] { move(files, album); });
    }
    menu.setToolTipsVisible(true);
    if (menu.isEmpty())
        menu.addAction(m_texts.noOtherAlbum)->setEnabled(false);
}
