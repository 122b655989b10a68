// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Settings/BWSettingsFile.h"

#include "Utils/BWLogging.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

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

/// QSettings replaces the file even if the end of it could not be written, and says that all is well. Where nothing was to
/// be stored it leaves the file as it is, which may end in the middle of a line.
bool BWSettingsFile::storeWhole()
{
    const QByteArray path = QFile::encodeName(m_settings->fileName());
    const QByteArray old = path + ".old";
    ::unlink(old.constData());
    const bool isKept = ::link(path.constData(), old.constData()) == 0; // which takes no room
    m_settings->sync();
    const bool isStored = m_settings->status() != QSettings::AccessError;
    std::error_code error;
    const bool isUntouched = isKept && std::filesystem::equivalent(path.toStdString(), old.toStdString(), error);
    if (!isStored || isUntouched || isWhole()) {
        ::unlink(old.constData());
        return isStored;
    }
    if (isKept)
        ::rename(old.constData(), path.constData());
    const QStringList keys = m_settings->allKeys();
    for (const QString &key : keys)
        m_settings->setValue(key, m_settings->value(key)); // still to be stored
    return false;
}

/// Whether all that is to be in the file is, as far as its lines tell.
bool BWSettingsFile::isWhole() const
{
    static const QRegularExpression plain(u"^\\w+$"_s);
    const QStringList keys = m_settings->allKeys();
    if (keys.isEmpty())
        return true; // there may be no file yet
    QFile file(m_settings->fileName());
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? '\n' + file.readAll() : QByteArray();
    return bytes.endsWith('\n') && std::all_of(keys.cbegin(), keys.cend(), [&bytes](const QString &key) {
               return !plain.match(key).hasMatch() || bytes.contains('\n' + key.toLatin1() + '=');
           });
}

bool BWSettingsFile::synchronize()
{
    if (!m_isUsable)
        return false;
    // After an error QSettings reports it forever. A new object on the same file takes over the values that are still to
    // be stored.
    if (m_failed)
        m_settings = std::make_unique<QSettings>(m_settings->fileName(), QSettings::IniFormat);
    const bool failed = !storeWhole();
    if (failed && !m_failed)
        qCWarning(bwModel).noquote() << "Settings cannot be stored in" << m_settings->fileName();
    m_failed = failed;
    return !failed;
}
