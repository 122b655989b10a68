#pragma once

#include <QAbstractButton>

/// One half of a BWDoubleButton: it draws the half's icon and caption, takes the keyboard's focus and is what a screen
/// reader sees. The mouse belongs to the whole button. Space, Return and a screen reader's "press" emit clicked().
class BWDoubleButtonHalf : public QAbstractButton {
    Q_OBJECT

public:
    explicit BWDoubleButtonHalf(QWidget *parent);

    /// A short text below the icon; none if empty.
    void setCaption(const QString &caption);
    const QString &caption() const { return m_caption; }

    /// How far the middle of the icon is above the middle of the half.
    int iconOffset() const;

    /// How the mouse shows on the half; told by the whole button.
    void setMouseState(bool hovered, bool pressed);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// Left or Right was pressed: the focus is wanted on the other half if there is one on that side.
    void arrowPressed(bool right);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    QFont captionFont() const;
    int captionHeight() const; ///< the gap above it included; 0 without a caption

    QString m_caption;
    bool m_hovered = false;
    bool m_pressed = false;
};
