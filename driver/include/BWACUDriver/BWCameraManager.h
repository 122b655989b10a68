// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"

#include <QList>
#include <QStringList>

/// The opened cameras, in the order in which they were first added: one that comes back takes its old place.
/// Main thread only.
class BWCameraManager {
public:
    /// Opens a session object for the device (a BWEmpiaCamera for a bridge-chip camera) and adds it to cameras().
    BWCameraPtr addDetectedCamera(const BWDetectedCameraPtr &device);

    /// Drops the session object of the device, compared by identity. Unknown devices are ignored.
    void removeDetectedCamera(const BWDetectedCameraPtr &device);

    const QList<BWCameraPtr> &cameras() const { return m_cameras; }

private:
    QList<BWCameraPtr> m_cameras;
    QStringList m_places; ///< identifiers of all cameras ever added
};
