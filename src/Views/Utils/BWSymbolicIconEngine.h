#pragma once

#include <QIconEngine>

/// Draws an SVG file in the colours of the application's palette: what the file paints in "currentColor" takes the
/// text colour, what it paints in "accentColor" the highlight colour. Rendered at the exact size asked for; the
/// palette is asked at every drawing. GUI thread only.
class BWSymbolicIconEngine : public QIconEngine {
public:
    explicit BWSymbolicIconEngine(QString path);

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QIconEngine *clone() const override;
    bool isNull() override { return false; }
    QString key() const override;

private:
    QString m_path;
};
