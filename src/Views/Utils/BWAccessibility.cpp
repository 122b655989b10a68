// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWAccessibility.h"

#include <array>
#include <QAccessibleWidget>
#include <QWidget>

namespace {

struct ClassRole {
    const char *className;
    QAccessible::Role role;
};

// Containers and widgets that paint; buttons and the like have their roles from Qt.
constexpr std::array classRoles{
    ClassRole{"BWAnnouncement", QAccessible::Notification},
    ClassRole{"BWComparisonStrip", QAccessible::ToolBar},
    ClassRole{"BWControlBar", QAccessible::ToolBar},
    ClassRole{"BWDividerHandle", QAccessible::Splitter},
    ClassRole{"BWDoubleButton", QAccessible::Grouping},
    ClassRole{"BWFlashActionViewController", QAccessible::StaticText},
    ClassRole{"BWFrozenMark", QAccessible::Notification},
    ClassRole{"BWKeyCaps", QAccessible::StaticText},
    ClassRole{"BWMeasuringLayer", QAccessible::Canvas},
    ClassRole{"BWMeasuringStrip", QAccessible::ToolBar},
    ClassRole{"BWOfferStrip", QAccessible::Notification},
    ClassRole{"BWStatusPill", QAccessible::Notification},
    ClassRole{"QFrame", QAccessible::Separator}, // we use a plain QFrame only as a line
};

/// Qt calls this with the class of a widget, then with each of its base classes.
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

BWAnnouncement::BWAnnouncement(QWidget *parent) : QLabel(parent)
{
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
    hide();
}

void BWAnnouncement::announce(const QString &text)
{
    hide(); // screen readers read a notification out when it appears
    setText(text);
    setAccessibleName(text);
    show();
}

void BWAnnouncement::clear()
{
    hide();
    QLabel::clear();
}
