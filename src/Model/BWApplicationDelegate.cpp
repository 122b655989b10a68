#include "Model/BWApplicationDelegate.h"

namespace {

BWApplicationDelegate *sharedDelegate = nullptr;

} // namespace

BWApplicationDelegate::BWApplicationDelegate()
{
    if (sharedDelegate)
        qFatal("There is an application delegate already");
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
