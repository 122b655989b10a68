#include "v4l2/finding/BWDeviceHolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// `process` is a folder in /proc, with a slash at its end.
bool holds(const QString &process, dev_t device)
{
    // Other users' folders cannot be listed, and yield nothing here.
    const QStringList descriptors = QDir(process + "fd"_L1).entryList(QDir::Files | QDir::System, QDir::Unsorted);
    for (const QString &descriptor : descriptors) {
        struct stat status { };
        // The link's target, not its text: the node may have another name, or have been removed.
        if (stat(QFile::encodeName(process + "fd/"_L1 + descriptor).constData(), &status) == 0
            && S_ISCHR(status.st_mode) && status.st_rdev == device)
            return true;
    }
    return false;
}

/// Whoever streams has the device's buffers in its memory.
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
    // The kernel cuts names off after this many characters.
    constexpr qsizetype longest = 15;
    const QString executable = QFileInfo(QFile::symLinkTarget(process + "exe"_L1)).fileName();
    return name.isEmpty() || (name.size() >= longest && executable.startsWith(name)) ? executable : name;
}

} // namespace

QString BWDeviceHolder::programHolding(const QByteArray &path)
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
        const QString name = nameOf(folder);
        if (!name.isEmpty() && maps(folder, path))
            return name;
        if (holder.isNull() && !name.isEmpty())
            holder = name;
    }
    return holder;
}
