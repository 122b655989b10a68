// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Views/Settings/BWSettingViewController.h"

class BWResizingTextField;
class QComboBox;

/// A control that is set by choosing from a menu. Disabled it shows nothing: an empty item, the first, is then chosen.
class BWPopUpSettingViewController : public BWSettingViewController {
    Q_OBJECT

public:
    explicit BWPopUpSettingViewController(BWLocalizationManager &texts, QWidget *parent = nullptr);

    void reload() override;
    void enable(bool enabled) override;

protected:
    bool isBeingChanged() const override;

    /// The user chose that item.
    virtual void onChange(int index) = 0;

    QComboBox &popUpButton() const { return *m_popUpButton; }

private:
    bool hasEmptyItem() const;

    BWResizingTextField *m_label;
    QComboBox *m_popUpButton;
};

/// An automatic mode of the camera: item 0 is yes, item 1 no.
class BWAutoSettingViewController final : public BWPopUpSettingViewController {
    Q_OBJECT

public:
    explicit BWAutoSettingViewController(BWLocalizationManager &texts, QWidget *parent = nullptr);

    void updateValue() override;

protected:
    void onChange(int index) override;
};

/// The video norm of an analog receiver: one item to a norm, in the order of their numbers.
class BWNormSettingViewController final : public BWPopUpSettingViewController {
    Q_OBJECT

public:
    explicit BWNormSettingViewController(BWLocalizationManager &texts, QWidget *parent = nullptr);

    /// Norms that the camera does not have cannot be chosen.
    void reload() override;
    void updateValue() override;

protected:
    void onChange(int index) override;
};
