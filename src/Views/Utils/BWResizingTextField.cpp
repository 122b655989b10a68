#include "Views/Utils/BWResizingTextField.h"

#include <QEvent>
#include <QFontMetrics>

BWResizingTextField::BWResizingTextField(QWidget *parent) : QLabel(parent), m_font(this) { }

void BWResizingTextField::setStringValue(const QString &text)
{
    setText(text);
    fit();
}

void BWResizingTextField::fit()
{
    // Two lines of which half is cut off are worse than a smaller one.
    const bool wraps = contentsRect().height() >= 2 * QFontMetrics(m_font.fullFont()).lineSpacing();
    m_font.fit(text(), QSizeF(contentsRect().width(), wraps ? contentsRect().height() : 1));
    setWordWrap(wraps);
}

QSize BWResizingTextField::textSize(const QFont &font) const
{
    const QMargins margins = contentsMargins();
    return QFontMetrics(font).size(0, text()).grownBy(margins) + QSize(2 * margin(), 2 * margin());
}

QSize BWResizingTextField::sizeHint() const
{
    return textSize(m_font.fullFont());
}

QSize BWResizingTextField::minimumSizeHint() const
{
    return textSize(m_font.smallestFont());
}

void BWResizingTextField::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    fit();
}

void BWResizingTextField::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_font.takeChangedFont())
        fit();
}
