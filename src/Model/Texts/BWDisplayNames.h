// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"

#include <QList>
#include <QStringList>

class BWCameraProduct;
class BWLocalizationManager;

/// The names under which the user reads of cameras and products, in the user's language. GUI thread.
class BWDisplayNames {
public:
    static QString product(const BWCameraProduct &product, BWLocalizationManager &texts);
    static QString camera(const BWCameraDescription &camera, BWLocalizationManager &texts);
    /// As menus list them: no two the same.
    static QStringList cameras(const QList<BWCameraPtr> &cameras, BWLocalizationManager &texts);
    /// Each name once: the second camera of a name is "NAME (2)", a third "NAME (3)".
    static QStringList unique(const QStringList &names);
};
