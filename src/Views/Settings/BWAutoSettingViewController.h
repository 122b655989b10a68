#pragma once

#include "Views/Settings/BWPopUpSettingViewController.h"

/// An automatic mode of the camera: item 0 is yes, item 1 no.
class BWAutoSettingViewController final : public BWPopUpSettingViewController {
    Q_OBJECT

public:
    explicit BWAutoSettingViewController(BWLocalizationManager &texts, QWidget *parent = nullptr);

    void updateValue() override;

protected:
    void onChange(int index) override;
};
