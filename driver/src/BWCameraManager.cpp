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
    m_cameras.append(camera);
    return camera;
}

void BWCameraManager::removeDetectedCamera(const BWDetectedCameraPtr &device)
{
    m_cameras.removeIf([&device](const BWCameraPtr &camera) { return camera->detectedCamera() == device; });
}
