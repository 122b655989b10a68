#include "Views/Settings/BWCameraChoices.h"

#include "Views/MainWindow/BWCameraTitles.h"

void BWCameraChoices::setCameras(const QList<BWCameraPtr> &cameras, const BWCameraPtr &current, const NameOf &nameOf)
{
    QStringList names;
    for (const BWCameraPtr &camera : cameras)
        names.append(nameOf(*camera));
    m_titles = BWCameraTitles::unique(names);
    m_cameraMapping.clear();
    for (qsizetype i = 0; i < cameras.size(); ++i)
        m_cameraMapping.insert(m_titles[i], cameras[i]);
    m_currentIndex = static_cast<int>(cameras.indexOf(current));
}
