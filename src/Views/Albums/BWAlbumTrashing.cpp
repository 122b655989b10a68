#include "Views/Albums/BWAlbumTrashing.h"

#include "Model/BWAlbumManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumTexts.h"

using namespace Qt::StringLiterals;

namespace {

/// The name of the one, the number of several.
template <typename File>
QString nameOrCount(const QList<File> &files, QUrl File::*url)
{
    return files.size() == 1 ? (files.first().*url).fileName() : QString::number(files.size());
}

QString nameOrCount(const QList<QUrl> &files)
{
    return files.size() == 1 ? files.first().fileName() : QString::number(files.size());
}

} // namespace

BWAlbumTrashing::BWAlbumTrashing(BWAlbumManager &albums, const BWAlbumTexts &texts, BWAlbumFooter &footer)
    : m_albums(albums), m_texts(texts), m_footer(footer)
{
    connect(&footer, &BWAlbumFooter::undoTriggered, this, &BWAlbumTrashing::undo);
}

void BWAlbumTrashing::trash(const QList<QUrl> &files, BWMediaType type)
{
    if (files.isEmpty())
        return;
    const BWAlbumTexts::Alert &texts = m_texts.trashing(type).of(files.size());
    if (!BWUIUtils::displayChoiceAlert(texts.title, texts.message, m_texts.trashOk, m_texts.trashCancel))
        return;
    m_albums.removeFiles(files, [self = QPointer(this)](const BWTrash::Moved &result) {
        if (!self)
            return;
        QStringList lines;
        if (!result.files.isEmpty())
            lines << self->m_texts.movedToTrash.arg(nameOrCount(result.files));
        if (!result.stayed.isEmpty())
            lines << self->m_texts.stayedOutOfTrash.arg(nameOrCount(result.stayed, &BWTrash::Failure::file));
        self->m_footer.showNotice(lines.join(u'\n'), self->m_albums.canUndoRemoving());
    });
}

void BWAlbumTrashing::undo()
{
    if (!m_albums.canUndoRemoving())
        return;
    m_footer.endNotice();
    m_albums.undoRemoving([self = QPointer(this)](const BWTrash::Restored &result) {
        if (!self)
            return;
        QStringList lines;
        if (!result.files.isEmpty())
            lines << self->m_texts.broughtBack.arg(nameOrCount(result.files, &BWTrash::Restored::File::now));
        if (!result.failed.isEmpty())
            lines << self->m_texts.notBroughtBack.arg(nameOrCount(result.failed, &BWTrash::Failure::file));
        self->m_footer.showNotice(lines.join(u'\n'), false);
    });
}
