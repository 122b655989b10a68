#include "Views/Utils/BWSymbolicIconEngine.h"

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace {

struct Colors {
    QColor text;
    QColor accent;
};

Colors colorsForMode(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Disabled: {
        const QColor gray = palette.color(QPalette::Disabled, QPalette::WindowText);
        return {gray, gray};
    }
    case QIcon::Selected: {
        const QColor selected = palette.color(QPalette::Active, QPalette::HighlightedText);
        return {selected, selected};
    }
    case QIcon::Normal:
    case QIcon::Active:
        break;
    }
    return {palette.color(QPalette::Active, QPalette::WindowText),
            palette.color(QPalette::Active, QPalette::Highlight)};
}

} // namespace

BWSymbolicIconEngine::BWSymbolicIconEngine(QString path) : m_path(std::move(path)) { }

void BWSymbolicIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state)
{
    const double ratio = painter->device()->devicePixelRatioF();
    painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state));
}

QPixmap BWSymbolicIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State)
{
    const Colors colors = colorsForMode(mode);
    const QString text = colors.text.name();
    const QString accent = colors.accent.name();
    const QString cacheKey = u"%1 %2x%3 %4 %5"_s.arg(m_path).arg(size.width()).arg(size.height()).arg(text, accent);
    QPixmap pixmap;
    if (QPixmapCache::find(cacheKey, &pixmap))
        return pixmap;

    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray svg =
        file.readAll().replace("currentColor", text.toLatin1()).replace("accentColor", accent.toLatin1());
    QSvgRenderer renderer(svg);
    const QSize fitting = renderer.defaultSize().scaled(size, Qt::KeepAspectRatio);
    pixmap = QPixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(
        &painter,
        QRectF(QPointF((size.width() - fitting.width()) / 2, (size.height() - fitting.height()) / 2), fitting));
    painter.end();
    QPixmapCache::insert(cacheKey, pixmap);
    return pixmap;
}

QSize BWSymbolicIconEngine::actualSize(const QSize &size, QIcon::Mode, QIcon::State)
{
    return size;
}

QIconEngine *BWSymbolicIconEngine::clone() const
{
    return new BWSymbolicIconEngine(m_path);
}

QString BWSymbolicIconEngine::key() const
{
    return u"BWSymbolicIconEngine"_s;
}
