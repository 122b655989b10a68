// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWCameraAuthorization.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <QDir>
#include <unistd.h>
#include <utility>

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

int openAndClose(const QString &path)
{
    // Does not disturb a camera that another program uses: that takes more than opening the node.
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    close(descriptor);
    return 0;
}

} // namespace

BWDeviceNodeAuthorization::BWDeviceNodeAuthorization(QString folder, QString classFolder, OpenNode openNode)
    : m_folder(std::move(folder)),
      m_classFolder(std::move(classFolder)),
      m_openNode(openNode ? std::move(openNode) : openAndClose)
{
}

BWCameraAuthorization::Status BWDeviceNodeAuthorization::authorizationStatus() const
{
    bool denied = false;
    bool restricted = false;
    const QStringList names = QDir(m_folder).entryList({QStringLiteral("video[0-9]*")}, QDir::System | QDir::Files);
    for (const QString &name : names) {
        if (!isCamera(name))
            continue;
        switch (m_openNode(QDir(m_folder).filePath(name))) {
        case EACCES:
            denied = true;
            break;
        case EPERM:
            restricted = true;
            break;
        case ENOENT: // unplugged meanwhile
        case ENODEV:
        case ENXIO:
            break;
        default: // whatever else is wrong, the permission was there
            return Status::Authorized;
        }
    }
    if (denied)
        return Status::Denied;
    return restricted ? Status::Restricted : Status::Authorized;
}

bool BWDeviceNodeAuthorization::isCamera(const QString &name) const
{
    const QDir folder(QDir(m_classFolder).filePath(name));
    // The first node of a device is the one that captures; those that follow deliver what goes with the pictures.
    const QByteArray index = contentOf(folder.filePath(QStringLiteral("index")));
    if (!index.isEmpty() && index != "0")
        return false;
    static constexpr std::array others{"codec", "decode", "encode", "-dec", "-enc", "-out", "metadata"};
    const QByteArray title = contentOf(folder.filePath(QStringLiteral("name"))).toLower();
    return std::none_of(others.begin(), others.end(), [&title](const char *part) { return title.contains(part); });
}

void BWDeviceNodeAuthorization::requestAccess(std::function<void(bool)> completion)
{
    // Nobody to ask: what the device nodes allow is the answer.
    completion(authorizationStatus() == Status::Authorized);
}
