// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWAlbumGridModel.h"

#include "Model/Albums/BWAlbumContents.h"
#include "Model/Thumbnails/BWThumbnails.h"
#include "Utils/BWLogging.h"
#include "Views/Albums/BWAlbumFileActions.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Albums/BWThumbnailTableView.h"

#include <algorithm>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr int columnCount = 2;

} // namespace

BWAlbumGridModel::BWAlbumGridModel(const BWAlbumContents &contents, const BWThumbnails &thumbnails,
                                   const BWAlbumTexts &texts, const BWThumbnailTableView &images,
                                   const BWThumbnailTableView &videos, BWAlbumFileActions &actions)
    : m_contents(contents),
      m_thumbnails(thumbnails),
      m_texts(texts),
      m_imagesGrid(images),
      m_videosGrid(videos),
      m_actions(actions)
{
}

BWMediaType BWAlbumGridModel::typeOf(const BWThumbnailTableView &view) const
{
    if (&view == &m_imagesGrid)
        return BWMediaType::Image;
    if (&view != &m_videosGrid)
        qFatal("The album's model was called for a grid that is not its own");
    return BWMediaType::Video;
}

const QList<QUrl> &BWAlbumGridModel::listOf(const BWThumbnailTableView &view) const
{
    return typeOf(view) == BWMediaType::Image ? m_images : m_videos;
}

QList<QUrl> BWAlbumGridModel::filesAt(const BWThumbnailTableView &view, const QList<int> &indexes) const
{
    const QList<QUrl> &list = listOf(view);
    QList<QUrl> files;
    for (const int index : indexes) {
        if (index >= 0 && index < list.size())
            files.append(list[index]);
    }
    return files;
}

QList<QUrl> BWAlbumGridModel::elementsForThumbnailTableView(const BWThumbnailTableView &view)
{
    return listOf(view);
}

QSize BWAlbumGridModel::draggingSizeForElementAt(const BWThumbnailTableView &view, int index)
{
    return thumbnailForElementAtIndex(view, index).size();
}

QString BWAlbumGridModel::dragTypeForElementAt(const BWThumbnailTableView &view, int index)
{
    Q_UNUSED(index)
    return typeOf(view) == BWMediaType::Image ? u"public.jpeg"_s : u"com.apple.quicktime-movie"_s;
}

QImage BWAlbumGridModel::thumbnailForElementAtIndex(const BWThumbnailTableView &view, int index)
{
    const auto thumbnail = m_thumbnails.thumbnail(listOf(view).value(index));
    return thumbnail ? thumbnail->image : QImage();
}

void BWAlbumGridModel::removeIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes)
{
    if (m_actions.trash(filesAt(view, indexes), typeOf(view)))
        qCInfo(bwViews) << "Remove indexes:" << indexes;
}

void BWAlbumGridModel::openIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes)
{
    qCInfo(bwViews) << "Open indexes:" << indexes;
    m_actions.open(filesAt(view, indexes));
}

void BWAlbumGridModel::showIndexOfModel(BWThumbnailTableView &view, int index)
{
    for (const QUrl &file : filesAt(view, {index}))
        m_actions.show(file);
}

void BWAlbumGridModel::compareIndexOfModel(BWThumbnailTableView &view, int index)
{
    for (const QUrl &file : filesAt(view, {index}))
        m_actions.compare(file);
}

void BWAlbumGridModel::saveIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes)
{
    m_actions.save(filesAt(view, indexes), typeOf(view));
}

void BWAlbumGridModel::makeMovieOfIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes)
{
    if (typeOf(view) == BWMediaType::Image)
        m_actions.joinPictures(filesAt(view, indexes));
    else
        m_actions.makeSmaller(filesAt(view, indexes));
}

void BWAlbumGridModel::copyIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes)
{
    m_actions.files().copy(filesAt(view, indexes));
}

void BWAlbumGridModel::renameIndexOfModel(BWThumbnailTableView &view, int index)
{
    for (const QUrl &file : filesAt(view, {index}))
        m_actions.files().rename(file);
}

void BWAlbumGridModel::revealIndexesOfModel(BWThumbnailTableView &view, const QList<int> &indexes)
{
    m_actions.files().showInFileManager(filesAt(view, indexes));
}

void BWAlbumGridModel::offerAlbumsForIndexesOfModel(BWThumbnailTableView &view, QMenu &menu, const QList<int> &indexes)
{
    m_actions.files().offerAlbums(menu, filesAt(view, indexes));
}

int BWAlbumGridModel::numberOfColumnsForView(const BWThumbnailTableView &view)
{
    Q_UNUSED(view)
    return columnCount;
}

int BWAlbumGridModel::numberOfRowsInTableView(const BWThumbnailTableView &view)
{
    m_images = m_contents.files(BWMediaType::Image);
    m_videos = m_contents.files(BWMediaType::Video);
    return rowCount(static_cast<int>(listOf(view).size()), numberOfColumnsForView(view));
}

int BWAlbumGridModel::rowCount(int elements, int columns)
{
    return columns > 0 ? (elements + columns - 1) / columns : std::min(elements, 1);
}

int BWAlbumGridModel::rowHeight(int visibleHeight)
{
    constexpr int tall = 500;
    constexpr int highest = 125;
    return visibleHeight < tall ? visibleHeight / 4 : highest;
}

int BWAlbumGridModel::heightOfRow(const BWThumbnailTableView &view, int row)
{
    Q_UNUSED(row)
    return rowHeight(view.viewport()->height());
}

BWThumbnailValue BWAlbumGridModel::objectValueForTableColumn(const BWThumbnailTableView &view, int column, int row)
{
    using State = BWThumbnailValue::State;
    const QList<QUrl> &list = listOf(view);
    BWThumbnailValue value;
    value.isMovie = typeOf(view) == BWMediaType::Video;
    const auto thumbnail = m_thumbnails.thumbnail(list.value(BWThumbnailTableView::cellIndex(row, column)));
    if (!thumbnail)
        return value;
    value.state = thumbnail->kind == BWThumbnail::Kind::Picture ? State::Picture : State::NoPicture;
    value.picture = thumbnail->image;
    value.length = thumbnail->length;
    return value;
}

QString BWAlbumGridModel::accessibleNameForElementAt(const BWThumbnailTableView &view, int index)
{
    const QString name = QFileInfo(listOf(view).value(index).toLocalFile()).completeBaseName();
    return u"%1, %2"_s.arg(name, typeOf(view) == BWMediaType::Image ? m_texts.imageWord : m_texts.videoWord);
}

QStringList BWAlbumGridModel::copyFiles(const QList<QUrl> &files, const QUrl &folder)
{
    return m_copies.copy(files, folder);
}
