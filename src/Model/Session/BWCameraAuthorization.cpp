#include "Model/Session/BWCameraAuthorization.h"

#include <algorithm>
#include <QDir>
#include <unistd.h>
#include <utility>

BWDeviceNodeAuthorization::BWDeviceNodeAuthorization(QString folder) : m_folder(std::move(folder)) { }

BWCameraAuthorization::Status BWDeviceNodeAuthorization::authorizationStatus() const
{
    const QStringList names = QDir(m_folder).entryList({QStringLiteral("video[0-9]*")}, QDir::System | QDir::Files);
    const auto mayOpen = [this](const QString &name) {
        return access(QFile::encodeName(QDir(m_folder).filePath(name)).constData(), R_OK | W_OK) == 0;
    };
    if (names.isEmpty() || std::any_of(names.begin(), names.end(), mayOpen))
        return Status::Authorized;
    return Status::Denied;
}

void BWDeviceNodeAuthorization::requestAccess(std::function<void(bool)> completion)
{
    // Nobody to ask: what the device nodes allow is the answer.
    completion(authorizationStatus() == Status::Authorized);
}
