// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWSceneController.h"

#include "App/LiveView/BWLiveViewController.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainWindow.h"

#include <QImage>

BWSceneController::BWSceneController(BWMainWindow &window, BWLiveViewController &liveView, BWLiveRenderer &live)
    : m_window(window), m_liveView(liveView), m_live(live)
{
}

BWSceneController::~BWSceneController()
{
    // The window must not look for stills that are gone.
    m_window.centeringClipView().setSources(m_live);
}

void BWSceneController::showLive()
{
    if (m_main == Main::Live)
        return;
    m_main = Main::Live;
    setSources();
    m_still->clear();
    m_liveView.setStill(std::nullopt);
    Q_EMIT mainChanged();
}

void BWSceneController::showFrozen(const BWFrame &frame)
{
    showStill(Main::Frozen, frame);
}

void BWSceneController::showAlbumPicture(const QImage &image, const QString &file)
{
    m_albumPicture = file;
    showStill(Main::Album, frameOf(image));
}

void BWSceneController::showStill(Main kind, const BWFrame &frame)
{
    m_main = kind;
    if (!m_still)
        m_still = std::make_unique<BWLiveRenderer>();
    setSources();
    if (frame.isNull())
        m_window.centeringClipView().clear(*m_still);
    else
        m_still->prepareBuffer(frame);
    m_liveView.setStill(frame.isNull() ? QSize(0, 0) : frame.size());
    Q_EMIT mainChanged();
}

void BWSceneController::compareWith(const QImage &image)
{
    if (!m_reference)
        m_reference = std::make_unique<BWLiveRenderer>();
    m_hasReference = true;
    setSources();
    if (image.isNull())
        m_window.centeringClipView().clear(*m_reference);
    else
        m_reference->prepareBuffer(frameOf(image));
    m_liveView.setReference(image.size());
    Q_EMIT referenceChanged();
}

void BWSceneController::endComparison()
{
    if (!m_hasReference)
        return;
    m_hasReference = false;
    m_liveView.endReference();
    setSources();
    m_reference->clear();
    Q_EMIT referenceChanged();
}

BWFrame BWSceneController::mainFrame() const
{
    return m_main == Main::Live ? m_live.currentFrame() : m_still->currentFrame();
}

BWFrame BWSceneController::referenceFrame() const
{
    return m_hasReference ? m_reference->currentFrame() : BWFrame();
}

void BWSceneController::setSources()
{
    m_window.centeringClipView().setMainIsOfCamera(m_main != Main::Album);
    m_window.centeringClipView().setSources(m_main == Main::Live ? m_live : *m_still,
                                            m_hasReference ? m_reference.get() : nullptr);
}

BWFrame BWSceneController::frameOf(const QImage &image)
{
    if (image.isNull())
        return {};
    const auto pixels = std::make_shared<QImage>(image.convertToFormat(QImage::Format_RGB32));
    BWFrameInfo info;
    info.pixelFormat = BWPixelFormat::XBGR32;
    info.width = pixels->width();
    info.height = pixels->height();
    info.planes[0] = {pixels->constBits(), static_cast<std::size_t>(pixels->sizeInBytes()),
                      static_cast<int>(pixels->bytesPerLine())};
    info.range = BWColorRange::Full;
    return {info, {}, pixels};
}
