// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWLastCaptureController.h"

#include "Utils/BWFilePath.h"
#include "Views/MainWindow/BWControlBar.h"

#include <QFile>

namespace {

/// One picture at a time, which takes one thread and little memory.
BWThumbnails::Options modest()
{
    BWThumbnails::Options options;
    options.memory = 4 << 20;
    options.threads = 1;
    return options;
}

} // namespace

BWLastCaptureController::BWLastCaptureController(const BWAlbumManager &albums, const BWAlbumContents &contents,
                                                 BWControlBar &bar)
    : m_bar(bar), m_capture(albums, contents), m_thumbnails([this](const QList<QUrl> &) { show(); }, modest())
{
    connect(&m_capture, &BWLastCapture::changed, this, &BWLastCaptureController::request);
    connect(&contents, &BWAlbumContents::filesWritten, this, &BWLastCaptureController::request);
    connect(&bar, &BWControlBar::lastCaptureTriggered, this, [this] { Q_EMIT showRequested(m_capture.file()); });
}

void BWLastCaptureController::request()
{
    if (const QUrl &file = m_capture.file(); !file.isEmpty())
        m_thumbnails.request({file}, m_bar.lastCapturePixels());
    show();
}

/// A file without a picture, such as a damaged one, is not shown.
void BWLastCaptureController::show()
{
    const QUrl &file = m_capture.file();
    const auto thumbnail = m_thumbnails.thumbnail(file);
    if (thumbnail || file.isEmpty()) // else the last one stays until this one is ready
        m_bar.showLastCapture(thumbnail ? thumbnail->image : QImage(),
                              QFile::decodeName(BWFilePath::lastComponent(file)),
                              BWFilePath::native(file).endsWith(".mov"));
}
