// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>
#include <QFont>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSizeF>
#include <QSlider>
#include <QWheelEvent>

/// Keeps a widget's font at the size its owner set, or makes it smaller, down to 10 points, until the text fits. A member
/// of the widget, which calls it at each change.
class BWFittingFont {
public:
    static constexpr double minimumSize = 10; ///< points

    explicit BWFittingFont(QWidget *widget);

    /// The font as its owner set it.
    const QFont &fullFont() const { return m_fullFont; }
    QFont smallestFont() const;

    /// Sets the widget's font for a text within bounds (points). A font that is no larger than the minimum anyway stays.
    void fit(const QString &text, const QSizeF &bounds);

    /// Call this from changeEvent() when the widget's font has changed. True if the owner changed it, so that the text
    /// must be fitted again.
    bool takeChangedFont();

private:
    QWidget *m_widget;
    QFont m_fullFont;
    bool m_setting = false;
};

/// A label whose font shrinks, down to 10 points, until its text fits; the text may wrap over as many lines as the
/// label is high. A text that does not fit even then is clipped. GUI thread.
class BWResizingTextField : public QLabel {
    Q_OBJECT

public:
    explicit BWResizingTextField(QWidget *parent = nullptr);

    void setStringValue(const QString &text);
    QString stringValue() const { return text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return false; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();
    QSize textSize(const QFont &font) const;

    BWFittingFont m_font;
};

/// A push button whose font shrinks, down to 10 points, until its title fits on its one line. GUI thread.
class BWResizingButton : public QPushButton {
    Q_OBJECT

public:
    explicit BWResizingButton(QWidget *parent = nullptr);

    void setTitle(const QString &title);
    QString title() const { return text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fit();
    QSize buttonSize(const QFont &font) const;

    BWFittingFont m_font;
};

/// A label that wraps its text to its width and centres it vertically. A text taller than the label sticks out equally
/// above and below. GUI thread.
class BWVerticallyCenteringTextFieldCell : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

    /// The rectangle in which a text of that height is drawn from the top: `bounds`, moved so that the text is centred.
    static QRectF titleRectForBounds(const QRectF &bounds, double textHeight);
    /// The same for this label's text.
    QRectF titleRectForBounds(const QRectF &bounds) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    virtual void drawInterior(QPainter &painter, const QRectF &frame) const;
};

/// A radio button that is chosen the moment its mnemonic is pressed. QRadioButton only looks pressed for a tenth of a second
/// first, and a Return within that time would confirm the choice before. GUI thread.
class BWRadioButton : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

protected:
    bool event(QEvent *event) override;
};

/// A slider that a finger drags from wherever it is laid down, as its handle is too small to be hit. GUI thread.
class BWSlider : public QSlider {
public:
    explicit BWSlider(QWidget *parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent *event) override;
};

/// A line between parts of a window that can be seen in every palette. GUI thread.
class BWLine : public QWidget {
public:
    explicit BWLine(Qt::Orientation orientation, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Qt::Orientation m_orientation;
};

/// A pop-up menu that ignores the mouse wheel unless it is open. An accidental turn of the wheel would change too much:
/// another camera or resolution ends a recording, another album receives the next captures.
class BWPopUpButton : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    /// A choice that is too long ends in dots.
    void initStyleOption(QStyleOptionComboBox *option) const override;
    void wheelEvent(QWheelEvent *event) override { event->ignore(); }
};
