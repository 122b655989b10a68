#include "Views/Utils/BWResizingButton.h"

#include <QEvent>
#include <QFontMetrics>
#include <QStyleOptionButton>

BWResizingButton::BWResizingButton(QWidget *parent) : QPushButton(parent), m_font(this) { }

void BWResizingButton::setTitle(const QString &title)
{
    setText(title);
    fit();
}

void BWResizingButton::fit()
{
    QStyleOptionButton option;
    initStyleOption(&option);
    QSizeF bounds = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this).size();
    bounds.setHeight(1); // a title does not wrap, however high the button is
    m_font.fit(text(), bounds);
}

QSize BWResizingButton::buttonSize(const QFont &font) const
{
    // what the button wants, with the text's part exchanged for the text in that font
    const QSize now = fontMetrics().size(Qt::TextShowMnemonic, text());
    return QPushButton::sizeHint() - now + QFontMetrics(font).size(Qt::TextShowMnemonic, text());
}

QSize BWResizingButton::sizeHint() const
{
    return buttonSize(m_font.fullFont());
}

QSize BWResizingButton::minimumSizeHint() const
{
    return buttonSize(m_font.smallestFont());
}

void BWResizingButton::resizeEvent(QResizeEvent *event)
{
    QPushButton::resizeEvent(event);
    fit();
}

void BWResizingButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_font.takeChangedFont())
        fit();
}
