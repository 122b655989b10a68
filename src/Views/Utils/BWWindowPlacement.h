#pragma once

#include <QList>
#include <QMargins>
#include <QRect>

/// Where windows belong that the user has not put anywhere. It knows no window: frames, title bar included, go in and
/// come out, in points of the desktop. A place that does not fit the screen is moved as little as possible.
class BWWindowPlacement {
public:
    /// Title and edges that window managers add to a window, about. They are not known before one has been shown.
    static constexpr QMargins assumedMargins{4, 40, 4, 4};

    struct Pair {
        QRect camera;
        QRect albums;
    };

    /// The size of the whole main screen, and what each screen leaves to windows, the main one's first.
    BWWindowPlacement(QSize mainScreen, QList<QRect> rooms);
    /// On the screens that there are.
    static BWWindowPlacement onScreens();

    /// The camera window: its content, menu bar included, in the middle of the main screen. The origin of that screen is
    /// not added: the position is counted within the whole desktop.
    QRect camera(QSize content, const QMargins &margins) const;

    /// A panel of the camera window: centred below it. It leaves the title of another panel that stands there to be seen:
    /// it goes a little lower, or aside where there is no room for that.
    QRect below(const QRect &camera, QSize panel, const QList<QRect> &others = {}) const;

    /// The album window: to the right of the camera window, lower edges at the same height. Where the screen has no room
    /// there, the camera window makes some: it moves, then becomes narrower. Then the albums become narrower, too, and
    /// only when neither can they lie over each other.
    Pair beside(const QRect &camera, int leastCameraWidth, QSize albums, int leastAlbumsWidth) const;
    /// The same with a camera window that stays as it is.
    QRect besideFixed(const QRect &camera, QSize albums) const;

    /// The place itself if one of the screens has room for all of it; else moved into the screen that has room for most
    /// of it, or into that of the window beside, and no larger than that screen's room.
    QRect fitted(const QRect &place, const QRect &beside) const;

private:
    const QRect *roomOfMost(const QRect &place) const;
    QRect roomOf(const QRect &place, const QRect &beside) const;

    QSize m_mainScreen;
    QList<QRect> m_rooms;
};
