#pragma once

#include <chrono>
#include <optional>
#include <QRectF>
#include <QString>

class QFont;
class QPainter;
class QPalette;

/// The parts of a cell of a grid of thumbnails. `picture` is where the picture is. GUI thread.
class BWThumbnailPainting {
public:
    /// Where a picture will be.
    static void drawPlaceholder(QPainter &painter, const QRectF &picture, const QPalette &palette);
    /// That there will be none.
    static void drawNoPicture(QPainter &painter, const QRectF &picture, const QPalette &palette);
    /// A quiet frame; the picture is drawn over it.
    static void drawSelection(QPainter &painter, const QRectF &picture, const QPalette &palette);
    /// The ring of the keyboard's focus, around the frame of the selection.
    static void drawFocus(QPainter &painter, const QRectF &picture, const QPalette &palette);
    /// The sign of a movie with its length, if that is known.
    static void drawMovieMark(QPainter &painter, const QRectF &picture,
                              const std::optional<std::chrono::milliseconds> &length, const QFont &font);

    /// "0:12", "1:02:03"; a movie is never shorter than a second.
    static QString lengthText(std::chrono::milliseconds length);
};
