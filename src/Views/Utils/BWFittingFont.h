#pragma once

#include <QFont>
#include <QSizeF>

class QWidget;

/// Keeps a widget's font as large as its owner set it, or as much smaller, down to 10 points, as its text needs to fit.
/// Part of the widget, which tells of each change.
class BWFittingFont {
public:
    static constexpr double minimumSize = 10; ///< points

    explicit BWFittingFont(QWidget *widget);

    /// The font as its owner set it.
    const QFont &fullFont() const { return m_fullFont; }
    /// The smallest font that is used.
    QFont smallestFont() const;

    /// Sets the widget's font for a text within bounds (points). A font that is no larger than the minimum anyway stays.
    void fit(const QString &text, const QSizeF &bounds);

    /// To be called from changeEvent() when the widget's font has changed. True if the owner did that, so that the
    /// text must be fitted again.
    bool takeChangedFont();

private:
    QWidget *m_widget;
    QFont m_fullFont;
    bool m_setting = false;
};
