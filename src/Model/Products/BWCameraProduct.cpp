// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Products/BWCameraProduct.h"

#include "Model/Settings/BWSettingsFile.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <QJsonDocument>
#include <QRegularExpression>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString resolutionKey = u"resolution"_s;

/// The whole number at the start of a text: 0 if there is no number, the nearest int if it is too large.
int leadingInteger(const QString &text)
{
    static const QRegularExpression pattern(u"\\A\\s*([+-]?[0-9]+)"_s);
    const double number = pattern.match(text).captured(1).toDouble();
    return static_cast<int>(
        std::clamp<double>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

bool isUsable(const QJsonValue &value)
{
    const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
    return std::isfinite(number) && number >= std::numeric_limits<int>::min()
        && number <= std::numeric_limits<int>::max();
}

/// The members that make sense, the numbers under the codes they are read as; the names of the others go to `damaged`.
/// Nothing when the text is no object.
std::optional<QJsonObject> readMembers(const QString &text, QStringList &damaged)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isObject())
        return std::nullopt;
    QJsonObject usable;
    const QJsonObject members = document.object();
    for (auto it = members.begin(); it != members.end(); ++it) {
        if (it.key() == resolutionKey && BWResolution::fromResolutionString(it.value().toString()))
            usable.insert(resolutionKey, it.value());
        else if (it.key() != resolutionKey && isUsable(it.value()))
            usable.insert(QString::number(leadingInteger(it.key())), it.value());
        else
            damaged.append(it.key());
    }
    return usable;
}

} // namespace

BWCameraProduct::BWCameraProduct(BWUserDefaults &defaults) : m_defaults(defaults) { }

BWCameraProduct::~BWCameraProduct() = default;

void BWCameraProduct::initialize()
{
    m_loading = true;
    setDefaults();
    load();
    m_loading = false;
}

std::optional<double> BWCameraProduct::valueForSetting(int setting) const
{
    const auto it = m_settingValues.constFind(setting);
    return it == m_settingValues.constEnd() ? std::nullopt : std::optional<double>(*it);
}

void BWCameraProduct::setValue(double value, int setting)
{
    m_settingValues.insert(setting, value);
}

QString BWCameraProduct::settingsName() const
{
    return u"bwp2x_product_%1"_s.arg(identifier());
}

void BWCameraProduct::load()
{
    const QString text = m_defaults.string(settingsName());
    QStringList damaged;
    const auto stored = text.isNull() ? QJsonObject() : readMembers(text, damaged);
    if (!stored)
        qCWarning(bwModel).noquote() << "Stored values of" << identifier() << "are damaged; factory values are used";
    const QJsonObject usable = stored.value_or(QJsonObject());
    for (auto it = usable.begin(); it != usable.end(); ++it) {
        if (it.key() == resolutionKey)
            setCurrentResolution(*BWResolution::fromResolutionString(it.value().toString()));
        else
            setValue(it.value().toDouble(), it.key().toInt());
    }
    if (!damaged.isEmpty())
        qCWarning(bwModel).noquote() << "Stored values of" << identifier() << "are damaged; factory values are used for"
                                     << damaged.join(u", "_s);
    m_known = members();
}

QJsonObject BWCameraProduct::members() const
{
    QJsonObject members{{resolutionKey, m_currentResolution.resolutionString()}};
    for (int setting : availableSettings()) {
        if (const auto value = valueForSetting(setting))
            members.insert(QString::number(setting), *value);
    }
    return members;
}

bool BWCameraProduct::save()
{
    if (m_loading)
        return false;
    m_defaults.synchronize(); // picks up what others have stored
    QStringList damaged;
    const auto stored = readMembers(m_defaults.string(settingsName()), damaged);
    const QJsonObject mine = members();
    const QJsonObject merged =
        BWUserDefaults::merged(mine, std::exchange(m_known, mine), stored.value_or(QJsonObject()));
    m_defaults.setString(settingsName(), QString::fromUtf8(QJsonDocument(merged).toJson(QJsonDocument::Compact)));
    return m_defaults.synchronize();
}
