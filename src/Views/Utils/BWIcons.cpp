// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWIcons.h"

#include "Utils/BWLogging.h"
#include "Views/Utils/BWColors.h"
#include "Views/Utils/BWCrispFrame.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <utility>

using namespace Qt::StringLiterals;

// The linker drops the resources of a static library unless the program initialises them, outside any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(images);
}

namespace {

void useOurResources()
{
    static const bool once = (initResources(), true);
    Q_UNUSED(once)
}

/// Breeze draws in one dark colour, Breeze Dark in one light colour: picks the readable one. Leaves a theme of another
/// family to the desktop.
void chooseTheme()
{
    const QString breeze = BWColors::isDark(QGuiApplication::palette()) ? u"breeze-dark"_s : u"breeze"_s;
    if (QIcon::fallbackThemeName() != breeze)
        QIcon::setFallbackThemeName(breeze);
    const QString current = QIcon::themeName();
    const bool free = current.isEmpty() || current == "hicolor"_L1 || current.startsWith("breeze"_L1);
    if (free && current != breeze)
        QIcon::setThemeName(breeze);
}

class PaletteWatcher : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::ApplicationPaletteChange)
            chooseTheme();
        return QObject::eventFilter(object, event);
    }
};

struct Colors {
    QColor text;
    QColor accent;
    QColor onAccent;
};

Colors colorsForMode(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    const QColor window = palette.color(QPalette::Active, QPalette::Window);
    switch (mode) {
    case QIcon::Disabled: {
        const QColor gray = BWColors::disabled(palette);
        return {gray, gray, window};
    }
    case QIcon::Selected: {
        const QColor selected = palette.color(QPalette::Active, QPalette::HighlightedText);
        return {selected, selected, palette.color(QPalette::Active, QPalette::Highlight)};
    }
    case QIcon::Normal:
    case QIcon::Active:
        break;
    }
    const QColor accent = BWColors::accent(palette);
    const bool isLight = BWColors::contrast(accent, Qt::white) < BWColors::visible;
    return {palette.color(QPalette::Active, QPalette::WindowText), accent, isLight ? Qt::black : Qt::white};
}

/// An engine that makes its pictures for the pixels of the screen; what it paints lies on whole ones.
class PixelIconEngine : public QIconEngine {
public:
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const double ratio = painter->device()->devicePixelRatioF();
        QPixmap picture = inPixels((QSizeF(rect.size()) * ratio).toSize(), ratio, mode, state);
        picture.setDevicePixelRatio(ratio);
        const QSizeF left = (QSizeF(rect.size()) - QSizeF(picture.size()) / ratio) / 2;
        drawBWPixmap(*painter, rect.topLeft() + QPointF(left.width(), left.height()), picture);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return inPixels(size, 1, mode, state);
    }

    void virtual_hook(int id, void *data) override
    {
        if (id != ScaledPixmapHook) {
            QIconEngine::virtual_hook(id, data);
            return;
        }
        auto &wanted = *static_cast<ScaledPixmapArgument *>(data);
        const bool isInPoints = QT_VERSION >= QT_VERSION_CHECK(6, 8, 0);
        const QSize size = isInPoints ? (QSizeF(wanted.size) * wanted.scale).toSize() : wanted.size;
        wanted.pixmap = inPixels(size, wanted.scale, wanted.mode, wanted.state);
    }

protected:
    /// `size` in pixels, of which a point has `ratio`.
    virtual QPixmap inPixels(const QSize &size, double ratio, QIcon::Mode mode, QIcon::State state) = 0;
};

/// Draws an SVG file in the colours of the application's palette: "currentColor" in the file becomes the text colour,
/// "accentColor" the highlight colour, "onAccentColor" that of what lies on it. In high contrast nothing is translucent.
class SymbolicIconEngine : public PixelIconEngine {
public:
    explicit SymbolicIconEngine(QString path) : m_path(std::move(path)) { }

    QSize actualSize(const QSize &size, QIcon::Mode, QIcon::State) override { return size; }

    QIconEngine *clone() const override { return new SymbolicIconEngine(m_path); }

    QString key() const override { return u"BWSymbolicIconEngine"_s; }

    bool isNull() override { return false; }

protected:
    QPixmap inPixels(const QSize &size, double, QIcon::Mode mode, QIcon::State) override
    {
        const Colors colors = colorsForMode(mode);
        const bool opaque = BWColors::isHighContrast(QGuiApplication::palette());
        const QString text = colors.text.name();
        const QString accent = colors.accent.name();
        const QString onAccent = colors.onAccent.name();
        const QString cacheKey = u"%1 %2x%3 %4 %5 %6 %7"_s.arg(m_path)
                                     .arg(size.width())
                                     .arg(size.height())
                                     .arg(text, accent, onAccent)
                                     .arg(opaque);
        QPixmap pixmap;
        if (QPixmapCache::find(cacheKey, &pixmap))
            return pixmap;

        QFile file(m_path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QByteArray svg = file.readAll()
                             .replace("currentColor", text.toLatin1())
                             .replace("onAccentColor", onAccent.toLatin1())
                             .replace("accentColor", accent.toLatin1());
        if (opaque)
            svg.replace("stroke-opacity", "class");
        QSvgRenderer renderer(svg);
        const QSize fitting = renderer.defaultSize().scaled(size, Qt::KeepAspectRatio);
        pixmap = QPixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        const QPoint place((size.width() - fitting.width()) / 2, (size.height() - fitting.height()) / 2);
        renderer.render(&painter, QRect(place, fitting));
        painter.end();
        QPixmapCache::insert(cacheKey, pixmap);
        return pixmap;
    }

private:
    QString m_path;
};

/// Keeps the shape, and of the colours what a translucent one lets through.
void fill(QPixmap &picture, const QColor &color)
{
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    painter.fillRect(QRectF(QPointF(), picture.deviceIndependentSize()), color);
}

/// Whether it has one colour, as icons for bars have, so that the shape alone says all.
bool isPlain(const QImage &drawn)
{
    constexpr int alike = 48;
    constexpr int opaque = 200;
    std::optional<QColor> first;
    for (int i = 0; i < drawn.width() * drawn.height(); ++i) {
        const QColor color = drawn.pixelColor(i % drawn.width(), i / drawn.width());
        if (color.alpha() < opaque)
            continue;
        first = first.value_or(color);
        if (std::max({std::abs(color.red() - first->red()), std::abs(color.green() - first->green()),
                      std::abs(color.blue() - first->blue())})
            > alike)
            return false;
    }
    return true;
}

/// How well what stands out most can be told from the ground.
double strongest(const QImage &drawn, const QColor &ground)
{
    double most = 1;
    for (int i = 0; i < drawn.width() * drawn.height() && most < BWColors::visible; ++i) {
        const QColor color = drawn.pixelColor(i % drawn.width(), i / drawn.width());
        most = std::max(most, BWColors::contrast(BWColors::mixed(ground, color, color.alphaF()), ground));
    }
    return most;
}

/// An icon of the theme, or an image. A disabled one becomes its own shadow, because what styles make of it can be as bright
/// as before in a dark window; so does one of a theme that can hardly be seen on the window, in the colour of texts; if it has
/// several colours, they only come nearer to that of texts, as their shape alone would say nothing. An icon
/// that was asked for in one theme is drawn from the next one, too.
class ThemedIconEngine : public PixelIconEngine {
public:
    /// With the name that it has in themes, unless it is an image.
    explicit ThemedIconEngine(QIcon icon, QString name = {}) : m_icon(std::move(icon)), m_name(std::move(name)) { }

    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().actualSize(size, withoutDisabled(mode), state);
    }

    QIconEngine *clone() const override { return new ThemedIconEngine(m_icon, m_name); }

    QString key() const override { return u"BWThemedIconEngine"_s; }

    QString iconName() override { return m_name; }

    bool isNull() override { return m_icon.isNull(); }

protected:
    QPixmap inPixels(const QSize &size, double ratio, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture = icon().pixmap((QSizeF(size) / ratio).toSize(), ratio, withoutDisabled(mode), state);
        const QColor window = QGuiApplication::palette().color(QPalette::Active, QPalette::Window);
        const bool isFaint =
            !m_name.isEmpty() && mode != QIcon::Selected && strongest(picture.toImage(), window) < BWColors::visible;
        if ((!isFaint && mode != QIcon::Disabled) || picture.isNull())
            return picture;
        QColor color = colorsForMode(mode).text;
        constexpr float share = 0.4F;
        if (mode != QIcon::Disabled && !isPlain(picture.toImage()))
            color.setAlphaF(share);
        fill(picture, color);
        return picture;
    }

private:
    static QIcon::Mode withoutDisabled(QIcon::Mode mode) { return mode == QIcon::Disabled ? QIcon::Normal : mode; }

    QIcon icon() const { return m_name.isEmpty() ? m_icon : QIcon::fromTheme(m_name, m_icon); }

    QIcon m_icon;
    QString m_name;
};

} // namespace

void BWIcons::install(QGuiApplication &application)
{
    chooseTheme();
    application.installEventFilter(new PaletteWatcher(&application));
}

QIcon BWIcons::icon(const QString &name)
{
    useOurResources();
    const QString own = u":/brimwellpro/icons/%1.svg"_s.arg(name);
    if (QFile::exists(own))
        return QIcon(new SymbolicIconEngine(own));
    const QIcon themed = QIcon::fromTheme(name);
    if (themed.isNull()) {
        qCInfo(bwViews, "No icon named \"%ls\"; is an icon theme installed?", qUtf16Printable(name));
        return {};
    }
    return QIcon(new ThemedIconEngine(themed, name));
}

QIcon BWIcons::image(const QString &fileName)
{
    useOurResources();
    const QString path = u":/brimwellpro/images/"_s + fileName;
    QString sharper = path;
    sharper.insert(path.lastIndexOf(u'.'), u"@2x"_s);
    // QIcon looks for the sharper file only if a screen needs it now, but the window can move to another screen.
    QIcon icon(path);
    icon.addFile(sharper);
    return QIcon(new ThemedIconEngine(icon));
}

QPixmap BWIcons::tinted(const QIcon &icon, const QSize &size, double ratio, const QColor &color)
{
    QPixmap picture = icon.pixmap(size, ratio);
    fill(picture, color);
    return picture;
}

QIcon BWIcons::applicationIcon()
{
    useOurResources();
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addFile(u":/brimwellpro/icons/application/%1.png"_s.arg(size), QSize(size, size));
    return icon;
}
