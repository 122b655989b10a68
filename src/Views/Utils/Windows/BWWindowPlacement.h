// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMargins>
#include <QRect>

/// The default places of windows. It knows no window: frames, title bar included, go in and come out, in points of the
/// desktop. A place that does not fit the screen is moved as little as possible.
class BWWindowPlacement {
public:
    /// Roughly the title bar and edges that window managers add; unknown before a window has been shown.
    static constexpr QMargins assumedMargins{4, 40, 4, 4};

    struct Pair {
        QRect camera;
        QRect albums;
    };

    /// The size of the whole main screen, and each screen's area for windows, the main one's first.
    BWWindowPlacement(QSize mainScreen, QList<QRect> rooms);
    /// For the present screens.
    static BWWindowPlacement onScreens();

    /// The camera window: its content, menu bar included, centred on the size of the main screen. The origin of that
    /// screen is not added: the position is one of the whole desktop.
    QRect camera(QSize content, const QMargins &margins) const;

    /// A panel of the camera window: centred below it. To keep the title of another panel there visible, it goes a little
    /// lower, or aside if there is no room for that.
    QRect below(const QRect &camera, QSize panel, const QList<QRect> &others = {}) const;

    /// The album window: to the right of the camera window, with the lower edges aligned. If the screen has no room there,
    /// the camera window moves, then becomes narrower; then the album window becomes narrower, too. Only if that is not
    /// enough do they overlap.
    Pair beside(const QRect &camera, int leastCameraWidth, QSize albums, int leastAlbumsWidth) const;
    /// The same with a camera window that stays as it is.
    QRect besideFixed(const QRect &camera, QSize albums) const;

    /// The place itself if it fits one of the screens; otherwise moved into the screen that holds most of it, or into that
    /// of the window `beside`, and no larger than that screen's area for windows.
    QRect fitted(const QRect &place, const QRect &beside) const;

private:
    const QRect *roomOfMost(const QRect &place) const;
    QRect roomOf(const QRect &place, const QRect &beside) const;

    QSize m_mainScreen;
    QList<QRect> m_rooms;
};
