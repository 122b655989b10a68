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
