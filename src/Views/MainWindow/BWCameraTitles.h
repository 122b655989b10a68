#pragma once

#include <QStringList>

/// The names under which cameras stand in a menu.
class BWCameraTitles {
public:
    /// Each name once: the second camera of a name is "NAME (2)", a third "NAME (3)".
    static QStringList unique(const QStringList &names);
};
