#pragma once

#include "BWACUDriver/BWCameraBackend.h"

#include <memory>
#include <QStringList>

/// Cameras of the Linux kernel's V4L2 interface, found and watched through udev.
class BWV4L2Backend {
public:
    /// `tables` are files (resources included) that tell which device is which type of camera; the first entry that
    /// fits counts, those of earlier files first. Files that do not exist are left out; damaged ones are logged.
    static std::unique_ptr<BWCameraBackend> create(const QStringList &tables);
};
