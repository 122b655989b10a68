// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Settings/BWSettingsWindowController.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Settings/BWSettingsForm.h"

#include <QComboBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

using namespace Qt::StringLiterals;

BWSettingsWindowController::BWSettingsWindowController(BWConfigManager &config, BWUserDefaults &defaults,
                                                       Callbacks callbacks, QWidget *cameraWindow)
    : BWUtilityPanel(cameraWindow), m_config(config), m_callbacks(std::move(callbacks)), m_form(new BWSettingsForm)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(m_form);
    connectControls();
    reloadSettings();
    rememberFrame(frameName, defaults);
}

void BWSettingsWindowController::connectControls()
{
    const auto onActivated = [this](QComboBox *popUp, void (BWSettingsWindowController::*handler)(int)) {
        connect(popUp, &QComboBox::activated, this, handler);
    };
    connect(m_form->cameraTypes, &QComboBox::activated, this, &BWSettingsWindowController::onCameraTypeChanged);
    onActivated(m_form->cameraProducts, &BWSettingsWindowController::onCameraProductChanged);
    onActivated(m_form->videoHardware, &BWSettingsWindowController::onCameraButtonSaves);
    onActivated(m_form->snapshotOnClick, &BWSettingsWindowController::onSaveSnapshotOnClick);
    onActivated(m_form->recentFiles, &BWSettingsWindowController::onRecentFiles);
    onActivated(m_form->rememberLayout, &BWSettingsWindowController::onRememberLayout);
    connect(m_form->restoreLayout, &QPushButton::clicked, this, &BWSettingsWindowController::onRestoreLayout);
    connect(m_form->advancedSettings, &QPushButton::clicked, this, &BWSettingsWindowController::onAdvancedSettings);
}

void BWSettingsWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    m_manager = &manager;
    setWindowTitle(manager.text(u"settings_window"_s, u"window_title"_s, u"Settings"_s));
    m_form->localizeWithManager(manager);
    updateUsualTitles();
}

QString BWSettingsWindowController::localizeCameraName(const BWCamera &camera) const
{
    return BWDisplayNames::camera(*camera.detectedCamera()->cameraDescription(), *m_manager);
}

QString BWSettingsWindowController::localizeProductName(const BWCameraProduct &product) const
{
    return BWDisplayNames::product(product, *m_manager);
}

void BWSettingsWindowController::updateUsualTitles()
{
    QStringList titles;
    const QList<BWCameraDescriptionPtr> cameras = BWCameraDetector::supportedDescriptions();
    for (const BWCameraDescriptionPtr &camera : cameras) {
        const QString name = BWDisplayNames::camera(*camera, *m_manager);
        titles.append(BWDisplayNames::unique({name, name}).last());
    }
    for (const BWCameraProductPtr &product : m_config.allProducts())
        titles.append(localizeProductName(*product));
    m_form->setUsualTitles(titles);
}

void BWSettingsWindowController::updateCameras(const QList<BWCameraPtr> &cameras, const BWCameraPtr &currentCamera)
{
    const QStringList titles = BWDisplayNames::cameras(cameras, *m_manager);
    m_cameraMapping.clear();
    for (qsizetype i = 0; i < cameras.size(); ++i)
        m_cameraMapping.insert(titles[i], cameras[i]);
    m_form->showCameras(titles, static_cast<int>(cameras.indexOf(currentCamera)));
    updateProductForCamera(currentCamera);
}

void BWSettingsWindowController::updateProductForCamera(const BWCameraPtr &camera)
{
    m_cameraIdentifier = camera ? camera->identifierForProducts() : QString();
    m_products = m_config.productsByCameraIdentifier(m_cameraIdentifier);
    QStringList titles;
    for (const BWCameraProductPtr &product : std::as_const(m_products))
        titles.append(localizeProductName(*product));
    m_form->showProducts(titles, currentProductIndex());
}

int BWSettingsWindowController::currentProductIndex() const
{
    return static_cast<int>(m_products.indexOf(m_config.currentProductForCameraIdentifier(m_cameraIdentifier)));
}

void BWSettingsWindowController::reloadSettings()
{
    m_form->rememberLayout->setCurrentIndex(m_config.rememberLayout() ? 0 : 1);
    m_form->videoHardware->setCurrentIndex(m_config.saveVideoOnHardwareButton() ? 1 : 0);
    m_form->snapshotOnClick->setCurrentIndex(m_config.saveSnapshotOnClick() ? 0 : 1);
    m_form->recentFiles->setCurrentIndex(m_config.showInRecentFiles() ? 0 : 1);
}

void BWSettingsWindowController::onCameraTypeChanged()
{
    if (const BWCameraPtr camera = m_cameraMapping.value(m_form->cameraTypes->currentText()).lock())
        m_callbacks.modelDelegate.changeCurrentCamera(*this, camera);
}

void BWSettingsWindowController::onCameraProductChanged(int index)
{
    // Under the product's own type. A copy, because the list may change during the notification.
    if (const BWCameraProductPtr product = m_products.value(index))
        m_config.setCurrentProductIdentifier(product->identifier(), product->cameraTypeIdentifier());
}

void BWSettingsWindowController::onRestoreLayout()
{
    m_config.resetLayout();
}

void BWSettingsWindowController::onRememberLayout(int index)
{
    m_config.setRememberLayout(index == 0);
}

void BWSettingsWindowController::onCameraButtonSaves(int index)
{
    m_config.setSaveVideoOnHardwareButton(index == 1);
}

void BWSettingsWindowController::onSaveSnapshotOnClick(int index)
{
    m_config.setSaveSnapshotOnClick(index == 0);
}

void BWSettingsWindowController::onRecentFiles(int index)
{
    m_config.setShowInRecentFiles(index == 0);
}

void BWSettingsWindowController::onAdvancedSettings()
{
    m_callbacks.showAdvancedSettings();
}

void BWSettingsWindowController::configManagerUpdatedSettings(BWConfigManager &configManager)
{
    // mustResetLayout() holds only during this call; the rest waits until all listeners were notified.
    BWMainQueue::post(m_alive, [this, reset = configManager.mustResetLayout()] { showChange(reset); });
}

void BWSettingsWindowController::showChange(bool mustResetLayout)
{
    m_form->selectProduct(currentProductIndex());
    if (mustResetLayout)
        resetLayout();
    reloadSettings();
}
