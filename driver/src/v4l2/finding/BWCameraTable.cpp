// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/finding/BWCameraTable.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWCameraDetector.h"
#include "v4l2/finding/BWVideoNode.h"

#include <algorithm>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// A missing pattern fits everything.
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

QString placeOf(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    return u"line %1, column %2"_s.arg(before.count('\n') + 1).arg(offset - before.lastIndexOf('\n'));
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
            // A mistyped condition must not extend the entry to devices it was not meant for.
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

BWCameraTable BWCameraTable::read(const QStringList &files)
{
    BWCameraTable table;
    for (const QString &file : files)
        table.readFile(file);
    return table;
}

void BWCameraTable::readFile(const QString &path)
{
    const auto complain = [&path](const QString &what) {
        qCWarning(bwDriver).noquote() << "Table of cameras" << path << what;
    };
    const QFileInfo info(path);
    if (!info.exists())
        return;
    if (!info.isFile()) { // opening a pipe would block until someone writes to it
        complain(u"is not used: it is no regular file"_s);
        return;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        complain(u"cannot be read: %1"_s.arg(file.errorString()));
        return;
    }
    const QByteArray text = file.readAll();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        complain(u"is damaged at %1, and not used: %2"_s.arg(placeOf(text, error.offset), error.errorString()));
        return;
    }
    const QJsonValue cameras = document.object().value("cameras"_L1);
    if (!cameras.isArray()) {
        complain(u"is not used: it has no list \"cameras\""_s);
        return;
    }
    int number = 0;
    const QJsonArray entries = cameras.toArray();
    for (const QJsonValue entry : entries) {
        ++number;
        QString fault;
        std::optional<BWCameraRule> rule;
        if (entry.isObject())
            rule = BWCameraRule::fromJson(entry.toObject(), fault);
        else
            fault = u"it is not written in { }"_s;
        if (!rule) {
            complain(u"entry %1 is not used: %2"_s.arg(number).arg(fault));
            continue;
        }
        rule->origin = u"entry %1 of %2"_s.arg(number).arg(path);
        m_rules.push_back(*rule);
    }
}

const BWCameraRule *BWCameraTable::ruleFor(const BWVideoNode &node) const
{
    const auto rule =
        std::find_if(m_rules.begin(), m_rules.end(), [&node](const BWCameraRule &each) { return each.fits(node); });
    return rule == m_rules.end() ? nullptr : &*rule;
}
