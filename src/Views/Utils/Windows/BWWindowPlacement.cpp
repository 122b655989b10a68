// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <algorithm>
#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace {

constexpr int titleHeight = BWWindowPlacement::assumedMargins.top();

QRect centredBelow(const QRect &camera, QSize panel)
{
    return {QPoint(camera.left() + (camera.width() - panel.width()) / 2, camera.bottom() + 1), panel};
}

QRect rightOf(const QRect &camera, QSize albums)
{
    return {QPoint(camera.right() + 1, camera.bottom() + 1 - albums.height()), albums};
}

/// How much of the other window's title is covered, in points of its width.
int hiddenTitle(const QRect &place, const QRect &other)
{
    return std::max(0, (place & QRect(other.topLeft(), QSize(other.width(), titleHeight))).width());
}

/// The upper left corner matters most: the title is there.
QRect movedInto(const QRect &room, const QRect &place)
{
    QRect moved(place.topLeft(), place.size().boundedTo(room.size()));
    moved.moveBottom(std::min(moved.bottom(), room.bottom()));
    moved.moveRight(std::min(moved.right(), room.right()));
    moved.moveTop(std::max(moved.top(), room.top()));
    moved.moveLeft(std::max(moved.left(), room.left()));
    return moved;
}

} // namespace

BWWindowPlacement::BWWindowPlacement(QSize mainScreen, QList<QRect> rooms)
    : m_mainScreen(mainScreen), m_rooms(std::move(rooms))
{
}

BWWindowPlacement BWWindowPlacement::onScreens()
{
    QList<QRect> rooms;
    const QList<QScreen *> screens = QGuiApplication::screens(); // the main one first
    for (const QScreen *screen : screens)
        rooms.append(screen->availableGeometry());
    return {screens.isEmpty() ? QSize() : screens.first()->size(), rooms};
}

QRect BWWindowPlacement::camera(QSize content, const QMargins &margins) const
{
    const QPoint corner(m_mainScreen.width() / 2 - content.width() / 2,
                        m_mainScreen.height() / 2 - content.height() / 2);
    const QRect place(corner, content.grownBy(margins));
    return fitted(place, place);
}

QRect BWWindowPlacement::below(const QRect &camera, QSize panel, const QList<QRect> &others) const
{
    QRect place = fitted(centredBelow(camera, panel), camera);
    for (const QRect &other : others) {
        if (2 * hiddenTitle(place, other) < other.width())
            continue;
        QRect lower = place;
        lower.moveTop(other.top() + titleHeight);
        const QRect left(QPoint(other.left() - panel.width(), place.top()), panel);
        const QRect right(QPoint(other.right() + 1, place.top()), panel);
        if (fitted(lower, camera) == lower)
            place = lower;
        else // the albums are on the right
            place = std::min({fitted(left, place), fitted(right, place)}, [&](const QRect &a, const QRect &b) {
                return hiddenTitle(a, other) < hiddenTitle(b, other);
            });
    }
    return place;
}

BWWindowPlacement::Pair BWWindowPlacement::beside(const QRect &camera, int leastCameraWidth, QSize albums,
                                                  int leastAlbumsWidth) const
{
    if (fitted(rightOf(camera, albums), camera) == rightOf(camera, albums))
        return {camera, rightOf(camera, albums)};
    const QRect room = roomOf(camera, camera);
    Pair pair{camera, {}};
    const auto excess = [&] { return std::max(0, pair.camera.right() + albums.width() - room.right()); };
    pair.camera.translate(-std::clamp(pair.camera.left() - room.left(), 0, excess()), 0);
    pair.camera.setWidth(std::max(std::min(leastCameraWidth, camera.width()), pair.camera.width() - excess()));
    albums.setWidth(std::max(std::min(leastAlbumsWidth, albums.width()), albums.width() - excess()));
    pair.albums = movedInto(room, rightOf(pair.camera, albums));
    return pair;
}

QRect BWWindowPlacement::besideFixed(const QRect &camera, QSize albums) const
{
    return fitted(rightOf(camera, albums), camera);
}

QRect BWWindowPlacement::fitted(const QRect &place, const QRect &beside) const
{
    const QRect room = roomOf(place, beside);
    return room.contains(place) ? place : movedInto(room, place);
}

const QRect *BWWindowPlacement::roomOfMost(const QRect &place) const
{
    const auto shared = [&](const QRect &room) {
        const QSize size = (room & place).size();
        return std::max(0, size.width()) * std::max(0, size.height());
    };
    const auto most = std::max_element(m_rooms.begin(), m_rooms.end(),
                                       [&](const QRect &a, const QRect &b) { return shared(a) < shared(b); });
    return most != m_rooms.end() && shared(*most) > 0 ? &*most : nullptr;
}

QRect BWWindowPlacement::roomOf(const QRect &place, const QRect &beside) const
{
    if (const QRect *room = roomOfMost(place))
        return *room;
    if (const QRect *room = roomOfMost(beside))
        return *room;
    return m_rooms.isEmpty() ? place : m_rooms.first();
}
