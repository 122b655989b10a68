#pragma once

#include <optional>
#include <QString>

class QJsonObject;
struct BWVideoNode;

/// One entry of a camera table: which devices it is for, and what they are. Texts that are not given are null.
struct BWCameraRule {
    // Which devices; * stands for any text and ? for any one character, case does not count. All that are given fit.
    QString usb; ///< vendor:product, or vendor:*
    QString driver; ///< kernel driver
    QString name; ///< what the driver calls the camera

    // What they are.
    QString type; ///< identifierForCameraType; null to tell it by what the device can do
    QString displayName; ///< in place of the type's name
    std::optional<bool> bridgeChip;
    bool ignore = false; ///< not to be used

    QString origin; ///< where the entry stands, for people

    bool fits(const BWVideoNode &node) const;

    /// Nothing, and in `fault` what is wrong, where the entry is damaged.
    static std::optional<BWCameraRule> fromJson(const QJsonObject &entry, QString &fault);
};
