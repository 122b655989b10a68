// SPDX-License-Identifier: GPL-3.0-or-later
// Draws many measurements with their results, as they lie over a picture in the main window.
// Usage: QT_QPA_PLATFORM=offscreen bw_bench_measurements COUNT. Prints "measurements: count=N first_ms=X moved_ms=Y
// enlarged_ms=Z", CPU time for the first drawing, one after the picture has moved, and one at ten times its size, when a
// hundredth of it is to be seen.

#include "Views/MainWindow/BWDrawnMeasurements.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <QApplication>
#include <QPainter>

namespace {

constexpr QSize window(977, 550);

double milliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

QList<BWMeasurement> lines(int count)
{
    QList<BWMeasurement> all;
    for (int i = 0; i < count; ++i) {
        const QPointF begin(0.03 + i % 25 * 0.037, 0.02 + i / 25 % 40 * 0.013);
        all.append({QStringLiteral("length"), {begin, begin + QPointF(0.01 + i * 7 % count * 1e-5, 0.004)}});
    }
    return all;
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const int count = QCoreApplication::arguments().value(1).toInt();
    if (argc != 2 || count <= 0) {
        std::fprintf(stderr, "Usage: bw_bench_measurements COUNT\n");
        return 2;
    }
    const QList<BWMeasurement> measurements = lines(count);
    BWDrawnMeasurements drawn;
    BWDrawnMeasurements::Look look;
    look.size = window;
    look.scale = {{2592, 1944}, {QStringLiteral("50x"), 10, 0.001, {}}};
    look.font = BWDrawnMeasurements::labelFont(QApplication::font());
    QImage screen(window, QImage::Format_RGB32);
    const auto draw = [&](const QTransform &toWidget) {
        const double begin = milliseconds();
        look.toWidget = toWidget;
        drawn.set(measurements, look);
        QPainter painter(&screen);
        drawn.paint(painter, QRect({}, window));
        painter.end();
        return milliseconds() - begin;
    };
    const double width = window.width();
    const double first = draw(QTransform::fromScale(width, width));
    double moved = 1e9;
    double enlarged = 1e9;
    for (int i = 1; i <= 3; ++i) {
        moved = std::min(moved, draw(QTransform(width, 0, 0, width, 2.3 * i, 1.7 * i)));
        enlarged = std::min(enlarged, draw(QTransform(10 * width, 0, 0, 10 * width, -4 * width - i, -2 * width)));
    }
    std::printf("measurements: count=%d first_ms=%.1f moved_ms=%.1f enlarged_ms=%.1f\n", count, first, moved, enlarged);
    return 0;
}
