#pragma once

#include <QLabel>

/// A label that draws its text, wrapped to its width, in the middle of its height, whatever the height. A text that is
/// higher than the label sticks out equally above and below. GUI thread.
class BWVerticallyCenteringTextFieldCell : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

    /// The rectangle in which a text `textHeight` high is drawn from the top: `bounds`, moved so that the text is in the
    /// middle.
    static QRectF titleRectForBounds(const QRectF &bounds, double textHeight);
    /// The same for this label's text.
    QRectF titleRectForBounds(const QRectF &bounds) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    virtual void drawInterior(QPainter &painter, const QRectF &frame) const;
};
