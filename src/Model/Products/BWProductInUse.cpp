// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Products/BWProductInUse.h"

#include "Model/Settings/BWConfigManager.h"

#include <utility>

BWProductInUse::BWProductInUse(BWConfigManager &config) : m_config(config)
{
    m_config.addListener(this);
}

BWCameraProductPtr BWProductInUse::currentProduct() const
{
    return m_camera ? m_config.currentProductForCameraIdentifier(m_camera->identifierForProducts()) : nullptr;
}

void BWProductInUse::setCamera(const BWCameraPtr &camera)
{
    m_camera = camera;
    m_streams = false;
}

void BWProductInUse::prepareStart(BWCamera::Completion done)
{
    const BWCameraProductPtr product = currentProduct();
    const BWResolution resolution = product ? product->currentResolution() : m_camera->defaultResolution();
    auto *bridge = dynamic_cast<BWEmpiaCamera *>(m_camera.get());
    m_camera->setResolution(resolution, bridge ? BWCamera::Completion() : done);
    // The camera carries out both in this order.
    if (bridge)
        bridge->setVideoNorm(static_cast<int>(product ? product->valueForSetting(BWSettingVideoNorm).value_or(0) : 0),
                             std::move(done));
}

void BWProductInUse::cameraStarted()
{
    m_streams = true;
    m_product.reset();
    reload();
}

void BWProductInUse::reload()
{
    if (!m_camera)
        return;
    const BWCameraProductPtr previous = std::exchange(m_product, currentProduct());
    if (!previous || previous != m_product)
        loadProductWithVideoNorm(previous != nullptr);
}

void BWProductInUse::loadProductWithVideoNorm(bool applyNorm)
{
    if (!m_camera)
        return;
    for (const int code : settings) {
        const auto setting = m_camera->settingForIdentifier(code);
        const auto value = m_product ? m_product->valueForSetting(code) : std::nullopt;
        if (!setting || !value || !m_camera->detectedCamera()->cameraDescription()->acceptsSetting(code))
            continue;
        if (code != BWSettingVideoNorm || applyNorm)
            send(*setting, *value);
        else
            setting->setValue(*value);
    }
    Q_EMIT loaded();
    if (applyNorm) // else the camera has just started with the product's resolution
        useProductResolution();
}

void BWProductInUse::reloadImported()
{
    reload();
    loadProductWithVideoNorm(true);
}

void BWProductInUse::send(BWCameraSetting &setting, double value)
{
    // Before it is sent, so as not to overwrite what the camera answers.
    setting.setValue(value);
    if (setting.identifier() != BWSettingVideoNorm)
        m_camera->setSetting(setting.identifier(), value);
    else if (auto *bridge = dynamic_cast<BWEmpiaCamera *>(m_camera.get()))
        bridge->setVideoNorm(static_cast<int>(value), {});
}

void BWProductInUse::updateSetting(BWCameraSetting &setting, double value)
{
    // While one camera takes the place of another, the controls are still those of the old one.
    if (m_camera && m_camera->settingForIdentifier(setting.identifier()).get() == &setting)
        send(setting, value);
    if (m_product)
        m_product->setValue(value, setting.identifier());
    Q_EMIT edited();
}

void BWProductInUse::updateResolution(BWResolution resolution)
{
    if (!m_product)
        return;
    m_product->setCurrentResolution(resolution);
    Q_EMIT edited();
}

void BWProductInUse::changeResolution(BWResolution resolution)
{
    updateResolution(resolution);
    if (m_streams)
        sendResolution(resolution);
}

void BWProductInUse::useProductResolution()
{
    // Also when the camera has that size: another one may be on its way. A recording would end.
    const BWCameraProductPtr product = currentProduct();
    if (m_streams && product && !m_camera->recording())
        sendResolution(product->currentResolution());
}

void BWProductInUse::sendResolution(BWResolution resolution)
{
    m_camera->setResolution(resolution, [this, number = ++m_resolutionsSent, alive = m_alive.watch()] {
        BWMainQueue::post(alive, [this, number] {
            if (m_streams && number == m_resolutionsSent)
                Q_EMIT resolutionChanged();
        });
    });
}

bool BWProductInUse::save()
{
    return m_product && m_product->save();
}

bool BWProductInUse::restoreDefaults()
{
    if (!m_product)
        return false;
    m_product->setDefaults();
    const bool saved = m_product->save();
    // Not by way of reload(): the product is the same, its values are not. A camera of another product, which is about
    // to start, gets its own values then.
    if (currentProduct() == m_product)
        loadProductWithVideoNorm(true);
    return saved;
}

std::optional<int> BWProductInUse::modeHolding(int setting) const
{
    const std::optional<int> mode = BWCameraSetting::automaticModeFor(setting);
    if (!mode || !m_camera || !m_camera->settingForIdentifier(setting))
        return std::nullopt;
    const auto state = m_camera->settingForIdentifier(*mode);
    return state && state->value() > 0 ? mode : std::nullopt;
}

void BWProductInUse::configManagerUpdatedSettings(BWConfigManager &config)
{
    Q_UNUSED(config)
    BWMainQueue::post(m_alive, [this] { reload(); });
}
