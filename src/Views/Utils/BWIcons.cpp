// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWIcons.h"

#include "Utils/BWLogging.h"

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
    const QString breeze = BWIcons::isDark(QGuiApplication::palette()) ? u"breeze-dark"_s : u"breeze"_s;
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

/// Draws an SVG file in the colours of the application's palette: "currentColor" in the file becomes the text colour,
/// "accentColor" the highlight colour. Renders at exactly the requested size, in the current palette.
class SymbolicIconEngine : public QIconEngine {
public:
    explicit SymbolicIconEngine(QString path) : m_path(std::move(path)) { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const double ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
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
        const QPoint place((size.width() - fitting.width()) / 2, (size.height() - fitting.height()) / 2);
        renderer.render(&painter, QRect(place, fitting));
        painter.end();
        QPixmapCache::insert(cacheKey, pixmap);
        return pixmap;
    }

    QSize actualSize(const QSize &size, QIcon::Mode, QIcon::State) override { return size; }

    QIconEngine *clone() const override { return new SymbolicIconEngine(m_path); }

    QString key() const override { return u"BWSymbolicIconEngine"_s; }

    bool isNull() override { return false; }

private:
    QString m_path;
};

/// An icon of the theme. A disabled one is faded, because what styles make of it can be as bright as before in a dark
/// window.
class ThemedIconEngine : public QIconEngine {
public:
    explicit ThemedIconEngine(QIcon icon) : m_icon(std::move(icon)) { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        painter->save();
        painter->setOpacity(painter->opacity() * opacity(mode));
        m_icon.paint(painter, rect, Qt::AlignCenter, withoutDisabled(mode), state);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaled(size, 1, mode, state);
    }

    void virtual_hook(int id, void *data) override
    {
        if (id != ScaledPixmapHook) {
            QIconEngine::virtual_hook(id, data);
            return;
        }
        auto &wanted = *static_cast<ScaledPixmapArgument *>(data);
        wanted.pixmap = scaled(wanted.size / wanted.scale, wanted.scale, wanted.mode, wanted.state);
    }

    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return m_icon.actualSize(size, withoutDisabled(mode), state);
    }

    QIconEngine *clone() const override { return new ThemedIconEngine(m_icon); }

    QString key() const override { return u"BWThemedIconEngine"_s; }

    QString iconName() override { return m_icon.name(); }

    bool isNull() override { return m_icon.isNull(); }

private:
    static QIcon::Mode withoutDisabled(QIcon::Mode mode) { return mode == QIcon::Disabled ? QIcon::Normal : mode; }
    static double opacity(QIcon::Mode mode) { return mode == QIcon::Disabled ? 0.4 : 1; }

    /// `size` in points.
    QPixmap scaled(const QSize &size, double ratio, QIcon::Mode mode, QIcon::State state)
    {
        const QPixmap whole = m_icon.pixmap(size, ratio, withoutDisabled(mode), state);
        if (mode != QIcon::Disabled || whole.isNull())
            return whole;
        QPixmap faded(whole.size());
        faded.setDevicePixelRatio(whole.devicePixelRatio());
        faded.fill(Qt::transparent);
        QPainter painter(&faded);
        painter.setOpacity(opacity(mode));
        painter.drawPixmap(0, 0, whole);
        return faded;
    }

    QIcon m_icon;
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
    return QIcon(new ThemedIconEngine(themed));
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
    return icon;
}

QIcon BWIcons::applicationIcon()
{
    useOurResources();
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addFile(u":/brimwellpro/icons/application/%1.png"_s.arg(size), QSize(size, size));
    return icon;
}

bool BWIcons::isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}
