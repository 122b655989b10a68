#include "Views/Utils/BWAccessibleRoles.h"

#include <array>
#include <QAccessibleWidget>
#include <QWidget>

namespace {

struct ClassRole {
    const char *className;
    QAccessible::Role role;
};

// Those that hold or paint something; what can be pressed is a button or the like and known as such.
constexpr std::array classRoles{
    ClassRole{"BWAnnouncement", QAccessible::Notification},
    ClassRole{"BWControlBar", QAccessible::ToolBar},
    ClassRole{"BWDoubleButton", QAccessible::Grouping},
    ClassRole{"BWFlashActionViewController", QAccessible::StaticText},
    ClassRole{"BWKeyCaps", QAccessible::StaticText},
    ClassRole{"BWStatusPill", QAccessible::Notification},
    ClassRole{"QFrame", QAccessible::Separator}, // used itself only as a line
};

/// Asked for the class of a widget, then for each of its base classes.
QAccessibleInterface *accessibleWidget(const QString &className, QObject *object)
{
    if (!object->isWidgetType() || className != QLatin1String(object->metaObject()->className()))
        return nullptr;
    auto *widget = static_cast<QWidget *>(object);
    if (widget->windowType() == Qt::Tool)
        return new QAccessibleWidget(widget, QAccessible::Window);
    for (const ClassRole &entry : classRoles) {
        if (className == QLatin1String(entry.className))
            return new QAccessibleWidget(widget, entry.role);
    }
    return nullptr;
}

} // namespace

void BWAccessibleRoles::install()
{
    QAccessible::installFactory(&accessibleWidget);
}
