// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Settings/BWSettingsFile.h"

#include "Utils/BWLogging.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace {

/// Nothing can be read or stored below a device file.
QString nowhere()
{
    return QStringLiteral("/dev/null/BrimwellPro.conf");
}

} // namespace

BWSettingsFile::BWSettingsFile(const QString &path)
{
    // Opening a pipe would block until another process writes to it.
    const QFileInfo file(path);
    m_isUsable = !file.exists() || file.isFile();
    if (!m_isUsable)
        qCWarning(bwModel).noquote() << "Settings cannot be kept in" << path << "as it is no regular file";
    m_settings = std::make_unique<QSettings>(m_isUsable ? path : nowhere(), QSettings::IniFormat);
    // QSettings reads the file at the first access.
    m_settings->allKeys();
    if (m_settings->status() == QSettings::FormatError)
        qCWarning(bwModel).noquote() << "Settings file" << path << "is damaged; what can be read of it is used";
}

QString BWSettingsFile::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/BrimwellPro/BrimwellPro.conf");
}

QString BWSettingsFile::string(const QString &key) const
{
    const QVariant value = m_settings->value(key);
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QStringList: // typed into the file by hand, with commas but no quotation marks
        return value.toStringList().join(QStringLiteral(", "));
    default:
        return {};
    }
}

void BWSettingsFile::setString(const QString &key, const QString &value)
{
    if (value.isNull())
        m_settings->remove(key);
    else
        m_settings->setValue(key, value);
}

QByteArray BWSettingsFile::data(const QString &key) const
{
    const QVariant value = m_settings->value(key);
    return value.typeId() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
}

void BWSettingsFile::setData(const QString &key, const QByteArray &value)
{
    if (value.isNull())
        m_settings->remove(key);
    else
        m_settings->setValue(key, value);
}

bool BWSettingsFile::synchronize()
{
    if (!m_isUsable)
        return false;
    // After an error QSettings reports it forever. A new object on the same file takes over the values that are still to
    // be stored.
    if (m_failed)
        m_settings = std::make_unique<QSettings>(m_settings->fileName(), QSettings::IniFormat);
    m_settings->sync();
    const bool failed = m_settings->status() == QSettings::AccessError;
    if (failed && !m_failed)
        qCWarning(bwModel).noquote() << "Settings cannot be stored in" << m_settings->fileName();
    m_failed = failed;
    return !failed;
}
