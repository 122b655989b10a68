// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Products/BWCameraProduct.h"
#include "Model/Settings/BWConfigManager.h"
#include "Utils/BWMainQueue.h"

#include <array>
#include <optional>
#include <QObject>

class BWConfigManager;

/// The camera in use, and the product whose values it has.
///
/// Everything that gives a camera its product's values passes through here: the start of the camera, the choice of
/// another product, factory values, imported settings, and each change by the user. GUI thread.
class BWProductInUse : public QObject, private BWConfigManagerListener {
    Q_OBJECT

public:
    /// The controls that can be changed, in the order in which they are sent. Backlight compensation is not among them:
    /// it is stored with a product and never changed.
    static constexpr std::array<int, 12> settings{
        BWSettingHue,          BWSettingContrast,   BWSettingSharpness, BWSettingGain, //
        BWSettingSaturation,   BWSettingBrightness, BWSettingGamma,     BWSettingExposureAbsolute,
        BWSettingWhiteBalance, BWSettingAutoWhite,  BWSettingVideoNorm, BWSettingAutoExposure};

    /// The store must outlive this object.
    explicit BWProductInUse(BWConfigManager &config);

    /// The camera that runs or is being started; null if there is none.
    const BWCameraPtr &camera() const { return m_camera; }
    /// What that camera is taken for; null without a camera.
    BWCameraProductPtr currentProduct() const;
    /// The product that was loaded last; null before the first camera. While another camera starts, this is still the
    /// product of the one before.
    const BWCameraProductPtr &product() const { return m_product; }

    void setCamera(const BWCameraPtr &camera);
    /// Gives the camera what it starts with: its product's resolution and, behind a bridge chip, the video norm.
    /// `done` is called on the camera's thread.
    void prepareStart(BWCamera::Completion done = {});
    /// The camera streams, and gets all other values of its product.
    void cameraStarted();
    /// The camera is being stopped: its resolution stays as it is.
    void cameraStops() { m_streams = false; }

    /// Loads the product of the current camera if another one is loaded.
    void reload();
    /// Sends the product's values to the camera, from one product to another with the video norm. A control without a
    /// value in the product keeps the camera's own.
    void loadProductWithVideoNorm(bool applyNorm);
    /// Another program's values have come in for any of the products.
    void reloadImported();
    /// Sends the value to the current camera, if the control is one of its own, and keeps it in the product.
    void updateSetting(BWCameraSetting &setting, double value);
    /// Keeps the resolution in the product.
    void updateResolution(BWResolution resolution);
    /// The same, and gives it to the running camera.
    void changeResolution(BWResolution resolution);
    /// Stores the product's values; false when they did not reach the disk.
    bool save();
    /// Stores the factory values, and sends all of them to the camera, if it is one of that product.
    bool restoreDefaults();

    /// The code of the automatic mode by which the camera itself moves that control now.
    std::optional<int> modeHolding(int setting) const;

Q_SIGNALS:
    /// The values of product() were loaded; it may be another product.
    void loaded();
    /// A value or the resolution of product() changed.
    void edited();
    /// The running camera has another resolution, or tried to.
    void resolutionChanged();

private:
    void configManagerUpdatedSettings(BWConfigManager &config) override;
    void useProductResolution();
    void sendResolution(BWResolution resolution);
    void send(BWCameraSetting &setting, double value);

    BWConfigManager &m_config;
    BWCameraPtr m_camera;
    BWCameraProductPtr m_product;
    bool m_streams = false;
    int m_resolutionsSent = 0; ///< only the last one is reported
    BWAliveToken m_alive;
};
