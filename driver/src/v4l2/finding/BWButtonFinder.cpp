#include "v4l2/finding/BWButtonFinder.h"

#include "v4l2/finding/BWSysfs.h"

#include <linux/input-event-codes.h>
#include <QDir>
#include <QDirIterator>

using namespace Qt::StringLiterals;

namespace {

/// `mask` is a bit field as sysfs prints it: words of a long, in hexadecimal, the highest first.
bool hasBit(const QByteArray &mask, int bit)
{
    constexpr int bitsInWord = 8 * sizeof(long);
    const QList<QByteArray> words = mask.split(' ');
    const qsizetype word = words.size() - 1 - bit / bitsInWord;
    return word >= 0 && (words[word].toULongLong(nullptr, 16) >> (bit % bitsInWord) & 1) != 0;
}

} // namespace

QByteArray BWButtonFinder::eventNode(const QByteArray &videoSysPath)
{
    const QString node = QFile::decodeName(videoSysPath);
    const QString device = BWSysfs::usbDevice(node);
    if (device.isNull())
        return {};
    // The camera's own interface first: a device may hold more than one camera.
    QStringList parents{BWSysfs::parentDevice(node), device};
    QDirIterator interfaces(device, {QFileInfo(device).fileName() + ":*"_L1}, QDir::Dirs);
    while (interfaces.hasNext())
        parents.append(interfaces.next());
    for (const QString &parent : qAsConst(parents)) {
        const QDir inputs(parent + "/input"_L1);
        for (const QString &input : inputs.entryList({u"input*"_s}, QDir::Dirs)) {
            const QDir folder(inputs.filePath(input));
            if (!hasBit(BWSysfs::attribute(folder.filePath(u"capabilities/key"_s)).toLatin1(), KEY_CAMERA))
                continue;
            const QStringList events = folder.entryList({u"event*"_s}, QDir::Dirs);
            if (!events.isEmpty())
                return "/dev/input/" + QFile::encodeName(events.first());
        }
    }
    return {};
}
