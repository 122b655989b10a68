#pragma once

#include "BWACUDriver/BWCamera.h"
#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Products/BWCameraProduct.h"
#include "Model/Settings/BWConfigManagerListener.h"
#include "Model/Texts/BWLocalizationManagerDelegate.h"
#include "Utils/BWMainQueue.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <functional>
#include <QHash>
#include <QList>

class BWAnnouncement;
class BWConfigManager;
class BWResizingButton;
class BWSettingViewController;
class BWUserDefaults;
class QLabel;

/// The advanced settings window: the controls of the running camera, with the values of its product. Every change goes
/// to the camera at once and into the product, which is stored when the user asks for it.
///
/// A utility window beside the camera window. It loads products into cameras whether it is to be seen or not. GUI thread.
class BWAdvancedSettingsWindowController : public BWUtilityPanel,
                                           public BWLocalizationManagerDelegate,
                                           public BWConfigManagerListener {
    Q_OBJECT

public:
    /// Asked each time; null when no camera is in use.
    using CurrentCamera = std::function<BWCameraPtr()>;

    /// To be registered as a listener of `config` after what moves the camera window, which it is placed by. The clock
    /// must outlive the window.
    BWAdvancedSettingsWindowController(BWConfigManager &config, BWUserDefaults &defaults, CurrentCamera currentCamera,
                                       QWidget *cameraWindow, BWClock &clock = BWClock::system());

    /// Once; builds the controls. The manager must outlive the window.
    void localizeWithManager(BWLocalizationManager &manager) override;

    /// A camera has started. It gets the values of its product, all but the video norm: that it was started with.
    void setCurrentCamera(const BWCameraPtr &camera);

    /// Takes the product of the current camera. A product that was not loaded yet is sent to the camera; from one
    /// product to another the video norm goes along. The same product changes nothing.
    void reload();

    /// Shows the product's values, and sends them to the current camera. A control for which the product has no value
    /// shows the camera's own.
    void loadProductWithVideoNorm(bool applyNorm);

    /// The resolution becomes the product's; it is stored with the values.
    void updateResolution(BWResolution resolution);

    /// Sends the value to the current camera, if the control is its, and keeps it in the product.
    void updateSetting(BWCameraSetting &setting, double value);

    void onSaveAsDefault();
    /// Stores the factory values, and sends all of them to the camera, if it is one of that product.
    void onRestoreDefaults();

    void configManagerUpdatedSettings(BWConfigManager &config) override;

    /// The values shown belong to this product; null before the first camera.
    const BWCameraProductPtr &product() const { return m_product; }
    BWSettingViewController *controllerForSetting(int setting) const
    {
        return m_settingControllersBySetting.value(setting);
    }

Q_SIGNALS:
    /// The running camera was sent the values of its product because that is another one, or has others than before.
    /// The product's resolution may be another one, too.
    void productReplaced();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void layOut();
    void prepare();
    BWCameraProductPtr productFor(const BWCamera &camera) const;
    void follow();
    void followLater();
    void updateHolds();
    void updateProductName();
    void showSaved(bool saved);
    void clearNotice();

    BWConfigManager &m_config;
    const CurrentCamera m_currentCamera;
    BWClock &m_clock;
    BWLocalizationManager *m_texts = nullptr;
    QWidget *m_settingsView; ///< the grid
    QLabel *m_productName;
    BWAnnouncement *m_notice; ///< whether the values shown were stored, until one changes
    BWResizingButton *m_saveAsDefaultButton;
    BWResizingButton *m_restoreDefaultsButton;
    QList<BWSettingViewController *> m_settingControllers;
    QHash<int, BWSettingViewController *> m_settingControllersBySetting;
    BWCameraProductPtr m_product;
    DispatchAfterStrict::Handle m_following; ///< while the window is to be seen
    BWAliveToken m_alive;
};
