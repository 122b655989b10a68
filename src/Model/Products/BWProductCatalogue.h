// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Products/BWCameraProduct.h"

/// The fixed set of products that the program knows.
class BWProductCatalogue {
public:
    /// Makes them all, each with its stored values, in the order of the product menus. The first of each camera type
    /// is that type's default.
    static QList<BWCameraProductPtr> products(BWUserDefaults &defaults);
};
