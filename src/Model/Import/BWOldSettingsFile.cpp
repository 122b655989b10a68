#include "Model/Import/BWOldSettingsFile.h"

#include "Model/Import/BWOldSettingsKeys.h"
#include "Model/Import/BWPropertyList.h"

#include <cerrno>
#include <QFile>
#include <QFileInfo>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Decodes what is stored under a key, if anything is. False when it is no archive of that kind.
template <typename Settings, typename Decode>
bool take(const QVariantMap &stored, const QString &key, std::optional<Settings> &settings, Decode decode,
          QString &problem)
{
    if (!stored.contains(key))
        return true;
    if (stored[key].typeId() != QMetaType::QByteArray) {
        problem = u"it holds no data"_s;
        return false;
    }
    settings = decode(stored[key].toByteArray(), problem);
    return settings.has_value();
}

BWOldSettingsFile refuse(BWOldSettingsFile::Problem problem, const QString &detail)
{
    return {problem, detail, {}};
}

} // namespace

BWOldSettingsFile BWOldSettingsFile::read(const QString &path)
{
    QFile file(path);
    if (::access(QFile::encodeName(path).constData(), F_OK) != 0 && errno == ENOENT)
        return refuse(Problem::NotThere, u"there is no such file"_s);
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) // opening a pipe or a device may take for ever
        return refuse(Problem::Foreign, u"\"%1\" is no file"_s.arg(path));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(Problem::Unreadable, file.errorString());
    if (file.size() > BWPropertyList::maximumBytes)
        return refuse(Problem::TooLarge, u"the file has %1 bytes"_s.arg(file.size()));
    const QByteArray content = file.read(BWPropertyList::maximumBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return refuse(Problem::Unreadable, file.errorString());
    return decode(content);
}

BWOldSettingsFile BWOldSettingsFile::decode(const QByteArray &content)
{
    QString problem;
    const auto list = BWPropertyList::read(content, problem);
    if (!list || list->typeId() != QMetaType::QVariantMap)
        return refuse(Problem::Foreign, problem.isNull() ? u"it is no dictionary"_s : problem);
    const QVariantMap stored = list->toMap();
    if (!stored.contains(BWOldSettingsKeys::cameras()) && !stored.contains(BWOldSettingsKeys::albums()))
        return refuse(Problem::NothingOld, u"they are not in this file"_s);
    BWOldSettingsFile result;
    if (!take(stored, BWOldSettingsKeys::cameras(), result.settings.cameras, BWOldCameraSettings::decode, problem)
        || !take(stored, BWOldSettingsKeys::albums(), result.settings.albums, BWOldAlbum::decode, problem))
        return refuse(Problem::Damaged, problem);
    return result;
}
