// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Products/BWCameraProduct.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <functional>
#include <QHash>

class BWSettingsForm;
class BWSettingsWindowController;
class BWUserDefaults;

/// Does what the settings window cannot do itself. GUI thread.
class BWSettingsWindowControllerDelegate {
public:
    virtual ~BWSettingsWindowControllerDelegate() = default;

    /// The user picked that camera; it may be the current one.
    virtual void changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera) = 0;
};

/// The settings window: which camera is live, which product it is, what saves a picture or a video, and whether windows
/// stay where they were left. A utility window beside the camera window. GUI thread.
/// Its owner adds it to the listeners of the settings store.
class BWSettingsWindowController : public BWUtilityPanel,
                                   public BWLocalizationManagerDelegate,
                                   public BWConfigManagerListener {
    Q_OBJECT

public:
    static constexpr QLatin1StringView frameName{"settings"}; ///< BWFrameAutosave's

    /// What the window asks of the application.
    struct Callbacks {
        BWSettingsWindowControllerDelegate &modelDelegate;
        std::function<void()> showAdvancedSettings;
    };

    /// All must outlive the window; the camera window owns it, if given, and is what it is placed by.
    BWSettingsWindowController(BWConfigManager &config, BWUserDefaults &defaults, Callbacks callbacks,
                               QWidget *cameraWindow);

    void localizeWithManager(BWLocalizationManager &manager) override;
    QString localizeCameraName(const BWCamera &camera) const;
    QString localizeProductName(const BWCameraProduct &product) const;

    /// The attached cameras, or which of them is live, changed.
    void updateCameras(const QList<BWCameraPtr> &cameras, const BWCameraPtr &currentCamera);
    /// Lists the products of that camera's type; empties the menu for null.
    void updateProductForCamera(const BWCameraPtr &camera);
    /// Shows the options as they are stored.
    void reloadSettings();
    /// Shows the change later, after all listeners were notified.
    void configManagerUpdatedSettings(BWConfigManager &configManager) override;

private:
    void connectControls();
    void onCameraTypeChanged();
    void onCameraProductChanged(int index);
    void onRestoreLayout();
    void onRememberLayout(int index);
    void onCameraButtonSaves(int index);
    void onSaveSnapshotOnClick(int index);
    void onRecentFiles(int index);
    void onAdvancedSettings();
    void showChange(bool mustResetLayout);
    void updateUsualTitles();
    int currentProductIndex() const;

    BWConfigManager &m_config;
    Callbacks m_callbacks;
    BWLocalizationManager *m_manager = nullptr;
    BWSettingsForm *m_form;
    QHash<QString, std::weak_ptr<BWCamera>> m_cameraMapping; // by title; keeps no camera alive
    QString m_cameraIdentifier; // null without a camera
    QList<BWCameraProductPtr> m_products; // as the menu lists them
    BWAliveToken m_alive;
};
