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

QSize BWDoubleButtonHalf::sizeHint() const
{
    QSize size = iconSize() + QSize(2 * padding, 2 * padding);
    if (!m_caption.isEmpty()) {
        const QFontMetrics metrics(captionFont());
        size.rheight() += metrics.height() + captionGap - padding / 2;
        size.setWidth(qMax(size.width(), metrics.horizontalAdvance(m_caption) + padding));
    }
    return size;
}

void BWDoubleButtonHalf::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawBWControlPanel(painter, rect(), palette(), {isEnabled(), m_hovered, m_pressed, hasFocus()});

    QRect iconArea = rect();
    if (!m_caption.isEmpty()) {
        painter.setFont(captionFont());
        const int textHeight = painter.fontMetrics().height();
        const int top = (height() - iconSize().height() - captionGap - textHeight) / 2;
        iconArea = QRect(0, top, width(), iconSize().height());
        const QRect captionArea(0, iconArea.bottom() + 1 + captionGap, width(), textHeight);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(captionArea, Qt::AlignCenter | Qt::TextSingleLine, m_caption);
    }
    const QRect iconRect(iconArea.x() + (iconArea.width() - iconSize().width()) / 2,
                         iconArea.y() + (iconArea.height() - iconSize().height()) / 2, iconSize().width(),
                         iconSize().height());
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
