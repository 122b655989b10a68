// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWResolution.h"

#include <memory>
#include <optional>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

class BWUserDefaults;

/// One model of camera as the user picks it: what it is called, what it offers, its factory values, and the user's own
/// values and resolution, which are stored under a key of its own. GUI thread only.
class BWCameraProduct {
public:
    /// A constructor of a subclass ends with initialize(). The store must outlive the product.
    explicit BWCameraProduct(BWUserDefaults &defaults);
    virtual ~BWCameraProduct();
    BWCameraProduct(const BWCameraProduct &) = delete;
    BWCameraProduct &operator=(const BWCameraProduct &) = delete;

    /// English display name.
    virtual QString name() const = 0;
    /// German name in the previous generation of the software; null when that did not know the product.
    virtual QString oldGermanName() const = 0;
    /// Stored wherever the product is referred to; never changes.
    virtual QString identifier() const = 0;
    /// "wired_ultra", "wired_high", "wired_regular" or "wireless".
    virtual QString cameraTypeIdentifier() const = 0;
    /// Codes of the controls (BWSettingCode), in the order in which they are shown.
    virtual QList<int> availableSettings() const = 0;
    /// In the order in which they are offered.
    virtual QList<BWResolution> availableResolutions() const = 0;
    /// Puts the factory values and the factory resolution in place of all values. Does not save.
    virtual void setDefaults() = 0;

    /// English name in the previous generation of the software.
    QString oldEnglishName() const { return name(); }

    /// The value of a control; nothing if the product has no value for that code.
    std::optional<double> valueForSetting(int setting) const;
    /// Keeps the number as it is. Does not save.
    void setValue(double value, int setting);

    BWResolution currentResolution() const { return m_currentResolution; }
    /// Does not save.
    void setCurrentResolution(BWResolution resolution) { m_currentResolution = resolution; }

    /// Key of the stored values.
    QString settingsName() const;

    /// Reads the stored values. Skips and logs those that make no sense: not a finite number within the range of int, or
    /// not a resolution.
    void load();
    /// Stores the resolution and the values of the available settings, except those that another program changed in the
    /// store and this one did not. False if they did not reach the disk.
    bool save();

protected:
    /// Factory values, then the stored ones. Writes nothing.
    void initialize();
    void setValues(QMap<int, double> values) { m_settingValues = std::move(values); }

private:
    QJsonObject members() const;

    BWUserDefaults &m_defaults;
    bool m_loading = false;
    QJsonObject m_known; ///< the members as they were read or stored last
    QMap<int, double> m_settingValues;
    BWResolution m_currentResolution;
};

using BWCameraProductPtr = std::shared_ptr<BWCameraProduct>;
