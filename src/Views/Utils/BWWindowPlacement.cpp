#include "Views/Utils/BWWindowPlacement.h"

#include <algorithm>
#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace {

/// The other window will get a frame like that of the camera window.
QRect framed(const QWidget &cameraWindow, QSize content)
{
    if (cameraWindow.isFullScreen()) { // it has none itself
        const int title = cameraWindow.style()->pixelMetric(QStyle::PM_TitleBarHeight);
        return {QPoint(), content + QSize(0, title)};
    }
    const QRect frame = cameraWindow.frameGeometry();
    const QRect inside = cameraWindow.geometry();
    return QRect(QPoint(), content)
        .marginsAdded({inside.left() - frame.left(), inside.top() - frame.top(), frame.right() - inside.right(),
                       frame.bottom() - inside.bottom()});
}

/// The upper left corner matters most, for the title is there.
QPoint onScreen(const QWidget &cameraWindow, QRect place)
{
    if (const QScreen *screen = cameraWindow.screen()) {
        const QRect room = screen->availableGeometry();
        place.moveBottom(std::min(place.bottom(), room.bottom()));
        place.moveRight(std::min(place.right(), room.right()));
        place.moveTop(std::max(place.top(), room.top()));
        place.moveLeft(std::max(place.left(), room.left()));
    }
    return place.topLeft();
}

} // namespace

QPoint BWWindowPlacement::below(const QWidget &cameraWindow, QSize content)
{
    const QRect camera = cameraWindow.frameGeometry();
    QRect place = framed(cameraWindow, content);
    place.moveTopLeft({camera.left() + (camera.width() - place.width()) / 2, camera.bottom() + 1});
    const QPoint corner = onScreen(cameraWindow, place);
    if (corner.y() == place.top() || !cameraWindow.screen())
        return corner;
    // It would lie on the picture, which is in the middle of the camera window: aside it covers least of it. The albums
    // are on the right.
    return {cameraWindow.screen()->availableGeometry().left(), corner.y()};
}

QPoint BWWindowPlacement::rightOf(const QWidget &cameraWindow, QSize content)
{
    const QRect camera = cameraWindow.frameGeometry();
    QRect place = framed(cameraWindow, content);
    place.moveBottomLeft({camera.right() + 1, camera.bottom()});
    return onScreen(cameraWindow, place);
}
