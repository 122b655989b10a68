#include "media/BWDiskSync.h"

#include "BWACUDriver/BWFileBytes.h"
#include "media/BWMediaLogging.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <QFile>
#include <unistd.h>
#include <utility>

BWDiskSync::BWDiskSync(const QString &path)
    : m_descriptor(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC)), m_thread(&BWDiskSync::run, this)
{
}

BWDiskSync::~BWDiskSync()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }
    m_thread.join();
    if (m_descriptor >= 0)
        close(m_descriptor);
}

void BWDiskSync::request()
{
    const std::lock_guard lock(m_mutex);
    m_wanted = true;
    m_changed.notify_all();
}

void BWDiskSync::run()
{
    bool warned = false;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_wanted || m_ending; });
        if (m_ending)
            return;
        m_wanted = false;
        lock.unlock();
        if (m_descriptor >= 0 && !BWFileBytes::synchronizeData(m_descriptor) && !std::exchange(warned, true))
            qCWarning(bwMedia) << "A recording cannot be brought to the disk for sure:" << std::strerror(errno);
        lock.lock();
    }
}
