// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

/// The desktop's style, with colours that can be told apart. Fusion, Qt's own, draws edges as darker shades of the window,
/// which on a dark one nobody sees, and the focus hardly stronger; other styles' controls stay as they are. The focus shows
/// for those who use keys: after the last key, until a press of the mouse gives it to something; in high contrast always.
/// GUI thread.
class BWControlStyle : public QProxyStyle {
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    /// Whether it is Qt's own, which desktops leave to programs that bring no other.
    bool isFusion() const;

    using QProxyStyle::polish;
    void polish(QPalette &palette) override;
    void polish(QApplication *application) override;
    using QProxyStyle::unpolish;
    void unpolish(QApplication *application) override;
    int styleHint(StyleHint hint, const QStyleOption *option = nullptr, const QWidget *widget = nullptr,
                  QStyleHintReturn *data = nullptr) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option = nullptr,
                    const QWidget *widget = nullptr) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    bool m_usesKeys = false; // and not the mouse
};
