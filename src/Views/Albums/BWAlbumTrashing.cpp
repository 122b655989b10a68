#include "Views/Albums/BWAlbumTrashing.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWAlbumTexts.h"

using namespace Qt::StringLiterals;

namespace {

template <typename File>
QString nameOrCount(const QList<File> &files, QUrl File::*url)
{
    QList<QUrl> urls;
    for (const File &file : files)
        urls.append(file.*url);
    return BWAlbumTexts::nameOrCount(urls);
}

} // namespace

BWAlbumTrashing::BWAlbumTrashing(BWAlbumManager &albums, const BWAlbumTexts &texts, BWAlbumNotice &notice)
    : m_albums(albums), m_texts(texts), m_notice(notice)
{
    connect(&notice, &BWAlbumNotice::undoTriggered, this, &BWAlbumTrashing::undo);
}

bool BWAlbumTrashing::trash(const QList<QUrl> &files, BWMediaType type)
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
            lines << self->m_texts.movedToTrash.arg(BWAlbumTexts::nameOrCount(result.files));
        if (!result.stayed.isEmpty())
            lines << self->m_texts.stayedOutOfTrash.arg(nameOrCount(result.stayed, &BWTrash::Failure::file));
        // What can be undone is the last removal that moved something, which may be an earlier one.
        self->m_notice.showNotice(lines.join(u'\n'), !result.files.isEmpty() && self->m_albums.canUndoRemoving());
    });
    return true;
}

void BWAlbumTrashing::undo()
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
