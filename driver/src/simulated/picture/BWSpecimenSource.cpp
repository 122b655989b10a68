// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/picture/BWSpecimenSource.h"

#include "simulated/picture/BWSpecimenSkin.h"
#include "simulated/picture/BWValueNoise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <libyuv.h>
#include <map>
#include <mutex>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <utility>

namespace {

// What lies on the skin: hairs, a textile fibre and a stage micrometer.

/// Millimetres as picture heights: those of a dermatoscope of which 5 mm take up 355 of 480 rows.
constexpr double millimetre = 355.0 / 5 / 480;

/// A curve from the root to the tip, in picture heights; `width` is that of the root.
struct Strand {
    std::array<QPointF, 4> points;
    double width;
    QColor colour;
    bool pointed; ///< hairs taper, fibres do not
};

const std::array strands{
    Strand{{QPointF(-0.36, -0.29), {-0.19, -0.27}, {0.03, -0.16}, {0.19, 0.07}}, 0.0105, {52, 33, 26, 238}, true},
    Strand{{QPointF(0.385, 0.02), {0.45, 0.13}, {0.46, 0.30}, {0.38, 0.47}}, 0.0098, {46, 29, 24, 240}, true},
    Strand{{QPointF(-0.54, 0.12), {-0.46, 0.20}, {-0.30, 0.27}, {-0.11, 0.28}}, 0.0086, {58, 37, 28, 232}, true},
    Strand{{QPointF(0.30, -0.40), {0.44, -0.37}, {0.55, -0.27}, {0.60, -0.09}}, 0.0082, {54, 35, 28, 232}, true},
    Strand{{QPointF(-0.72, -0.30), {-0.66, -0.42}, {-0.58, -0.50}, {-0.40, -0.56}}, 0.0090, {50, 32, 26, 236}, true},
    Strand{{QPointF(0.74, 0.18), {0.70, 0.32}, {0.72, 0.44}, {0.82, 0.56}}, 0.0090, {50, 32, 26, 236}, true},
    Strand{{QPointF(-0.05, 0.10), {0.03, 0.19}, {0.12, 0.27}, {0.27, 0.31}}, 0.0038, {78, 50, 38, 200}, true},
    Strand{{QPointF(-0.33, -0.42), {-0.36, -0.30}, {-0.46, -0.22}, {-0.60, -0.20}}, 0.0036, {120, 82, 62, 190}, true},
    Strand{{QPointF(0.50, 0.24), {0.46, 0.33}, {0.50, 0.41}, {0.60, 0.45}}, 0.0034, {116, 80, 60, 190}, true},
    Strand{{QPointF(0.06, -0.44), {0.14, -0.37}, {0.16, -0.42}, {0.25, -0.47}}, 0.0032, {112, 78, 60, 185}, true},
    Strand{{QPointF(-0.64, -0.05), {-0.40, -0.16}, {-0.62, 0.10}, {-0.36, 0.045}}, 0.0040, {66, 96, 158, 205}, false},
};

QPointF pointAt(const Strand &strand, double t)
{
    const double s = 1 - t;
    return s * s * s * strand.points[0] + 3 * s * s * t * strand.points[1] + 3 * s * t * t * strand.points[2]
        + t * t * t * strand.points[3];
}

double widthAt(const Strand &strand, double t)
{
    if (!strand.pointed)
        return strand.width;
    const double root = std::min(1.0, 0.55 + 6 * t);
    return strand.width * root * (1 - 0.90 * t * t * t);
}

/// A band along the strand, from one edge to the other; edges are given in half widths from the middle.
QPolygonF band(const Strand &strand, double fromEdge, double toEdge, QPointF shift = {})
{
    constexpr int steps = 48;
    QPolygonF outline;
    QPolygonF back;
    for (int i = 0; i <= steps; ++i) {
        const double t = double(i) / steps;
        const QPointF along = pointAt(strand, t + 0.005) - pointAt(strand, t - 0.005);
        const double length = std::hypot(along.x(), along.y());
        const QPointF normal(-along.y() / length, along.x() / length);
        const QPointF middle = pointAt(strand, t) + shift;
        const double half = widthAt(strand, t) / 2;
        outline << middle + normal * half * fromEdge;
        back.prepend(middle + normal * half * toEdge);
    }
    return outline + back;
}

void drawStrand(QPainter &painter, const Strand &strand)
{
    // A soft shadow in three steps, the strand, darker at one edge, and the light along its back.
    for (const double spread : {2.0, 1.5, 1.0}) {
        painter.setBrush(QColor(70, 30, 22, 22));
        painter.drawPolygon(band(strand, -spread, spread, {0.55 * strand.width, 0.7 * strand.width}));
    }
    if (strand.pointed && strand.width > 0.006) {
        painter.setBrush(QColor(120, 62, 50, 60)); // the follicle
        painter.drawEllipse(strand.points[0], 1.5 * strand.width, 1.3 * strand.width);
        painter.setBrush(QColor(92, 46, 38, 90));
        painter.drawEllipse(strand.points[0], 0.95 * strand.width, 0.85 * strand.width);
    }
    painter.setBrush(strand.colour);
    painter.drawPolygon(band(strand, -1, 1));
    QColor light = strand.colour.lighter(190);
    light.setAlpha(120);
    painter.setBrush(light);
    painter.drawPolygon(band(strand, -0.45, 0.05));
    light = strand.colour.lighter(320);
    light.setAlpha(90);
    painter.setBrush(light);
    painter.drawPolygon(band(strand, -0.30, -0.10));
}

/// Three millimetres in tenths: long ticks each millimetre, with as many dots above them as millimetres.
void drawMicrometer(QPainter &painter, double pixel)
{
    constexpr int tenths = 30;
    const QPointF start(-0.575, 0.425);
    const double thin = std::max(0.0024, 1.1 * pixel);
    QPainterPath ink;
    ink.addRect(QRectF(start.x() - thin / 2, start.y(), tenths * millimetre / 10 + thin, thin));
    for (int tenth = 0; tenth <= tenths; ++tenth) {
        const double x = start.x() + tenth * millimetre / 10;
        const double length = tenth % 10 == 0 ? 0.036 : tenth % 5 == 0 ? 0.026 : 0.016;
        ink.addRect(QRectF(x - thin / 2, start.y() - length, thin, length));
        const int dots = tenth % 10 == 0 ? tenth / 10 : 0;
        for (int dot = 0; dot < dots; ++dot) {
            const double radius = std::max(0.0036, 1.3 * pixel);
            ink.addEllipse(QPointF(x + (dot - (dots - 1) / 2.0) * 3.2 * radius, start.y() - 0.049), radius, radius);
        }
    }
    ink.setFillRule(Qt::WindingFill);
    const QColor halo(255, 236, 222, 46);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(halo, 0.0045, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(ink);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(30, 24, 30, 225));
    painter.drawPath(ink);
}

/// Draws over the image, whose middle is the middle of the specimen; `scale` is the number of pixels per picture
/// height.
void drawDetails(QImage &image, double scale)
{
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.translate(image.width() / 2.0, image.height() / 2.0);
    painter.scale(scale, scale);
    for (const Strand &strand : strands)
        drawStrand(painter, strand);
    drawMicrometer(painter, 1 / scale);
}

constexpr double amplitude = 0.048; // of the drift, in picture heights
constexpr uint64_t period = 900; // pictures until it is back
constexpr uint8_t limitedBlack = 16;

BW_VECTOR_CLONES void vignetteRow(float y, float scale, int width, int row, uint8_t *light)
{
    const float middle = 0.5f * static_cast<float>(width - 1);
    for (int column = 0; column < width; ++column) {
        const float x = (static_cast<float>(column) - middle) * scale;
        const float distance = x * x + y * y; // squared, 1 in the corners
        const float share = 1 - 0.13f * distance - 0.36f * distance * distance * distance;
        const float dither = static_cast<float>(BWValueNoise::hash(column, row, 5) >> 16) * (1.0f / 65536);
        light[column] = static_cast<uint8_t>(static_cast<int>(std::min(255.0f, 254.5f * share + dither)));
    }
}

constexpr float marginHeights = 0.055f;

std::shared_ptr<const BWSpecimenTexture> drawTexture(BWResolution resolution)
{
    const auto scale = static_cast<float>(resolution.height());
    auto texture = std::make_shared<BWSpecimenTexture>();
    texture->margin = 2 * static_cast<int>(std::ceil(marginHeights * scale / 2)) + 2;
    const int width = resolution.width() + 2 * texture->margin;
    const int height = resolution.height() + 2 * texture->margin;

    QImage image(width, height, QImage::Format_RGB32);
    const float pixel = 1 / scale;
    const BWSpecimenSkin skin(0.5f * static_cast<float>(width) * pixel, 0.5f * static_cast<float>(height) * pixel,
                              scale);
    skin.draw(image);
    drawDetails(image, static_cast<double>(scale));

    BWYuvPlanes &planes = texture->planes;
    planes.resize(width, height);
    libyuv::ARGBToJ422(image.constBits(), static_cast<int>(image.bytesPerLine()), planes.y(), planes.stride(),
                       planes.u(), planes.chromaStride(), planes.v(), planes.chromaStride(), width, height);
    return texture;
}

} // namespace

std::shared_ptr<const BWSpecimenTexture> BWSpecimenTexture::forResolution(BWResolution resolution)
{
    static std::mutex mutex;
    static std::map<std::pair<int, int>, std::weak_ptr<const BWSpecimenTexture>> textures;

    const std::lock_guard lock(mutex); // held while drawing: a second camera waits for the same texture
    auto &known = textures[{resolution.width(), resolution.height()}];
    std::shared_ptr<const BWSpecimenTexture> texture = known.lock();
    if (!texture) {
        texture = drawTexture(resolution);
        known = texture;
    }
    return texture;
}

void BWSpecimenSource::setResolution(BWResolution resolution)
{
    if (resolution == this->resolution())
        return;
    BWPictureSource::setResolution(resolution);
    m_texture = BWSpecimenTexture::forResolution(resolution);
    ++m_revision;
    makeVignette();
    m_scratch.resize(static_cast<std::size_t>(m_vignette.stride()) + 2);
    m_grey.assign(static_cast<std::size_t>(m_vignette.chromaStride()), 128);
}

void BWSpecimenSource::makeVignette()
{
    const int width = resolution().width();
    const int height = resolution().height();
    const auto toCorner = static_cast<float>(2 / std::hypot(width, height));
    m_vignette.resize(width, (height + 1) / 2);
    for (int row = 0; row < m_vignette.height(); ++row) {
        const float y = (static_cast<float>(row) - 0.5f * static_cast<float>(height - 1)) * toCorner;
        vignetteRow(y, toCorner, width, row, m_vignette.y(row));
        vignetteRow(y, toCorner * 2, m_vignette.chromaWidth(), row, m_vignette.u(row));
    }
}

BWPictureSource::Scene BWSpecimenSource::scene(uint64_t index, BWColorMatrix)
{
    constexpr double turn = 6.283185307179586;
    const double t = turn * static_cast<double>(index % period) / static_cast<double>(period);
    const double reach = 256 * amplitude * resolution().height();
    const int margin = 256 * m_texture->margin;
    m_offset.x = margin + static_cast<int>(std::lround(reach * (0.8 * std::sin(t) + 0.2 * std::sin(2 * t + 0.7))));
    m_offset.y = margin + static_cast<int>(std::lround(reach * (0.7 * std::cos(t) + 0.3 * std::sin(3 * t + 0.4))));
    return {&m_texture->planes, m_revision};
}

void BWSpecimenSource::sample(const uint8_t *plane, int stride, int x, int y, int width, uint8_t *out)
{
    const uint8_t *from = plane + static_cast<std::ptrdiff_t>(y >> 8) * stride + (x >> 8);
    libyuv::InterpolatePlane(from, 0, from + stride, 0, m_scratch.data(), 0, width + 1, 1, y & 255);
    libyuv::InterpolatePlane(m_scratch.data(), 0, m_scratch.data() + 1, 0, out, 0, width, 1, x & 255);
}

void BWSpecimenSource::composeRow(const BWYuvPlanes &tuned, BWColorRange range, int row, uint8_t *y, uint8_t *u,
                                  uint8_t *v)
{
    const int width = resolution().width();
    const int chromaWidth = (width + 1) / 2;
    const int top = m_offset.y + row * 256;
    m_black.assign(static_cast<std::size_t>(width), range == BWColorRange::Limited ? limitedBlack : uint8_t(0));

    const int mirrored = std::min(row, resolution().height() - 1 - row);
    const uint8_t *light = m_vignette.y(mirrored);
    const uint8_t *chromaLight = m_vignette.u(mirrored);
    sample(tuned.y(), tuned.stride(), m_offset.x, top, width, y);
    libyuv::BlendPlane(y, 0, m_black.data(), 0, light, 0, y, 0, width, 1);
    for (auto [plane, out] : {std::pair{tuned.u(), u}, std::pair{tuned.v(), v}}) {
        sample(plane, tuned.chromaStride(), m_offset.x / 2, top, chromaWidth, out);
        libyuv::BlendPlane(out, 0, m_grey.data(), 0, chromaLight, 0, out, 0, chromaWidth, 1);
    }
}
