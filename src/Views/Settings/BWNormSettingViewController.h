#pragma once

#include "Views/Settings/BWPopUpSettingViewController.h"

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
