#pragma once

#include <QFont>
#include <QPixmap>
#include <QRect>
#include <QString>

class QPainter;

/// How the flash over the live image looks: a sign and a caption on a pill, and details beside them. It is drawn in two
/// parts, of which only one fades.
class BWFlashPicture {
public:
    enum class Sign {
        Check, ///< done: the pill fades with its caption
        Record, ///< goes on: the pill stays with its details, the caption blinks on it
    };

    /// A new caption without details.
    void setCaption(Sign sign, const QString &caption);
    /// The pill grows with its details, but does not shrink: what changes all the time should not make it tremble.
    void setDetails(const QString &details);
    void setFont(const QFont &font);

    Sign sign() const { return m_sign; }
    const QString &caption() const { return m_caption; }
    const QString &details() const { return m_details; }

    QSize size() const;
    /// Where the fading part draws, from the pill's corner.
    QRect fadingRect() const;

    /// Pictures as large as the pill, for a screen of that scale.
    QPixmap steadyPart(double ratio) const;
    QPixmap fadingPart(double ratio) const;

private:
    int signWidth() const;
    int captionEnd() const;
    void drawSign(QPainter &painter) const;
    QPixmap emptyPixmap(double ratio) const;

    Sign m_sign = Sign::Check;
    QString m_caption;
    QString m_details;
    QFont m_captionFont;
    QFont m_detailsFont;
    int m_detailsWidth = 0;
};
