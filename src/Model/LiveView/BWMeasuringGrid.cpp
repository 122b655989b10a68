// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWMeasuringGrid.h"

#include "Model/LiveView/BWRenderRequest.h"

#include <algorithm>
#include <cmath>
#include <QtMath>

using namespace Qt::StringLiterals;

namespace {

struct Stripe {
    int first;
    int width;
};

/// The pixels around a line's middle. They are found by the middle and not by an edge, so that a line takes the same
/// pixels of the picture however that is mirrored.
Stripe stripeAround(double middle, int width, int length)
{
    const int first = static_cast<int>(std::floor(middle - (width - 1) / 2.0));
    return {std::clamp(first, 0, std::max(0, length - width)), width};
}

} // namespace

BWMeasuringGrid::BWMeasuringGrid(QSizeF frame, double distance) : m_frame(frame)
{
    if (!(distance >= lineWidth))
        return;
    const double w = frame.width();
    const double h = frame.height();
    for (double x = w / 2 - distance / 2; x > 0; x -= distance)
        m_vertical.append(x);
    for (double x = w / 2 + distance / 2; x <= w; x += distance)
        m_vertical.append(x);
    for (double y = h / 2 - distance / 2; y > 0; y -= distance)
        m_horizontal.append(y);
    // A line on the right edge is shown, one on the upper edge is not.
    for (double y = h / 2 + distance / 2; y < h; y += distance)
        m_horizontal.append(y);
}

QList<QRect> BWMeasuringGrid::pixels(const BWRenderRequest &request) const
{
    QList<QRect> rects;
    if (m_frame.isEmpty())
        return rects;
    const BWOrientation orientation(request.rotation, request.flip);
    const QSize upright = orientation.turned(request.imageSize);
    const int width = qCeil(request.devicePixelRatio); // thinner than a point, lines get lost on sharp screens
    const auto add = [&](const QRect &line) {
        const QRect seen = orientation.toTurned(line, upright) & request.visible;
        if (!seen.isEmpty())
            rects.append(seen.translated(request.target));
    };
    const double columns = upright.width() / m_frame.width();
    for (const double x : m_vertical) {
        const Stripe stripe = stripeAround((x + lineWidth / 2) * columns, width, upright.width());
        add({stripe.first, 0, stripe.width, upright.height()});
    }
    const double rows = upright.height() / m_frame.height();
    for (const double y : m_horizontal) {
        const double fromTop = m_frame.height() - (y + lineWidth / 2);
        const Stripe stripe = stripeAround(fromTop * rows, width, upright.height());
        add({0, stripe.first, upright.width(), stripe.width});
    }
    return rects;
}

BWMeasuringGridTable::BWMeasuringGridTable()
    : m_products{{u"dx12"_s, {{u"640x480"_s, 391}, {u"720x480"_s, 428}}},
                 {u"dx10"_s, {{u"640x480"_s, 355}, {u"1280x1024"_s, 710}, {u"1600x1200"_s, 710}}}}
{
}

QStringList BWMeasuringGridTable::resolutions(const QString &productIdentifier) const
{
    QStringList all = m_products.value(productIdentifier).keys();
    const auto width = [](const QString &resolution) { return resolution.section(u'x', 0, 0).toInt(); };
    std::sort(all.begin(), all.end(), [&](const QString &a, const QString &b) { return width(a) < width(b); });
    return all;
}

double BWMeasuringGridTable::distance(const QString &productIdentifier, const QString &resolution) const
{
    return m_products.value(productIdentifier).value(resolution, 0);
}

void BWMeasuringGridTable::setDistance(double distance, const QString &productIdentifier, const QString &resolution)
{
    const auto product = m_products.find(productIdentifier);
    if (product != m_products.end())
        product->insert(resolution, distance);
}
