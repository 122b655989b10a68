// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWDoubleButton.h"

#include "Views/Utils/BWBarButton.h"

#include <cstdint>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

namespace {

constexpr int buttonPadding = 7;
constexpr int captionGap = 3;
constexpr double captionScale = 0.85;
constexpr int textGap = 4;

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
    QSize size = iconSize() + QSize(2 * buttonPadding, 2 * buttonPadding);
    if (!m_caption.isEmpty()) {
        size.rheight() += captionHeight() - buttonPadding / 2;
        size.setWidth(qMax(size.width(), QFontMetrics(captionFont()).horizontalAdvance(m_caption) + buttonPadding));
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
    event->ignore(); // the press has done it all
}

BWDoubleButton::BWDoubleButton(QWidget *parent)
    : QWidget(parent),
      m_left(new BWDoubleButtonHalf(this)),
      m_right(new BWDoubleButtonHalf(this)),
      m_label(new QLabel(this))
{
    m_label->setAlignment(Qt::AlignCenter);
    m_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_label->hide();

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_left, 1);
    layout->addWidget(m_label);
    layout->addWidget(m_right, 1);

    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    setFocusProxy(m_left);
    setTabOrder(m_left, m_right);

    connect(m_left, &QAbstractButton::clicked, this, [this] { trigger(false); });
    connect(m_right, &QAbstractButton::clicked, this, [this] { trigger(true); });
    for (BWDoubleButtonHalf *half : {m_left, m_right})
        connect(half, &BWDoubleButtonHalf::arrowPressed, this,
                [this](bool right) { (right != isRightToLeft() ? m_right : m_left)->setFocus(Qt::TabFocusReason); });
}

bool BWDoubleButton::isRightHalf(double x, double width)
{
    const auto wholePoints = static_cast<uint32_t>(qMax(0.0, x));
    return width / 2 < wholePoints;
}

/// Where texts are read from right to left, the halves have changed places.
bool BWDoubleButton::hitsRight(double x) const
{
    return isRightHalf(x, width()) != isRightToLeft();
}

void BWDoubleButton::setLeftIcon(const QIcon &icon)
{
    m_left->setIcon(icon);
}

void BWDoubleButton::setRightIcon(const QIcon &icon)
{
    m_right->setIcon(icon);
}

void BWDoubleButton::setIconSize(const QSize &size)
{
    m_left->setIconSize(size);
    m_right->setIconSize(size);
}

void BWDoubleButton::setLeftName(const QString &name)
{
    m_left->setAccessibleName(name);
}

void BWDoubleButton::setRightName(const QString &name)
{
    m_right->setAccessibleName(name);
}

void BWDoubleButton::setLeftToolTip(const QString &text)
{
    m_left->setToolTip(text);
}

void BWDoubleButton::setRightToolTip(const QString &text)
{
    m_right->setToolTip(text);
}

void BWDoubleButton::setLeftCaption(const QString &caption)
{
    m_left->setCaption(caption);
    updateLabel();
}

void BWDoubleButton::setRightCaption(const QString &caption)
{
    m_right->setCaption(caption);
    updateLabel();
}

void BWDoubleButton::setText(const QString &text)
{
    m_label->setText(text);
    m_label->setVisible(!text.isNull());
    updateLabel();
}

QString BWDoubleButton::text() const
{
    return m_label->text();
}

void BWDoubleButton::setWidestText(const QString &text)
{
    m_widestText = text;
    updateLabel();
}

void BWDoubleButton::updateLabel()
{
    // In some fonts a label measures its text wider than the advance.
    const QFontMetrics metrics = m_label->fontMetrics();
    const int bounds = metrics.boundingRect(QRect(0, 0, 2000, 2000), Qt::AlignCenter, m_widestText).width();
    m_label->setMinimumWidth(qMax(bounds, metrics.horizontalAdvance(m_widestText)) + 2 * textGap);
    const int lift = qMax(m_left->iconOffset(), m_right->iconOffset());
    m_label->setContentsMargins(textGap, 0, textGap, 2 * lift); // level with the icons, above the captions
}

void BWDoubleButton::trigger(bool right)
{
    setLastRight(right);
    Q_EMIT triggered(this);
}

void BWDoubleButton::showMouse(Half hovered, Half pressed)
{
    m_left->setMouseState(hovered == Half::Left, pressed == Half::Left);
    m_right->setMouseState(hovered == Half::Right, pressed == Half::Right);
}

void BWDoubleButton::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const bool right = hitsRight(event->position().x());
    const Half half = right ? Half::Right : Half::Left;
    showMouse(half, half);
    trigger(right);
}

void BWDoubleButton::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() == Qt::NoButton)
        showMouse(hitsRight(event->position().x()) ? Half::Right : Half::Left, Half::None);
}

void BWDoubleButton::mouseReleaseEvent(QMouseEvent *event)
{
    const Half half = hitsRight(event->position().x()) ? Half::Right : Half::Left;
    showMouse(rect().contains(event->position().toPoint()) ? half : Half::None, Half::None);
}

void BWDoubleButton::leaveEvent(QEvent *event)
{
    showMouse(Half::None, Half::None);
    QWidget::leaveEvent(event);
}

void BWDoubleButton::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateLabel();
    if (event->type() == QEvent::EnabledChange)
        showMouse(Half::None, Half::None);
    QWidget::changeEvent(event);
}

bool BWDoubleButton::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const BWDoubleButtonHalf *half = hitsRight(help->pos().x()) ? m_right : m_left;
        const QString tip = half->toolTip().isEmpty() ? half->accessibleName() : half->toolTip();
        QToolTip::showText(help->globalPos(), tip, this);
        return true;
    }
    return QWidget::event(event);
}
