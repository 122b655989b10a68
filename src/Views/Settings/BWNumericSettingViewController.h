// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Views/Settings/BWSettingViewController.h"

#include <QSpinBox>

class BWResizingTextField;
class QSlider;

/// A number with steppers. The user may type a number beyond the range, which becomes the nearest in the range when it is
/// complete; a plain spin box would refuse its last digits.
class BWClampingSpinBox : public QSpinBox {
    Q_OBJECT

public:
    using QSpinBox::QSpinBox;

    /// Whether the user has typed something that is not applied yet.
    bool isBeingEdited() const;

    /// Like setValue(), but keeps all selected if it was, so that the next key replaces all.
    void showValue(int value);

protected:
    /// Escape undoes what was typed.
    void keyPressEvent(QKeyEvent *event) override;
    QValidator::State validate(QString &input, int &position) const override;
    void fixup(QString &input) const override;
};

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
