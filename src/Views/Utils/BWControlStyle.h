// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

/// The desktop's style, with colours that can be told apart. Fusion, Qt's own, draws edges as darker shades of the window,
/// which on a dark one nobody sees; other styles' controls stay as they are. GUI thread.
class BWControlStyle : public QProxyStyle {
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    /// Whether it is Qt's own, which desktops leave to programs that bring no other.
    bool isFusion() const;

    using QProxyStyle::polish;
    void polish(QPalette &palette) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;
};
