#pragma once

#include <QWidget>

class BWDoubleButtonHalf;
class QIcon;
class QLabel;

/// A button of two halves, such as zoom out and zoom in, with an optional text between them.
///
/// The mouse acts when it is pressed, anywhere on the button: lastRight() tells which half was meant, then triggered()
/// is emitted. With the keyboard each half takes the focus (Tab, or Left and Right) and acts on Space and Return.
/// Screen readers see the halves as two buttons with the names given by setLeftName() and setRightName(), inside a
/// group with this widget's accessible name. GUI thread.
class BWDoubleButton : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool lastRight READ lastRight WRITE setLastRight)

public:
    explicit BWDoubleButton(QWidget *parent = nullptr);

    /// Whether a press at `x` (points from the button's left edge) on a button `width` points wide means the right
    /// half: x is cut to whole points, and must then be more than half the width.
    static bool isRightHalf(double x, double width);

    bool lastRight() const { return m_lastRight; }
    void setLastRight(bool lastRight) { m_lastRight = lastRight; }

    void setLeftIcon(const QIcon &icon);
    void setRightIcon(const QIcon &icon);
    void setIconSize(const QSize &size);
    /// Accessible name of a half; also its tooltip unless one is set.
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
    /// Keeps room for that text, so that shorter ones do not move the icons.
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

    void trigger(bool right);
    void showMouse(Half hovered, Half pressed);
    void updateLabel();

    BWDoubleButtonHalf *m_left;
    BWDoubleButtonHalf *m_right;
    QLabel *m_label;
    QString m_widestText;
    bool m_lastRight = false;
};
