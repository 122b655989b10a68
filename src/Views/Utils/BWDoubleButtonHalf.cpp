#include "Views/Utils/BWDoubleButtonHalf.h"

#include "Views/Utils/BWControlPainting.h"

#include <QKeyEvent>
#include <QPainter>

namespace {
constexpr int padding = 7;
constexpr int captionGap = 3;
constexpr double captionScale = 0.85;
} // namespace

BWDoubleButtonHalf::BWDoubleButtonHalf(QWidget *parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setIconSize(QSize(22, 22));
}

void BWDoubleButtonHalf::setCaption(const QString &caption)
{
    m_caption = caption;
    updateGeometry();
    update();
}

void BWDoubleButtonHalf::setMouseState(bool hovered, bool pressed)
{
    if (m_hovered == hovered && m_pressed == pressed)
        return;
    m_hovered = hovered;
    m_pressed = pressed;
    update();
}

QFont BWDoubleButtonHalf::captionFont() const
{
    QFont smaller = font();
    if (smaller.pointSizeF() > 0)
        smaller.setPointSizeF(smaller.pointSizeF() * captionScale);
    return smaller;
}

int BWDoubleButtonHalf::captionHeight() const
{
    return m_caption.isEmpty() ? 0 : QFontMetrics(captionFont()).height() + captionGap;
}

int BWDoubleButtonHalf::iconOffset() const
{
    return captionHeight() / 2;
}

QSize BWDoubleButtonHalf::sizeHint() const
{
    QSize size = iconSize() + QSize(2 * padding, 2 * padding);
    if (!m_caption.isEmpty()) {
        size.rheight() += captionHeight() - padding / 2;
        size.setWidth(qMax(size.width(), QFontMetrics(captionFont()).horizontalAdvance(m_caption) + padding));
    }
    return size;
}

void BWDoubleButtonHalf::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawBWControlPanel(painter, rect(), palette(), {isEnabled(), m_hovered, m_pressed, hasFocus()});

    QRect iconRect(QPoint(), iconSize());
    iconRect.moveCenter(rect().center() - QPoint(0, iconOffset()));
    if (!m_caption.isEmpty()) {
        painter.setFont(captionFont());
        painter.setPen(palette().color(QPalette::WindowText));
        const QRect captionRect(0, iconRect.bottom() + 1 + captionGap, width(), painter.fontMetrics().height());
        painter.drawText(captionRect, Qt::AlignCenter | Qt::TextSingleLine, m_caption);
    }
    icon().paint(&painter, iconRect, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}

void BWDoubleButtonHalf::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click(); // repeats while the key is held, as a slider would
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
        Q_EMIT arrowPressed(event->key() == Qt::Key_Right);
        break;
    default:
        event->ignore();
    }
}

void BWDoubleButtonHalf::keyReleaseEvent(QKeyEvent *event)
{
    event->ignore(); // everything happened at the press
}
