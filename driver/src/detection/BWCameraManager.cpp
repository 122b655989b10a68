// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraManager.h"

#include <algorithm>

BWCameraPtr BWCameraManager::addDetectedCamera(const BWDetectedCameraPtr &device)
{
    const auto known = std::find_if(m_cameras.cbegin(), m_cameras.cend(), [&device](const BWCameraPtr &camera) {
        return camera->detectedCamera() == device;
    });
    if (known != m_cameras.cend())
        return *known;
    BWCameraPtr camera;
    if (device->cameraDescription()->isBridgeChip)
        camera = std::make_shared<BWEmpiaCamera>(device);
    else
        camera = std::make_shared<BWCamera>(device);
    if (const QString &identifier = device->uniqueIdentifier(); !m_places.contains(identifier))
        m_places.append(identifier);
    const auto place = [this](const BWCameraPtr &each) {
        return m_places.indexOf(each->detectedCamera()->uniqueIdentifier());
    };
    m_cameras.insert(std::upper_bound(m_cameras.cbegin(), m_cameras.cend(), camera,
                                      [&place](const auto &a, const auto &b) { return place(a) < place(b); }),
                     camera);
    return camera;
}

void BWCameraManager::removeDetectedCamera(const BWDetectedCameraPtr &device)
{
    m_cameras.removeIf([&device](const BWCameraPtr &camera) { return camera->detectedCamera() == device; });
}
