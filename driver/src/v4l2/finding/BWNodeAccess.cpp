#include "v4l2/finding/BWNodeAccess.h"

#include <cerrno>
#include <grp.h>
#include <QFile>
#include <sys/stat.h>

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
