// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWLastCapture.h"

#include "Utils/BWFilePath.h"

#include <sys/stat.h>
#include <utility>

namespace {

/// Waits for the disk.
bool isNewer(const QUrl &file, const QUrl &other)
{
    const auto modified = [](const QUrl &url) {
        struct stat info { };
        ::stat(BWFilePath::native(url).constData(), &info);
        return std::pair(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
    };
    return modified(file) > modified(other);
}

} // namespace

BWLastCapture::BWLastCapture(const BWAlbumManager &albums, const BWAlbumContents &contents)
    : m_albums(albums), m_contents(contents)
{
    connect(&contents, &BWAlbumContents::reloaded, this, &BWLastCapture::update);
    connect(&contents, &BWAlbumContents::changed, this, &BWLastCapture::update);
    update();
}

void BWLastCapture::captureAdded(const QUrl &file)
{
    if (m_albums.albumOfFile(file) != m_albums.currentAlbum())
        return;
    m_added = file;
    m_wasListed = false;
    setFile(file);
}

void BWLastCapture::update()
{
    const QList<QUrl> &images = m_contents.files(BWMediaType::Image);
    const QList<QUrl> &videos = m_contents.files(BWMediaType::Video);
    const bool isListed = images.contains(m_added) || videos.contains(m_added);
    // A listing may be older than the capture.
    const bool isStillComing =
        !m_added.isEmpty() && !m_wasListed && m_albums.albumOfFile(m_added) == m_albums.currentAlbum();
    m_wasListed = m_wasListed || isListed;
    if (isListed || isStillComing)
        setFile(m_added);
    else if (m_contents.state() == BWAlbumContents::State::NotAnswering)
        return;
    else if (images.isEmpty() || videos.isEmpty())
        setFile(images.isEmpty() ? videos.value(0) : images.first());
    else
        compare(images.first(), videos.first());
}

void BWLastCapture::setFile(const QUrl &file)
{
    ++m_question;
    if (std::exchange(m_file, file) != file)
        Q_EMIT changed();
}

/// Their names tell the day, but not which of the two came last.
void BWLastCapture::compare(const QUrl &image, const QUrl &video)
{
    m_disk.run([this, image, video, question = ++m_question, alive = m_alive.watch()] {
        const QUrl newer = isNewer(video, image) ? video : image;
        BWMainQueue::post(alive, [this, newer, question] {
            if (question == m_question)
                setFile(newer);
        });
    });
}
