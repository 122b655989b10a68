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
#include <QProgressBar>
#include <QProgressDialog>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int noticeable = 500; // ms
constexpr int steps = 1000; // of the progress
constexpr int widestName = 320; // of an album, in a menu or dialog; it may have 255 letters

QString nameOf(const QUrl &file)
{
    return QFile::decodeName(BWFilePath::lastComponent(file));
}

QUrl folderOf(const QUrl &file)
{
    return file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
}

BWFileMoves::Progress shownIn(const QPointer<QProgressDialog> &dialog)
{
    return [dialog](qint64 done, qint64 total) {
        if (dialog && total > 0 && !dialog->wasCanceled())
            dialog->setValue(static_cast<int>(double(done) / double(total) * steps));
    };
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
    // Its bytes only: what is copied stays there even if the file is renamed or moved.
    const auto picture = [files] {
        return files.size() == 1 ? BWCopiedCaptures::pictureOf(files.first()) : QByteArray();
    };
    put(files, picture, m_texts.copied.arg(nameOrCount(files)));
}

void BWFileActions::copyPicture(const QByteArray &jpeg)
{
    put(
        {}, [jpeg] { return jpeg; }, m_texts.pictureCopied);
}

/// Once it is there in all its forms: a program that keeps what was copied asks for each of them at once.
void BWFileActions::put(const QList<QUrl> &files, const std::function<QByteArray()> &picture, const QString &said)
{
    m_workers.run([this, files, picture, said, copy = ++m_copies, alive = m_alive.watch()] {
        const QByteArray jpeg = picture();
        const QByteArray png = BWCopiedCaptures::pngOf(jpeg);
        BWMainQueue::post(alive, [this, files, jpeg, png, said, copy] {
            if (copy != m_copies) // the user has copied something else since
                return;
            QGuiApplication::clipboard()->setMimeData(new BWCopiedCaptures(files, jpeg, png));
            m_callbacks.report(said, false);
        });
    });
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
    const QString shown = m_window.fontMetrics().elidedText(name, Qt::ElideMiddle, widestName);
    const auto progress = beginProgress(m_texts.moving.arg(shown));
    m_albums.moves().move(
        files, album->path(),
        [this, alive = m_alive.watch(), name, progress](const BWFileMoves::Result &result) {
            if (alive.expired())
                return;
            delete progress;
            report(
                result, [this, name](const QString &names) { return m_texts.movedTo.arg(name, names); }, true);
        },
        shownIn(progress));
}

void BWFileActions::undo()
{
    if (!canUndo())
        return;
    const auto progress = beginProgress(m_texts.movingBack);
    m_albums.moves().undo(
        [this, alive = m_alive.watch(), progress](const BWFileMoves::Result &result) {
            if (alive.expired())
                return;
            delete progress;
            report(
                result, [this](const QString &names) { return m_texts.movedBack.arg(names); }, false);
        },
        shownIn(progress));
}

/// A dialog that shows if it takes a while, and cancels.
QPointer<QProgressDialog> BWFileActions::beginProgress(const QString &text)
{
    delete m_progress; // of a move that is nearly over
    m_progress = new QProgressDialog(text, m_texts.trashCancel, 0, steps, &m_window);
    m_progress->setWindowTitle(m_texts.moveTitle);
    m_progress->setMinimumDuration(noticeable);
    m_progress->setMinimumWidth(widestName);
    m_progress->setAutoReset(false); // shown until the disk has it
    m_progress->setValue(0); // from when on it counts how long it takes
    for (auto *bar : m_progress->findChildren<QProgressBar *>())
        bar->setAccessibleName(text);
    connect(m_progress, &QProgressDialog::canceled, this, [this] { m_albums.moves().cancel(); });
    return m_progress;
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
        const QString name = album->shownName(m_texts.defaultAlbumDisplayName);
        QString shown = menu.fontMetrics().elidedText(name, Qt::ElideMiddle, widestName);
        QAction *item = menu.addAction(shown.replace(u'&', u"&&"_s));
        item->setToolTip(album->path().toLocalFile()); // two may have the same name, or look so
        item->setEnabled(!files.isEmpty());
        connect(item, &QAction::triggered, this, [this, files, album] { move(files, album); });
    }
    menu.setToolTipsVisible(true);
    if (menu.isEmpty())
        menu.addAction(m_texts.noOtherAlbum)->setEnabled(false);
}
