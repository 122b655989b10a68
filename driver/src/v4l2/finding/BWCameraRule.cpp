#include "v4l2/finding/BWCameraRule.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "v4l2/finding/BWVideoNode.h"

#include <algorithm>
#include <QJsonObject>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// A pattern that is not given fits everything.
bool fitsPattern(const QString &pattern, const QString &text)
{
    if (pattern.isNull())
        return true;
    QString expression = QRegularExpression::escape(pattern);
    expression.replace("\\*"_L1, ".*"_L1).replace("\\?"_L1, "."_L1);
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::CaseInsensitiveOption)
        .match(text)
        .hasMatch();
}

QString faultOfText(const QString &key, const QString &text)
{
    static const QRegularExpression usbId(u"^[0-9a-fA-F]{4}:([0-9a-fA-F]{4}|\\*)$"_s);
    if (text.isEmpty())
        return u"\"%1\" is empty"_s.arg(key);
    if (key == "usb"_L1 && !usbId.match(text).hasMatch())
        return u"\"usb\" is \"%1\"; it must be as \"1234:abcd\" or \"1234:*\""_s.arg(text);
    if (key != "type"_L1)
        return {};
    QStringList types;
    const QList<BWCameraDescriptionPtr> descriptions = BWCameraDetector::supportedDescriptions();
    for (const BWCameraDescriptionPtr &description : descriptions)
        types.append(description->identifierForCameraType);
    return types.contains(text) ? QString() : u"\"type\" is \"%1\"; there are %2"_s.arg(text, types.join(", "_L1));
}

} // namespace

bool BWCameraRule::fits(const BWVideoNode &node) const
{
    return fitsPattern(usb, node.usbId) && fitsPattern(driver, node.driver) && fitsPattern(name, node.name);
}

std::optional<BWCameraRule> BWCameraRule::fromJson(const QJsonObject &entry, QString &fault)
{
    BWCameraRule rule;
    for (auto member = entry.begin(); member != entry.end(); ++member) {
        const QString key = member.key();
        QString *text = key == "usb"_L1 ? &rule.usb
            : key == "driver"_L1        ? &rule.driver
            : key == "name"_L1          ? &rule.name
            : key == "type"_L1          ? &rule.type
            : key == "displayName"_L1   ? &rule.displayName
                                        : nullptr;
        const bool isFlag = key == "bridgeChip"_L1 || key == "ignore"_L1;
        if (text && member->isString()) {
            *text = member->toString();
            fault = faultOfText(key, *text);
        } else if (isFlag && member->isBool()) {
            if (key == "ignore"_L1)
                rule.ignore = member->toBool();
            else
                rule.bridgeChip = member->toBool();
        } else if (text || isFlag) {
            fault = u"\"%1\" must be %2"_s.arg(key, text ? u"a text"_s : u"true or false"_s);
        } else if (key != "comment"_L1) {
            // A mistyped condition must not widen the entry to devices it was not meant for.
            fault = u"\"%1\" is not known"_s.arg(key);
        }
        if (!fault.isNull())
            return std::nullopt;
    }
    if (rule.usb.isNull() && rule.driver.isNull() && rule.name.isNull()) {
        fault = u"it says neither \"usb\" nor \"driver\" nor \"name\""_s;
        return std::nullopt;
    }
    if (rule.type.isNull() && rule.displayName.isNull() && !rule.bridgeChip && !rule.ignore) {
        fault = u"it says nothing about the camera: \"type\", \"displayName\", \"bridgeChip\" or \"ignore\""_s;
        return std::nullopt;
    }
    return rule;
}
