#include "Views/Utils/BWIcons.h"

#include "Utils/BWLogging.h"
#include "Views/Utils/BWSymbolicIconEngine.h"

#include <QEvent>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>

using namespace Qt::StringLiterals;

// Resources inside a static library are dropped by the linker unless somebody asks for them; must be outside any scope.
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

/// Breeze draws in one dark colour, Breeze Dark in one light colour: the one that can be read is chosen. A theme of
/// another family that the desktop prescribes is left alone.
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
        return QIcon(new BWSymbolicIconEngine(own));
    const QIcon themed = QIcon::fromTheme(name);
    if (themed.isNull())
        qCInfo(bwViews, "No icon named \"%ls\"; is an icon theme installed?", qUtf16Printable(name));
    return themed;
}

QIcon BWIcons::image(const QString &fileName)
{
    useOurResources();
    const QString path = u":/brimwellpro/images/"_s + fileName;
    QString sharper = path;
    sharper.insert(path.lastIndexOf(u'.'), u"@2x"_s);
    // QIcon looks for the sharper file only if a screen needs it now, but a window can be moved to another screen
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
