#pragma once

#include <QPixmap>
#include <QWidget>

/// A short text on a dark pill over the live image. Ignores the mouse. Screen readers say what appears.
class BWStatusPill : public QWidget {
    Q_OBJECT

public:
    explicit BWStatusPill(QWidget *parent);

    void setText(const QString &text);
    /// As setText(); screen readers say it even where another text was shown before, or the same.
    void announce(const QString &text);
    const QString &text() const { return m_text; }

    /// Takes its place at the middle of the lower edge of that area; long texts are wrapped.
    void placeIn(const QRect &area);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int widestText() const;
    void fit();
    QPixmap drawn() const;

    QString m_text;
    QPixmap m_drawn; // as the picture below moves, this is painted many times a second
    QRect m_area;
};
