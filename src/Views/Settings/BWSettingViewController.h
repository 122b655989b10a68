// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraSetting.h"

#include <functional>
#include <memory>
#include <QWidget>

class BWLocalizationManager;
class QHBoxLayout;
class QLabel;
class QVBoxLayout;

/// One cell of the advanced settings window: the name of a camera control and, below it, what changes it. The kinds
/// differ in that. GUI thread.
class BWSettingViewController : public QWidget {
    Q_OBJECT

public:
    using SettingChangedBlock = std::function<void(BWCameraSetting &setting, double value)>;

    /// Empty space on the left of a cell.
    static constexpr int margin = 20;

    /// The texts must outlive it.
    explicit BWSettingViewController(BWLocalizationManager &texts, QWidget *parent = nullptr);

    int settingIdentifier() const { return m_settingIdentifier; }
    /// Also shows the control's name.
    void setSettingIdentifier(int identifier);

    /// The camera's control; null before it was set, and after its camera is gone.
    std::shared_ptr<BWCameraSetting> setting() const { return m_setting.lock(); }
    /// Shows that control of the camera, which is not owned; null for none.
    void setSetting(const std::shared_ptr<BWCameraSetting> &setting);

    /// Called with every value that the user chooses, and by apply().
    void setSettingChangedBlock(SettingChangedBlock block) { m_settingChangedBlock = std::move(block); }

    /// Shows the name and the limits, and then the value.
    virtual void reload() { }
    /// Shows the control's value as it is now.
    virtual void updateValue() { }
    /// A camera that does not have the control shows it disabled, without a value.
    virtual void enable(bool enabled) { Q_UNUSED(enabled) }
    /// The automatic mode of that name moves the control; null if none does.
    virtual void setHeldBy(const QString &mode) { Q_UNUSED(mode) }

    /// For other front ends: sends the control's value as if the user had chosen it.
    void apply();

    /// Like updateValue(), if another value is shown and the user is not just changing it.
    void follow();

    QString localizedName() const;

protected:
    /// Whether the user holds the slider, types a number or looks at the menu.
    virtual bool isBeingChanged() const { return false; }

    /// The user chose that value.
    void change(double value);

    /// Names what changes the control, for screen readers.
    void nameControls(std::initializer_list<QWidget *> controls) const;

    BWLocalizationManager &texts() const { return m_texts; }
    /// The cell's column: the line with the name, and what is added below it.
    QVBoxLayout &column() const { return m_column; }
    /// Adds the line with the controls, which is as high in each cell, so that those side by side are in line.
    QHBoxLayout &addControls();

private:
    BWLocalizationManager &m_texts;
    QVBoxLayout &m_column;
    int m_settingIdentifier = 0;
    std::weak_ptr<BWCameraSetting> m_setting;
    SettingChangedBlock m_settingChangedBlock;
    double m_shown = 0;
};
