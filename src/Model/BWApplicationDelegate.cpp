// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/BWApplicationDelegate.h"

namespace {

BWApplicationDelegate *sharedDelegate = nullptr;

} // namespace

BWApplicationDelegate::BWApplicationDelegate()
{
    if (sharedDelegate)
        qFatal("A second application delegate was made");
    sharedDelegate = this;
}

BWApplicationDelegate::~BWApplicationDelegate()
{
    sharedDelegate = nullptr;
}

BWApplicationDelegate *BWApplicationDelegate::shared()
{
    return sharedDelegate;
}
