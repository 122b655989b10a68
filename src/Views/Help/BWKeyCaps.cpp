#include "Views/Help/BWKeyCaps.h"

#include <algorithm>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
constexpr int padding = 6; // on both sides of the text
constexpr int keyGap = 3;
constexpr int wayGap = 12;
constexpr double radius = 3.5;
} // namespace

BWKeyCaps::BWKeyCaps(const QStringList &ways, QWidget *parent) : QWidget(parent), m_ways(ways)
{
    setAccessibleName(ways.join(u", "_s));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QStringList BWKeyCaps::keys(const QString &way)
{
    QStringList keys = way.split(u'+', Qt::SkipEmptyParts);
    if (way.endsWith(u'+')) // the key itself, for it separates none
        keys.append(u"+"_s);
    return keys;
}

QList<BWKeyCaps::Cap> BWKeyCaps::caps() const
{
    QList<Cap> caps;
    int x = 0;
    for (const QString &way : m_ways) {
        if (x > 0)
            x += wayGap - keyGap;
        const QStringList texts = keys(way);
        for (const QString &text : texts) {
            // No cap is narrower than high.
            const int width = std::max(fontMetrics().horizontalAdvance(text) + 2 * padding, height(fontMetrics()));
            caps.append({text, x, width});
            x += width + keyGap;
        }
    }
    return caps;
}

int BWKeyCaps::height(const QFontMetrics &metrics)
{
    return metrics.height() + 4;
}

QSize BWKeyCaps::sizeHint() const
{
    const QList<Cap> all = caps();
    return {all.isEmpty() ? 0 : all.last().left + all.last().width, height(fontMetrics())};
}

void BWKeyCaps::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(0.3F);
    const QList<Cap> all = caps();
    for (const Cap &cap : all) {
        const QRectF frame(cap.left + 0.5, 0.5, cap.width - 1, sizeHint().height() - 1);
        painter.setPen(edge);
        painter.setBrush(palette().base());
        painter.drawRoundedRect(frame, radius, radius);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(frame, Qt::AlignCenter, cap.text);
    }
}
