// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/finding/BWNodeAccess.h"

#include <cerrno>
#include <grp.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString groupOf(const QByteArray &path)
{
    struct stat status { };
    if (stat(path.constData(), &status) != 0 || !(status.st_mode & S_IWGRP))
        return {};
    const group *entry = getgrgid(status.st_gid);
    return entry ? QString::fromLocal8Bit(entry->gr_name) : QString();
}

/// `process` is a folder in /proc, with a slash at the end.
bool holds(const QString &process, dev_t device)
{
    // Other users' folders cannot be listed and yield nothing.
    const QStringList descriptors = QDir(process + "fd"_L1).entryList(QDir::Files | QDir::System, QDir::Unsorted);
    for (const QString &descriptor : descriptors) {
        struct stat status { };
        // The link's target, not its text: the node may have another name, or be removed.
        if (stat(QFile::encodeName(process + "fd/"_L1 + descriptor).constData(), &status) == 0
            && S_ISCHR(status.st_mode) && status.st_rdev == device)
            return true;
    }
    return false;
}

/// A program that streams has the device's buffers in its memory.
bool maps(const QString &process, const QByteArray &path)
{
    QFile file(process + "maps"_L1);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        if (line.trimmed().endsWith(' ' + path))
            return true;
    }
    return false;
}

QString nameOf(const QString &process)
{
    QFile file(process + "comm"_L1);
    const QString name = file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll()).trimmed() : QString();
    // The kernel truncates names to this length.
    constexpr qsizetype longest = 15;
    const QString executable = QFileInfo(QFile::symLinkTarget(process + "exe"_L1)).fileName();
    return name.isEmpty() || (name.size() >= longest && executable.startsWith(name)) ? executable : name;
}

} // namespace

QString BWNodeAccess::problem(const QByteArray &path, int error)
{
    const QString node = QFile::decodeName(path);
    switch (error) {
    case EACCES: {
        const QString group = groupOf(path);
        if (group.isEmpty() || group == "root"_L1)
            return u"this user may not open %1; a udev rule with TAG+=\"uaccess\" gives it to whoever is logged in"_s
                .arg(node);
        return u"this user may not open %1; members of the group \"%2\" may: sudo usermod -aG %2 \"$USER\", then log "
               "in again"_s.arg(node, group);
    }
    case EPERM:
        return u"%1 may not be opened, although its permissions allow it: a container or sandbox keeps devices away"_s
            .arg(node);
    case ENOENT:
        return u"the kernel has the camera, but %1 is not there: a container does not see it"_s.arg(node);
    case EBUSY:
        return u"another program has %1 for itself"_s.arg(node);
    case ENODEV:
    case ENXIO:
        return u"the camera behind %1 does not answer; plug it in again"_s.arg(node);
    default:
        return u"%1 cannot be used: %2"_s.arg(node, qt_error_string(error));
    }
}

BWStartProblem::Kind BWNodeAccess::problemKind(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
    case ENOENT: // in a container that was not given the node
        return BWStartProblem::Kind::NoPermission;
    case EBUSY:
        return BWStartProblem::Kind::InUse;
    default:
        return BWStartProblem::Kind::Failed;
    }
}

QString BWNodeAccess::programHolding(const QByteArray &path)
{
    struct stat status { };
    if (stat(path.constData(), &status) != 0 || !S_ISCHR(status.st_mode))
        return {};
    QString holder;
    const QString self = QString::number(getpid());
    const QStringList processes = QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs, QDir::Unsorted);
    for (const QString &process : processes) {
        const QString folder = "/proc/"_L1 + process + u'/';
        if (process == self || !holds(folder, status.st_rdev))
            continue;
        QString name = nameOf(folder);
        if (!name.isEmpty() && maps(folder, path))
            return name;
        if (holder.isNull() && !name.isEmpty())
            holder = name;
    }
    return holder;
}
