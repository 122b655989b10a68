// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWPreparingView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimerEvent>

namespace {

constexpr int spokes = 12;
constexpr int stepMilliseconds = 80; // about one turn per second
constexpr double faintest = 0.15;

} // namespace

BWBusyIndicator::BWBusyIndicator(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BWBusyIndicator::startAnimation()
{
    m_animating = true;
    if (isVisible() && !m_timer.isActive())
        m_timer.start(stepMilliseconds, this);
}

void BWBusyIndicator::stopAnimation()
{
    m_animating = false;
    m_timer.stop();
}

QSize BWBusyIndicator::sizeHint() const
{
    const int side = fontMetrics().height() + 2;
    return {side, side};
}

void BWBusyIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    const double radius = qMin(width(), height()) / 2.0;
    QColor color = palette().color(QPalette::WindowText);
    for (int i = 0; i < spokes; ++i) {
        // The spoke at the current step is the darkest; those before it fade.
        const int age = (m_step - i + spokes) % spokes;
        color.setAlphaF(static_cast<float>(qMax(faintest, 1.0 - static_cast<double>(age) / spokes)));
        painter.setPen(QPen(color, radius * 0.18, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(i * 360.0 / spokes);
        painter.drawLine(QPointF(0, -radius * 0.5), QPointF(0, -radius * 0.88));
        painter.restore();
    }
}

void BWBusyIndicator::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer.timerId())
        return;
    m_step = (m_step + 1) % spokes;
    update();
}

void BWBusyIndicator::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_animating)
        m_timer.start(stepMilliseconds, this);
}

void BWBusyIndicator::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_timer.stop();
}

BWPreparingView::BWPreparingView(QWidget *parent)
    : QWidget(parent), m_indicator(new BWBusyIndicator), m_label(new QLabel)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_indicator);
    layout->addWidget(m_label, 1);
    for (QWidget *widget : std::initializer_list<QWidget *>{m_indicator, m_label}) {
        QSizePolicy policy = widget->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        widget->setSizePolicy(policy);
        widget->hide();
    }
}

void BWPreparingView::setText(const QString &text)
{
    m_label->setText(text);
}

void BWPreparingView::setPreparing(bool preparing)
{
    m_label->setVisible(preparing);
    m_indicator->setVisible(preparing);
    if (preparing)
        m_indicator->startAnimation();
    else
        m_indicator->stopAnimation();
}
