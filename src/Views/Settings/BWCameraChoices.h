#pragma once

#include "BWACUDriver/BWCamera.h"

#include <functional>
#include <QHash>
#include <QStringList>

/// Which camera each title of a camera menu stands for. Keeps no camera alive: one that was unplugged is gone here, too.
class BWCameraChoices {
public:
    using NameOf = std::function<QString(const BWCamera &)>;

    void setCameras(const QList<BWCameraPtr> &cameras, const BWCameraPtr &current, const NameOf &nameOf);

    /// In the order of the cameras, no two the same.
    const QStringList &titles() const { return m_titles; }
    /// Of the current camera; -1 if it is not among them.
    int currentIndex() const { return m_currentIndex; }
    /// Null if there is none of that title, or no longer.
    BWCameraPtr cameraWithTitle(const QString &title) const { return m_cameraMapping.value(title).lock(); }

private:
    QStringList m_titles;
    QHash<QString, std::weak_ptr<BWCamera>> m_cameraMapping;
    int m_currentIndex = -1;
};
