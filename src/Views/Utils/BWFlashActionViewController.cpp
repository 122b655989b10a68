// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWFlashActionViewController.h"

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Utils/BWCrispFrame.h"

#include <algorithm>
#include <QEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QStyle>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::nanoseconds period = 2 * BWOpacityAnimation::duration;
constexpr std::chrono::nanoseconds step = std::chrono::nanoseconds(std::chrono::seconds(1)) / 30;
constexpr int patience = 3; // steps that may pass without a frame of the image below

constexpr int topDistance = 11;

} // namespace

void BWOpacityAnimation::flashOnce(Motion motion)
{
    start(Repeat::Once, motion);
}

void BWOpacityAnimation::repeatFlash(Motion motion)
{
    start(Repeat::Forever, motion);
}

void BWOpacityAnimation::stop()
{
    m_repeat = Repeat::Never;
}

void BWOpacityAnimation::start(Repeat repeat, Motion motion)
{
    m_repeat = repeat;
    m_motion = motion;
    m_start = m_clock.now();
}

bool BWOpacityAnimation::isRunning() const
{
    return m_repeat == Repeat::Forever || (m_repeat == Repeat::Once && m_clock.now() - m_start < period);
}

double BWOpacityAnimation::opacity() const
{
    if (!isRunning())
        return 0;
    if (m_motion == Motion::Gentle)
        return 1;
    const std::chrono::duration<double> time = (m_clock.now() - m_start) % period;
    const std::chrono::duration<double> way = duration;
    return time <= way ? time / way : 2 - time / way;
}

std::optional<std::chrono::nanoseconds> BWOpacityAnimation::nextStep(std::chrono::nanoseconds interval) const
{
    const bool moving = m_motion == Motion::Full;
    if (!isRunning() || (!moving && m_repeat == Repeat::Forever))
        return std::nullopt;
    if (m_repeat == Repeat::Forever)
        return interval;
    const std::chrono::nanoseconds left = m_start + period - m_clock.now();
    return moving ? std::min(interval, left) : left;
}

BWFlashActionViewController::BWFlashActionViewController(QWidget &content, int inset, BWLocalizationManager &texts,
                                                         BWClock &clock)
    : QWidget(&content), m_texts(texts), m_clock(clock), m_inset(inset), m_animation(clock)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    m_picture.setFont(font());
    content.installEventFilter(this);
    hide();
}

BWFlashActionViewController::~BWFlashActionViewController()
{
    cancelStep();
}

void BWFlashActionViewController::setAction(Action action)
{
    BWMainQueue::post(m_alive, [this, action] { doAction(action); });
}

void BWFlashActionViewController::doAction(Action action)
{
    using Sign = BWFlashPicture::Sign;
    switch (action) {
    case Action::SnapshotSaved:
        present(Sign::Check, m_texts.text(u"flash_view"_s, u"snapshot_saved"_s, u"Snapshot saved"_s));
        flashOnce();
        break;
    case Action::RecordingStarted:
        present(Sign::Record, m_texts.text(u"flash_view"_s, u"recording"_s, u"Recording..."_s));
        repeatFlash();
        break;
    case Action::RecordingStopped:
        stopFlash();
        return;
    }
    raise();
    show();
}

void BWFlashActionViewController::present(BWFlashPicture::Sign sign, const QString &caption)
{
    m_animation.stop();
    m_picture.setCaption(sign, caption);
    setAccessibleName(caption);
    pictureChanged();
}

void BWFlashActionViewController::setDetails(const QString &details)
{
    if (details == m_picture.details())
        return;
    const QSize size = m_picture.size();
    m_picture.setDetails(details);
    if (m_picture.size() != size)
        m_fading = {};
    m_steady = {};
    place();
}

void BWFlashActionViewController::flashOnce()
{
    m_animation.flashOnce(motion());
    nextStep();
}

void BWFlashActionViewController::repeatFlash()
{
    m_animation.repeatFlash(motion());
    nextStep();
}

void BWFlashActionViewController::stopFlash()
{
    m_animation.stop();
    nextStep(); // hides it
}

BWOpacityAnimation::Motion BWFlashActionViewController::motion() const
{
    using Motion = BWOpacityAnimation::Motion;
    // Desktops where users can switch animations off report it to Qt as a duration of 0.
    return style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0 ? Motion::Full : Motion::Gentle;
}

/// Repaints, and schedules itself for the next change.
void BWFlashActionViewController::nextStep()
{
    cancelStep();
    if (!m_animation.isRunning()) {
        hide();
        return;
    }
    // A live image below paints it with each of its frames; to paint it in between costs as much as a frame does.
    const bool isKeptFresh = std::exchange(m_paintedByOthers, false);
    if (!isKeptFresh) {
        m_requested = true;
        update(fadingRect());
    }
    const auto next = m_animation.nextStep(isKeptFresh ? patience * step : step);
    if (next && isVisible() && !window()->isMinimized())
        m_step = DispatchAfterStrict::dispatchForQueue(
            this, [this] { nextStep(); }, std::chrono::duration<double>(*next).count(), m_clock);
}

void BWFlashActionViewController::cancelStep()
{
    if (m_step)
        m_step->cancel();
    m_step.reset();
}

QRect BWFlashActionViewController::pillRect() const
{
    const QSize pill = m_picture.size();
    return {QPoint((width() - pill.width()) / 2, m_inset + topDistance), pill};
}

void BWFlashActionViewController::pictureChanged()
{
    m_steady = {};
    m_fading = {};
    place();
}

void BWFlashActionViewController::setInset(int inset)
{
    m_inset = inset;
    place();
}

void BWFlashActionViewController::place()
{
    setGeometry(0, 0, parentWidget()->width(), m_inset + topDistance + m_picture.size().height());
    update(m_drawn.united(pillRect())); // no more than that: a live image is below
}

QRect BWFlashActionViewController::fadingRect() const
{
    return m_picture.fadingRect().translated(pillRect().topLeft());
}

void BWFlashActionViewController::paintEvent(QPaintEvent *event)
{
    if (!std::exchange(m_requested, false) && event->rect().contains(fadingRect()))
        m_paintedByOthers = true;
    const double ratio = devicePixelRatioF();
    if (m_steady.isNull() || m_steady.devicePixelRatio() != ratio)
        m_steady = m_picture.steadyPart(ratio);
    if (m_fading.isNull() || m_fading.devicePixelRatio() != ratio)
        m_fading = m_picture.fadingPart(ratio);
    m_drawn = pillRect();
    QPainter painter(this);
    drawBWPixmap(painter, m_drawn.topLeft(), m_steady);
    painter.setOpacity(m_animation.opacity());
    drawBWPixmap(painter, m_drawn.topLeft(), m_fading);
}

void BWFlashActionViewController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    nextStep();
}

void BWFlashActionViewController::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    cancelStep();
}

void BWFlashActionViewController::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange) {
        m_picture.setFont(font());
        pictureChanged();
    }
    QWidget::changeEvent(event);
}

bool BWFlashActionViewController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && watched == parentWidget())
        pictureChanged();
    return QWidget::eventFilter(watched, event);
}
