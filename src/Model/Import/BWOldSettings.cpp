// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Import/BWOldSettings.h"

#include "Model/Import/BWKeyedArchive.h"
#include "Model/Import/BWPropertyList.h"
#include "Utils/BWLogging.h"

#include <cerrno>
#include <cmath>
#include <limits>
#include <new>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Decodes what is stored under a key, if anything is. False if it is not an archive of that kind.
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

/// Takes values of the types they must have. An absent one gives an empty value, any other type is noted as a problem.
class Expect {
public:
    explicit Expect(QString &problem) : m_problem(problem) { }

    bool allWell() const { return m_problem.isNull(); }

    QVariantMap dictionary(const QVariant &value, const QString &name)
    {
        return is(value, QMetaType::QVariantMap, name) ? value.toMap() : QVariantMap();
    }

    QVariantList array(const QVariant &value, const QString &name)
    {
        return is(value, QMetaType::QVariantList, name) ? value.toList() : QVariantList();
    }

    QString text(const QVariant &value, const QString &name)
    {
        return is(value, QMetaType::QString, name) ? value.toString() : QString();
    }

    std::optional<double> number(const QVariant &value, const QString &name)
    {
        const int type = value.typeId();
        if (type != QMetaType::Double && type != QMetaType::Bool && !is(value, QMetaType::LongLong, name))
            return std::nullopt;
        return value.toDouble();
    }

    /// A number that cannot be the value of a control counts as absent.
    std::optional<double> controlValue(const QVariant &value, const QString &name)
    {
        const auto found = number(value, name);
        const bool isUsable = found && std::isfinite(*found) && *found >= std::numeric_limits<int>::min()
            && *found <= std::numeric_limits<int>::max();
        return isUsable ? found : std::nullopt;
    }

    void note(const QString &name)
    {
        if (m_problem.isNull())
            m_problem = u"\"%1\" makes no sense"_s.arg(name);
    }

private:
    /// False for an absent value as well.
    bool is(const QVariant &value, QMetaType::Type type, const QString &name)
    {
        if (value.isValid() && value.typeId() != type)
            note(name);
        return value.typeId() == type;
    }

    QString &m_problem;
};

BWOldCameraSettings::Product productOf(const QString &name, const QVariantMap &record, Expect &expect)
{
    BWOldCameraSettings::Product product;
    product.name = name;
    const QVariantMap values = expect.dictionary(record.value(u"cp"_s), u"cp"_s);
    for (auto it = values.begin(); expect.allWell() && it != values.end(); ++it) {
        const QVariantMap entry = expect.dictionary(*it, it.key());
        if (const auto value = expect.controlValue(entry.value(u"value"_s), it.key()))
            product.values.insert(it.key(), *value);
    }
    product.videoNorm = expect.controlValue(record.value(u"currentVideoNorm"_s), u"currentVideoNorm"_s);
    const QVariantList names = expect.array(record.value(u"resolutionNames"_s), u"resolutionNames"_s);
    const auto index = expect.number(record.value(u"currentResolution"_s), u"currentResolution"_s);
    if (index && *index >= 0 && *index < static_cast<double>(names.size()))
        product.resolution = expect.text(names.value(static_cast<qsizetype>(*index)), u"resolutionNames"_s);
    return product;
}

std::optional<QVariantMap> rootOf(const QByteArray &archive, QString &problem)
{
    const auto root = BWKeyedArchive::root(archive, problem);
    if (!root)
        return std::nullopt;
    if (root->typeId() != QMetaType::QVariantMap) {
        problem = u"its root is no dictionary"_s;
        return std::nullopt;
    }
    qCDebug(bwModel).noquote() << "Old settings:" << QJsonDocument::fromVariant(*root).toJson(QJsonDocument::Compact);
    return root->toMap();
}

BWOldSettingsFile readFile(const QString &path)
{
    using Problem = BWOldSettingsFile::Problem;
    QFile file(path);
    if (::access(QFile::encodeName(path).constData(), F_OK) != 0 && errno == ENOENT)
        return refuse(Problem::NotThere, u"there is no such file"_s);
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) // opening a pipe or a device may take forever
        return refuse(Problem::Foreign, u"\"%1\" is no file"_s.arg(path));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(Problem::Unreadable, file.errorString());
    if (file.size() > BWPropertyList::maximumBytes)
        return refuse(Problem::TooLarge, u"the file has %1 bytes"_s.arg(file.size()));
    const QByteArray content = file.read(BWPropertyList::maximumBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return refuse(Problem::Unreadable, file.errorString());
    return BWOldSettingsFile::decode(content);
}

} // namespace

std::optional<BWOldCameraSettings> BWOldCameraSettings::decode(const QByteArray &archive, QString &problem)
{
    const auto root = rootOf(archive, problem);
    if (!root)
        return std::nullopt;
    Expect expect(problem);
    BWOldCameraSettings settings;
    const QVariantMap chosen = expect.dictionary(root->value(u"cameraCurrentProducts"_s), u"cameraCurrentProducts"_s);
    for (auto it = chosen.begin(); it != chosen.end(); ++it) {
        if (const QString product = expect.text(*it, it.key()); !product.isNull())
            settings.productForCamera.insert(it.key(), product);
    }
    const QVariantMap products = expect.dictionary(root->value(u"productsByName"_s), u"productsByName"_s);
    for (auto it = products.begin(); expect.allWell() && it != products.end(); ++it) {
        if (it->isValid())
            settings.products.append(productOf(it.key(), expect.dictionary(*it, it.key()), expect));
    }
    return expect.allWell() ? std::optional(settings) : std::nullopt;
}

std::optional<QList<BWOldAlbum>> BWOldAlbum::decode(const QByteArray &archive, QString &problem)
{
    const auto root = rootOf(archive, problem);
    if (!root)
        return std::nullopt;
    Expect expect(problem);
    const QVariantList records = expect.array(root->value(u"albums"_s), u"albums"_s);
    if (records.size() > maximumCount)
        expect.note(u"albums"_s);
    QList<BWOldAlbum> albums;
    for (qsizetype i = 0; expect.allWell() && i < records.size(); ++i) {
        const QVariantMap record = expect.dictionary(records[i], u"album"_s);
        const QString path = expect.text(record.value(u"path"_s), u"path"_s);
        if (const QString name = expect.text(record.value(u"name"_s), u"name"_s); !path.isNull())
            albums.append({name, path});
    }
    return expect.allWell() ? std::optional(albums) : std::nullopt;
}

BWOldSettingsFile BWOldSettingsFile::read(const QString &path)
{
    try {
        return readFile(path);
    } catch (const std::bad_alloc &) {
        return refuse(Problem::Unreadable, u"there is no memory for it"_s);
    }
}

BWOldSettingsFile BWOldSettingsFile::decode(const QByteArray &content)
{
    QString problem;
    const auto list = BWPropertyList::read(content, problem);
    if (!list || list->typeId() != QMetaType::QVariantMap)
        return refuse(Problem::Foreign, problem.isNull() ? u"it is no dictionary"_s : problem);
    const QVariantMap stored = list->toMap();
    if (!stored.contains(BWOldSettings::camerasKey()) && !stored.contains(BWOldSettings::albumsKey()))
        return refuse(Problem::NothingOld, u"they are not in this file"_s);
    BWOldSettingsFile result;
    if (!take(stored, BWOldSettings::camerasKey(), result.settings.cameras, BWOldCameraSettings::decode, problem)
        || !take(stored, BWOldSettings::albumsKey(), result.settings.albums, BWOldAlbum::decode, problem))
        return refuse(Problem::Damaged, problem);
    return result;
}
