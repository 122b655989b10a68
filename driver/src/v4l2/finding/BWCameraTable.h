// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QString>
#include <QStringList>
#include <vector>

class QJsonObject;
struct BWVideoNode;

/// An entry of a camera table: which devices it applies to, and what they are. Texts that are not given are null.
struct BWCameraRule {
    // Which devices: all that is given must fit. * stands for any text, ? for any one character; case does not count.
    QString usb; ///< vendor:product, or vendor:*
    QString driver; ///< kernel driver
    QString name; ///< what the driver calls the camera

    // What they are.
    QString type; ///< identifierForCameraType; null to go by what the device can do
    QString displayName; ///< replaces the type's name
    std::optional<bool> bridgeChip;
    bool ignore = false; ///< the device is not used

    QString origin; ///< where the entry is, for people to read

    bool fits(const BWVideoNode &node) const;

    /// Nothing if the entry is damaged, and in `fault` what is wrong with it.
    static std::optional<BWCameraRule> fromJson(const QJsonObject &entry, QString &fault);
};

/// The entries of the files that say which device is which type of camera. Immutable once read.
class BWCameraTable {
public:
    /// Reads `files` (resources included) in their order and skips those that do not exist. Logs what is damaged, a
    /// file or an entry, with its place, and uses the rest.
    static BWCameraTable read(const QStringList &files);

    /// The first entry that fits; null if none does.
    const BWCameraRule *ruleFor(const BWVideoNode &node) const;

    const std::vector<BWCameraRule> &rules() const { return m_rules; }

private:
    void readFile(const QString &path);

    std::vector<BWCameraRule> m_rules;
};
