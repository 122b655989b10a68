// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QHash>
#include <QList>

class BWAnnouncement;
class BWProductInUse;
class BWResizingButton;
class BWSettingViewController;
class BWUserDefaults;
class QLabel;

/// The advanced settings window: the controls of the camera in use, with the values of its product. It shows and edits
/// them; what the camera is given is decided by BWProductInUse.
///
/// A utility window beside the camera window. GUI thread.
class BWAdvancedSettingsWindowController : public BWUtilityPanel,
                                           public BWLocalizationManagerDelegate,
                                           public BWConfigManagerListener {
    Q_OBJECT

public:
    static constexpr QLatin1StringView frameName{"advanced_settings"}; ///< BWFrameAutosave's

    /// To be registered as a listener of the settings store after what moves the camera window, beside which it is
    /// placed. The clock must outlive the window.
    BWAdvancedSettingsWindowController(BWProductInUse &productInUse, BWUserDefaults &defaults, QWidget *cameraWindow,
                                       BWClock &clock = BWClock::system());
    ~BWAdvancedSettingsWindowController() override;

    /// Once; builds the controls. The manager must outlive the window.
    void localizeWithManager(BWLocalizationManager &manager) override;

    /// For other front ends: the same operations of the product in use.
    void setCurrentCamera(const BWCameraPtr &camera);
    void reload();
    void loadProductWithVideoNorm(bool applyNorm);
    void updateResolution(BWResolution resolution);
    void updateSetting(BWCameraSetting &setting, double value);

    void onSaveAsDefault();
    void onRestoreDefaults();

    void configManagerUpdatedSettings(BWConfigManager &config) override;

    BWSettingViewController *controllerForSetting(int setting) const
    {
        return m_settingControllersBySetting.value(setting);
    }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void layOut();
    void prepare();
    void showProduct();
    void showChange();
    void follow();
    void followLater();
    void updateHolds();
    void updateProductName();
    void showSaved(bool saved);

    BWProductInUse &m_productInUse;
    BWClock &m_clock;
    BWLocalizationManager *m_texts = nullptr;
    QWidget *m_settingsView; ///< the grid
    QLabel *m_productName;
    BWAnnouncement *m_notice; ///< whether the values shown were stored, until one changes
    BWResizingButton *m_saveAsDefaultButton;
    BWResizingButton *m_restoreDefaultsButton;
    QList<BWSettingViewController *> m_settingControllers;
    QHash<int, BWSettingViewController *> m_settingControllersBySetting;
    DispatchAfterStrict::Handle m_following; ///< while the window is visible
    BWAliveToken m_alive;
};
