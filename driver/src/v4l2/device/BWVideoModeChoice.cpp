#include "v4l2/device/BWVideoModeChoice.h"

#include "v4l2/device/BWVideoFormat.h"

#include <algorithm>
#include <cmath>
#include <QStringList>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

/// At equal rates.
constexpr std::array preference{
    BWPixelFormat::YUYV,  BWPixelFormat::UYVY,  BWPixelFormat::NV12,  BWPixelFormat::YU12,
    BWPixelFormat::RGB24, BWPixelFormat::BGR24, BWPixelFormat::MJPEG, BWPixelFormat::GREY,
};

auto rank(const BWVideoMode &mode)
{
    const auto place = std::find(preference.begin(), preference.end(), mode.pixelFormat) - preference.begin();
    // 29.97 and 30 are the same rate.
    return std::tuple(mode.pixelFormat == BWPixelFormat::GREY, -std::lround(mode.framesPerSecond), place);
}

QString rate(const BWVideoMode &mode)
{
    return mode.framesPerSecond > 0 ? u"%1/s"_s.arg(mode.framesPerSecond, 0, 'g', 3) : u"an unknown rate"_s;
}

} // namespace

BWVideoModeChoice::BWVideoModeChoice(const BWVideoAbilities &abilities, BWResolution wished)
{
    const BWResolution size = nearest(abilities.resolutions(), wished);
    for (const BWVideoMode &mode : abilities.modes) {
        if (mode.pixelFormat != BWPixelFormat::None && mode.resolution == size)
            m_candidates.push_back(mode);
    }
    std::stable_sort(m_candidates.begin(), m_candidates.end(),
                     [](const BWVideoMode &left, const BWVideoMode &right) { return rank(left) < rank(right); });
}

BWResolution BWVideoModeChoice::nearest(const std::vector<BWResolution> &sizes, BWResolution wished)
{
    const auto distance = [wished](BWResolution size) {
        return std::pair(std::abs(int64_t(size.width()) * size.height() - int64_t(wished.width()) * wished.height()),
                         size != wished);
    };
    const auto found = std::min_element(sizes.begin(), sizes.end(), [&](BWResolution left, BWResolution right) {
        return distance(left) < distance(right);
    });
    return found == sizes.end() ? BWResolution() : *found;
}

QString BWVideoModeChoice::reason(std::size_t taken) const
{
    const BWVideoMode &mode = m_candidates[taken];
    QStringList others;
    for (std::size_t i = 0; i < m_candidates.size(); ++i) {
        if (std::lround(m_candidates[i].framesPerSecond) != std::lround(mode.framesPerSecond))
            others += u"%1 gives %2"_s.arg(BWVideoFormat::name(m_candidates[i].fourcc), rate(m_candidates[i]));
    }
    const QString choice =
        u"%1 %2 at %3"_s.arg(BWVideoFormat::name(mode.fourcc), mode.resolution.resolutionString(), rate(mode));
    return others.isEmpty() ? choice : choice + u"; "_s + others.join(u", "_s);
}
