// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QWidget>

class QIcon;
class QLabel;

/// One half of a BWDoubleButton: draws its icon and caption, takes the keyboard focus and is what a screen reader sees.
/// The whole button handles the mouse. Space, Return and a screen reader's "press" emit clicked().
class BWDoubleButtonHalf : public QAbstractButton {
    Q_OBJECT

public:
    explicit BWDoubleButtonHalf(QWidget *parent);

    /// A short text below the icon; none if empty.
    void setCaption(const QString &caption);
    const QString &caption() const { return m_caption; }

    /// How far the middle of the icon is above the middle of the half.
    int iconOffset() const;

    /// Called by the whole button.
    void setMouseState(bool hovered, bool pressed);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// Left or Right was pressed, to move the focus to the half on that side, if there is one.
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

/// A button of two halves, such as zoom out and zoom in, with an optional text between them.
///
/// The button acts when the mouse is pressed, anywhere on it: it sets lastRight() and emits triggered(). With the
/// keyboard each half takes the focus (Tab, or Left and Right) and acts on Space and Return. Screen readers see two
/// buttons named by setLeftName() and setRightName(), in a group with this widget's accessible name. In a layout from right
/// to left, the halves change places. GUI thread.
class BWDoubleButton : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool lastRight READ lastRight WRITE setLastRight)

public:
    explicit BWDoubleButton(QWidget *parent = nullptr);

    /// Whether a press at `x` (points from the button's left edge) on a button `width` points wide hits the right half:
    /// x, truncated to whole points, must be more than half the width.
    static bool isRightHalf(double x, double width);

    bool lastRight() const { return m_lastRight; }
    void setLastRight(bool lastRight) { m_lastRight = lastRight; }

    void setLeftIcon(const QIcon &icon);
    void setRightIcon(const QIcon &icon);
    void setIconSize(const QSize &size);
    /// The accessible name of a half; also its tooltip unless one is set.
    void setLeftName(const QString &name);
    void setRightName(const QString &name);
    void setLeftToolTip(const QString &text);
    void setRightToolTip(const QString &text);
    /// A short text below the icon of a half; none if empty.
    void setLeftCaption(const QString &caption);
    void setRightCaption(const QString &caption);
    /// The text between the halves; none if null.
    void setText(const QString &text);
    QString text() const;
    /// Reserves room for that text, so that shorter ones do not move the icons.
    void setWidestText(const QString &text);

Q_SIGNALS:
    void triggered(BWDoubleButton *button);

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    enum class Half { None, Left, Right };

    bool hitsRight(double x) const;
    void trigger(bool right);
    void showMouse(Half hovered, Half pressed);
    void updateLabel();

    BWDoubleButtonHalf *m_left;
    BWDoubleButtonHalf *m_right;
    QLabel *m_label;
    QString m_widestText;
    bool m_lastRight = false;
};
