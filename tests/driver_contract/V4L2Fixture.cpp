// SPDX-License-Identifier: GPL-3.0-or-later
#include "V4L2Fixture.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <QDir>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

/// Numbers of nodes change, names do not.
QString nodeOf(const QString &name)
{
    const QDir nodes(u"/sys/class/video4linux"_s);
    for (const QString &node : nodes.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (contents(nodes.filePath(node + u"/name"_s)) == name.toUtf8()
            && contents(nodes.filePath(node + u"/index"_s)) == "0")
            return u"/dev/"_s + node;
    }
    return {};
}

} // namespace

V4L2Fixture::Holder::~Holder()
{
    ::close(descriptor);
}

void V4L2Fixture::setInUse(bool inUse)
{
    m_holder.reset();
    if (!inUse)
        return;
    m_holder.reset(new Holder{::open(QFile::encodeName(nodeOf(m_nodeName)).constData(), O_RDWR)});
    v4l2_requestbuffers buffers{};
    buffers.count = 2;
    buffers.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffers.memory = V4L2_MEMORY_MMAP;
    if (::ioctl(m_holder->descriptor, VIDIOC_REQBUFS, &buffers) != 0)
        qFatal("The camera could not be taken");
}
