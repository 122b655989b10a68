#pragma once

#include "Views/Settings/BWSettingViewController.h"

class BWResizingTextField;
class BWClampingSpinBox;
class QSlider;

/// A control with a range: a slider, and a text field with a stepper.
class BWNumericSettingViewController final : public BWSettingViewController {
    Q_OBJECT

public:
    explicit BWNumericSettingViewController(BWLocalizationManager &texts, QWidget *parent = nullptr);

    void reload() override;
    void updateValue() override;
    void enable(bool enabled) override;
    void setHeldBy(const QString &mode) override;

protected:
    bool isBeingChanged() const override;
    void changeEvent(QEvent *event) override;

private:
    void onChange(int value);
    void showNumber(int value);
    void updateColors();
    void updateToolTip();

    BWResizingTextField *m_label;
    QLabel *m_hint; ///< beside the name: the control is held
    QSlider *m_slider;
    BWClampingSpinBox *m_textField; ///< and stepper
    QString m_heldBy;
};
