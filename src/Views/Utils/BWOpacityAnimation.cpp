#include "Views/Utils/BWOpacityAnimation.h"

#include <algorithm>

namespace {
constexpr std::chrono::nanoseconds period = 2 * BWOpacityAnimation::duration;
// As often as cameras send pictures: below it everything is painted that often anyway.
constexpr std::chrono::nanoseconds step = std::chrono::nanoseconds(std::chrono::seconds(1)) / 30;
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

std::optional<std::chrono::nanoseconds> BWOpacityAnimation::nextStep() const
{
    const bool moving = m_motion == Motion::Full;
    if (!isRunning() || (!moving && m_repeat == Repeat::Forever))
        return std::nullopt;
    if (m_repeat == Repeat::Forever)
        return step;
    const std::chrono::nanoseconds left = m_start + period - m_clock.now();
    return moving ? std::min(step, left) : left;
}
