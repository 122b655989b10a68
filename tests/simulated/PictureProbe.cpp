#include "PictureProbe.h"

#include <algorithm>
#include <cmath>
#include <vector>

PictureProbe::PictureProbe(BWPictureSource &source, BWResolution size, uint64_t index) : m_size(size.dimensions())
{
    constexpr int padding = 24;
    constexpr char untouched = 0x5a;
    const int rowBytes = size.width() * 2;
    QByteArray buffer((rowBytes + padding) * size.height(), untouched);
    source.renderYUYV(index, reinterpret_cast<uint8_t *>(buffer.data()), rowBytes + padding);
    for (int row = 0; row < size.height(); ++row) {
        const QByteArray line = buffer.mid(row * (rowBytes + padding), rowBytes + padding);
        if (line.right(padding) != QByteArray(padding, untouched)) {
            m_bytes.clear();
            return;
        }
        m_bytes += line.left(rowBytes);
    }
}

template <typename Function>
double PictureProbe::mean(Function function) const
{
    double sum = 0;
    for (int y = 0; y < m_size.height(); ++y) {
        for (int x = 0; x < m_size.width(); ++x)
            sum += function(x, y);
    }
    return sum / (m_size.width() * m_size.height());
}

double PictureProbe::meanLuma() const
{
    return mean([this](int x, int y) { return luma(x, y); });
}

double PictureProbe::spread() const
{
    const double middle = meanLuma();
    return std::sqrt(mean([&](int x, int y) { return (luma(x, y) - middle) * (luma(x, y) - middle); }));
}

double PictureProbe::shadows() const
{
    std::vector<int> values;
    for (qsizetype i = 0; i < m_bytes.size(); i += 2)
        values.push_back(uint8_t(m_bytes[i]));
    const auto tenth = values.begin() + std::ptrdiff_t(values.size() / 10);
    std::nth_element(values.begin(), tenth, values.end());
    return *tenth;
}

double PictureProbe::colourfulness() const
{
    return mean([this](int x, int y) { return std::hypot(u(x, y), v(x, y)); });
}

double PictureProbe::hue() const
{
    const double meanU = mean([this](int x, int y) { return u(x, y); });
    const double meanV = mean([this](int x, int y) { return v(x, y); });
    return std::fmod(std::atan2(meanV, meanU) * 180 / M_PI + 360, 360);
}

double PictureProbe::warmth() const
{
    return mean([this](int x, int y) { return v(x, y) - u(x, y); });
}

double PictureProbe::edges() const
{
    return mean([this](int x, int y) { return x == 0 ? 0 : std::abs(luma(x, y) - luma(x - 1, y)); });
}

double PictureProbe::differenceTo(const PictureProbe &other) const
{
    double sum = 0;
    for (qsizetype i = 0; i < m_bytes.size(); ++i)
        sum += std::abs(int(uint8_t(m_bytes[i])) - int(uint8_t(other.m_bytes[i])));
    return sum / double(m_bytes.size());
}

double PictureProbe::meanLumaOf(QRect part) const
{
    double sum = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            sum += luma(x, y);
    }
    return sum / (part.width() * part.height());
}

QColor PictureProbe::colourAt(int x, int y) const
{
    const double l = (luma(x, y) - 16) / 219.0 * 255;
    const double cu = u(x, y) / 224.0 * 255;
    const double cv = v(x, y) / 224.0 * 255;
    const auto channel = [](double value) { return std::clamp(int(std::lround(value)), 0, 255); };
    return {channel(l + 1.402 * cv), channel(l - 0.344136 * cu - 0.714136 * cv), channel(l + 1.772 * cu)};
}

QImage PictureProbe::jpeg(BWPictureSource &source, uint64_t index)
{
    std::vector<uint8_t> data;
    source.renderJPEG(index, data);
    return QImage::fromData(data.data(), int(data.size()), "JPEG").convertToFormat(QImage::Format_RGB32);
}
