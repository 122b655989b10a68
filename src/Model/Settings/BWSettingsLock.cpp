// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Settings/BWSettingsLock.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

BWSettingsLock::BWSettingsLock(const QString &settingsFile) : m_settingsFile(settingsFile)
{
    // Not the settings file itself, because each write replaces it by a new one.
    QDir().mkpath(QFileInfo(settingsFile).path());
    const QByteArray path = QFile::encodeName(settingsFile + QStringLiteral(".use"));
    m_descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
    struct stat info;
    if (m_descriptor >= 0 && (::fstat(m_descriptor, &info) != 0 || !S_ISREG(info.st_mode))) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
    tryAgain();
}

BWSettingsLock::~BWSettingsLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool BWSettingsLock::tryAgain()
{
    if (m_descriptor < 0)
        return true;
    int result = 0;
    do
        result = ::flock(m_descriptor, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    m_isGranted = result == 0 || errno != EWOULDBLOCK;
    // No other process is writing now, so a lock file of QSettings is left over from one that was killed. QSettings would
    // wait for it, half a minute if it is empty.
    if (result == 0)
        ::unlink(QFile::encodeName(m_settingsFile + QStringLiteral(".lock")).constData());
    return m_isGranted;
}

void BWSettingsLock::setNote(const QByteArray &note)
{
    if (m_descriptor >= 0 && ::ftruncate(m_descriptor, 0) == 0) [[maybe_unused]]
        const ssize_t written = ::pwrite(m_descriptor, note.constData(), size_t(note.size()), 0);
}

QByteArray BWSettingsLock::note() const
{
    std::array<char, 256> bytes;
    const ssize_t size = m_descriptor < 0 ? -1 : ::pread(m_descriptor, bytes.data(), bytes.size(), 0);
    return size > 0 ? QByteArray(bytes.data(), size) : QByteArray();
}
