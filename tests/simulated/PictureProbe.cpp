#include "PictureProbe.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

template <typename Function>
double meanOver(QSize size, Function function)
{
    double sum = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            sum += function(x, y);
    }
    return sum / (size.width() * size.height());
}

} // namespace

PictureProbe::PictureProbe(BWPictureSource &source, BWResolution size, uint64_t index) : m_size(size.dimensions())
{
    constexpr char untouched = 0x5a;
    const QByteArray padding(24, untouched);
    const int rowBytes = size.width() * 2;
    const qsizetype stride = rowBytes + padding.size();
    QByteArray buffer(stride * size.height(), untouched);
    source.renderYUYV(index, reinterpret_cast<uint8_t *>(buffer.data()), int(stride));
    for (int row = 0; row < size.height(); ++row) {
        const QByteArray line = buffer.mid(row * stride, stride);
        if (!line.endsWith(padding)) {
            m_bytes.clear();
            return;
        }
        m_bytes += line.left(rowBytes);
    }
}

QImage PictureProbe::image() const
{
    const auto channel = [](double value) { return std::clamp(int(std::lround(value)), 0, 255); };
    QImage image(m_size, QImage::Format_RGB32);
    for (int y = 0; y < m_size.height(); ++y) {
        for (int x = 0; x < m_size.width(); ++x) {
            const double l = (luma(x, y) - 16) / 219.0 * 255;
            const double cu = u(x, y) / 224.0 * 255;
            const double cv = v(x, y) / 224.0 * 255;
            const QColor colour(channel(l + 1.402 * cv), channel(l - 0.344136 * cu - 0.714136 * cv),
                                channel(l + 1.772 * cu));
            image.setPixelColor(x, y, colour);
        }
    }
    return image;
}

double PictureProbe::meanLuma() const
{
    return meanOver(m_size, [this](int x, int y) { return luma(x, y); });
}

double PictureProbe::differenceTo(const PictureProbe &other) const
{
    double sum = 0;
    for (qsizetype i = 0; i < m_bytes.size(); ++i)
        sum += std::abs(int(uint8_t(m_bytes[i])) - int(uint8_t(other.m_bytes[i])));
    return sum / double(m_bytes.size());
}

QByteArray PictureProbe::jpeg(BWPictureSource &source, uint64_t index)
{
    std::vector<uint8_t> data;
    source.renderJPEG(index, data);
    return QByteArray(reinterpret_cast<const char *>(data.data()), qsizetype(data.size()));
}

double PictureProbe::difference(const QImage &a, const QImage &b)
{
    return meanOver(a.size(), [&](int x, int y) {
        const QColor one = a.pixelColor(x, y);
        const QColor other = b.pixelColor(x, y);
        return (std::abs(one.red() - other.red()) + std::abs(one.green() - other.green())
                + std::abs(one.blue() - other.blue()))
            / 3.0;
    });
}
