#include "Views/Utils/BWFittingFont.h"

#include "Utils/BWUIUtils.h"

#include <QFontInfo>
#include <QScopedValueRollback>
#include <QWidget>

BWFittingFont::BWFittingFont(QWidget *widget) : m_widget(widget), m_fullFont(widget->font()) { }

QFont BWFittingFont::smallestFont() const
{
    QFont font = m_fullFont;
    if (font.pointSizeF() > minimumSize)
        font.setPointSizeF(minimumSize);
    return font;
}

void BWFittingFont::fit(const QString &text, const QSizeF &bounds)
{
    QFont font = m_fullFont;
    const double fullSize = QFontInfo(m_fullFont).pointSizeF(); // of whole pixels, hence not quite what was asked for
    if (fullSize > minimumSize) {
        const double fitting = BWUIUtils::fontToFit(m_fullFont, bounds, text, minimumSize).pointSizeF();
        if (fitting < fullSize)
            font.setPointSizeF(fitting);
    }
    const QScopedValueRollback guard(m_setting, true);
    m_widget->setFont(font);
}

bool BWFittingFont::takeChangedFont()
{
    if (m_setting)
        return false;
    m_fullFont = m_widget->font();
    return true;
}
