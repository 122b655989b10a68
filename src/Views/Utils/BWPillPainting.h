// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <QColor>
#include <QFont>
#include <QPixmap>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QString>

class QPainter;
class QWidget;

/// Draws the background of a text over the live image: the same in light and dark palettes, because it lies over the
/// picture, not the window; in high contrast black, with an edge. GUI thread.
void drawBWPill(QPainter &painter, const QRectF &rect);

/// Paints a widget that is a pill, from a drawing that is kept because the moving picture below has it painted many times
/// a second. Where there is none for this screen, it is made: `drawTexts` has the widget's font.
void paintBWPill(QWidget &widget, QPixmap &drawing, const std::function<void(QPainter &)> &drawTexts,
                 double opacity = 1);

/// How far pills keep from the edges of the picture, in points.
inline constexpr int bwPillDistance = 11;

/// Its colour, and that of texts on it.
inline constexpr QColor bwPillColor(24, 24, 26, 205);
inline constexpr QColor bwPillTextColor(245, 245, 245);

/// The flash over the live image as pictures: a sign and a caption on a pill, and details beside them. It comes in two
/// parts, of which only one fades.
class BWFlashPicture {
public:
    enum class Sign {
        Check, ///< the pill fades with its caption
        Pause, ///< likewise
        Record, ///< the pill and its details stay, the caption blinks
    };

    /// Clears the details.
    void setCaption(Sign sign, const QString &caption);
    /// The pill grows with its details but does not shrink, so that constant changes do not make it jitter.
    void setDetails(const QString &details);
    void setFont(const QFont &font);

    Sign sign() const { return m_sign; }
    const QString &caption() const { return m_caption; }
    const QString &details() const { return m_details; }

    QSize size() const { return m_size; }
    /// The area of the fading part, relative to the pill's corner.
    QRect fadingRect() const;

    /// Both as large as the pill, for a screen of that scale.
    QPixmap steadyPart(double ratio) const;
    QPixmap fadingPart(double ratio) const;

private:
    void measure();
    int signWidth() const;
    QRect placed(int left, int width) const;
    void drawSign(QPainter &painter) const;

    Sign m_sign = Sign::Check;
    QString m_caption;
    QString m_details;
    QFont m_captionFont;
    QFont m_detailsFont;
    int m_detailsWidth = 0;
    int m_captionEnd = 0;
    QSize m_size; // kept, as it is asked for with each frame of the picture below
};
