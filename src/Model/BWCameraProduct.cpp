#include "Model/BWCameraProduct.h"

#include "Model/BWUserDefaults.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

const QString resolutionKey = u"resolution"_s;

/// The whole number that a text begins with, 0 when it begins with none, the nearest int when it is too large.
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
    if (text.isNull())
        return;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isObject()) {
        qCWarning(bwModel).noquote() << "Stored values of" << identifier() << "are damaged; factory values are used";
        return;
    }
    QStringList damaged;
    const QJsonObject members = document.object();
    for (auto it = members.begin(); it != members.end(); ++it) {
        if (it.key() == resolutionKey) {
            if (const auto resolution = BWResolution::fromResolutionString(it.value().toString()))
                setCurrentResolution(*resolution);
            else
                damaged.append(it.key());
        } else if (isUsable(it.value())) {
            setValue(it.value().toDouble(), leadingInteger(it.key()));
        } else {
            damaged.append(it.key());
        }
    }
    if (!damaged.isEmpty())
        qCWarning(bwModel).noquote() << "Stored values of" << identifier() << "are damaged; factory values are used for"
                                     << damaged.join(u", "_s);
}

bool BWCameraProduct::save()
{
    if (m_loading)
        return false;
    QJsonObject members{{resolutionKey, m_currentResolution.resolutionString()}};
    for (int setting : availableSettings()) {
        if (const auto value = valueForSetting(setting))
            members.insert(QString::number(setting), *value);
    }
    m_defaults.setString(settingsName(), QString::fromUtf8(QJsonDocument(members).toJson(QJsonDocument::Compact)));
    return m_defaults.synchronize();
}
