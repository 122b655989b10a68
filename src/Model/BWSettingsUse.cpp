#include "Model/BWSettingsUse.h"

#include <cerrno>
#include <fcntl.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/file.h>
#include <unistd.h>

BWSettingsUse::BWSettingsUse(const QString &settingsFile, Kind kind)
{
    // Not the settings file itself, in whose place a new one comes each time it is written.
    QDir().mkpath(QFileInfo(settingsFile).path());
    const QByteArray path = QFile::encodeName(settingsFile + QStringLiteral(".use"));
    m_descriptor = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_descriptor < 0)
        return;
    const int operation = kind == Kind::Shared ? LOCK_SH : LOCK_EX | LOCK_NB;
    while (::flock(m_descriptor, operation) != 0) {
        if (errno == EINTR)
            continue;
        m_isGranted = errno != EWOULDBLOCK;
        return;
    }
}

BWSettingsUse::~BWSettingsUse()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}
