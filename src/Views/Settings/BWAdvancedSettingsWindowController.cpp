// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Settings/BWAdvancedSettingsWindowController.h"

#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Settings/BWNumericSettingViewController.h"
#include "Views/Settings/BWPopUpSettingViewController.h"
#include "Views/Utils/BWAccessibility.h"
#include "Views/Utils/BWControls.h"

#include <QGridLayout>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The settings fill one column after the other.
constexpr int rows = 4;
constexpr int columns = 3;
constexpr double followSeconds = 1;

BWSettingViewController *makeController(int setting, BWLocalizationManager &texts)
{
    switch (setting) {
    case BWSettingAutoWhite:
    case BWSettingAutoExposure:
        return new BWAutoSettingViewController(texts);
    case BWSettingVideoNorm:
        return new BWNormSettingViewController(texts);
    default:
        return new BWNumericSettingViewController(texts);
    }
}

} // namespace

BWAdvancedSettingsWindowController::BWAdvancedSettingsWindowController(BWProductInUse &productInUse,
                                                                       BWUserDefaults &defaults, QWidget *cameraWindow,
                                                                       BWClock &clock)
    : BWUtilityPanel(cameraWindow),
      m_productInUse(productInUse),
      m_clock(clock),
      m_settingsView(new QWidget),
      m_productName(new BWVerticallyCenteringTextFieldCell),
      m_notice(new BWAnnouncement),
      m_saveAsDefaultButton(new BWResizingButton),
      m_restoreDefaultsButton(new BWResizingButton)
{
    layOut();
    connect(m_saveAsDefaultButton, &QPushButton::clicked, this, &BWAdvancedSettingsWindowController::onSaveAsDefault);
    connect(m_restoreDefaultsButton, &QPushButton::clicked, this,
            &BWAdvancedSettingsWindowController::onRestoreDefaults);
    connect(&productInUse, &BWProductInUse::loaded, this, &BWAdvancedSettingsWindowController::showProduct);
    connect(&productInUse, &BWProductInUse::edited, this, &BWAdvancedSettingsWindowController::showChange);
    rememberFrame(frameName, defaults);
}

void BWAdvancedSettingsWindowController::layOut()
{
    constexpr int margin = BWSettingViewController::margin;
    auto *grid = new QGridLayout(m_settingsView);
    grid->setContentsMargins(0, margin / 2, margin, margin / 2); // the cells have their own margin on the left
    grid->setSpacing(0);
    for (int column = 0; column < columns; ++column)
        grid->setColumnStretch(column, 1);
    for (int row = 0; row < rows; ++row)
        grid->setRowStretch(row, 1);

    QFont bold = font();
    bold.setBold(true);
    m_productName->setFont(bold);
    m_productName->setContentsMargins(margin, margin, margin, 0);
    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(margin, margin * 3 / 5, margin, margin * 3 / 5);
    buttons->setSpacing(margin / 2);
    buttons->addWidget(m_notice, 1);
    buttons->addWidget(m_restoreDefaultsButton);
    buttons->addWidget(m_saveAsDefaultButton);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_productName);
    column->addWidget(m_settingsView, 1);
    column->addWidget(new BWLine(Qt::Horizontal));
    column->addLayout(buttons);
}

BWAdvancedSettingsWindowController::~BWAdvancedSettingsWindowController()
{
    hide(); // a field that loses the keyboard takes over what was typed, which needs all of this
}

void BWAdvancedSettingsWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    m_texts = &manager;
    setWindowTitle(manager.text(u"advanced_settings_window"_s, u"window_title"_s, u"Advanced settings"_s));
    m_saveAsDefaultButton->setTitle(
        manager.text(u"advanced_settings_window"_s, u"save_as_defaults_button"_s, u"Save as defaults"_s));
    m_saveAsDefaultButton->setToolTip(manager.text(
        u"advanced_settings_window"_s, u"save_as_defaults_tooltip"_s,
        u"Cameras of this product start with these values and the resolution last chosen for it from now on"_s));
    m_restoreDefaultsButton->setTitle(manager.text(u"advanced_settings_window"_s, u"restore_factory_settings_button"_s,
                                                   u"Restore factory settings"_s));
    m_restoreDefaultsButton->setToolTip(
        manager.text(u"advanced_settings_window"_s, u"restore_factory_settings_tooltip"_s,
                     u"Sets all values as they were when the camera was new, and saves them as defaults"_s));
    for (QPushButton *button : {m_saveAsDefaultButton, m_restoreDefaultsButton})
        button->setAccessibleDescription(button->toolTip());
    prepare();
    if (m_productInUse.camera())
        showProduct();
}

void BWAdvancedSettingsWindowController::prepare()
{
    auto *grid = static_cast<QGridLayout *>(m_settingsView->layout());
    for (const int setting : BWProductInUse::settings) {
        const int cell = static_cast<int>(m_settingControllers.size());
        BWSettingViewController *controller = makeController(setting, *m_texts);
        controller->setSettingChangedBlock(
            [this](BWCameraSetting &changed, double value) { updateSetting(changed, value); });
        controller->setSettingIdentifier(setting);
        controller->enable(false);
        m_settingControllers.append(controller);
        m_settingControllersBySetting.insert(setting, controller);
        grid->addWidget(controller, cell % rows, cell / rows);
    }
    updateProductName();
    // The buttons were there before the controls.
    setTabOrder(m_settingControllers.last(), m_restoreDefaultsButton);
    setTabOrder(m_restoreDefaultsButton, m_saveAsDefaultButton);
    m_settingControllers.first()->setFocus();
}

void BWAdvancedSettingsWindowController::showProduct()
{
    const BWCameraPtr &camera = m_productInUse.camera();
    for (BWSettingViewController *controller : std::as_const(m_settingControllers)) {
        const int code = controller->settingIdentifier();
        const bool accepted = camera->detectedCamera()->cameraDescription()->acceptsSetting(code);
        const auto setting = accepted ? camera->settingForIdentifier(code) : nullptr;
        if (setting)
            controller->enable(true);
        controller->setSetting(setting); // null too: the last camera may still be there
        if (!setting)
            controller->enable(false);
    }
    updateProductName();
    showChange();
}

void BWAdvancedSettingsWindowController::showChange()
{
    updateHolds();
    m_notice->clear();
    // Until a slow camera answers, its old value would seem to come back.
    if (m_following)
        followLater();
}

void BWAdvancedSettingsWindowController::setCurrentCamera(const BWCameraPtr &camera)
{
    m_productInUse.setCamera(camera);
    m_productInUse.cameraStarted();
}

void BWAdvancedSettingsWindowController::reload()
{
    m_productInUse.reload();
}

void BWAdvancedSettingsWindowController::loadProductWithVideoNorm(bool applyNorm)
{
    m_productInUse.loadProductWithVideoNorm(applyNorm);
}

void BWAdvancedSettingsWindowController::updateResolution(BWResolution resolution)
{
    m_productInUse.updateResolution(resolution);
}

void BWAdvancedSettingsWindowController::updateSetting(BWCameraSetting &setting, double value)
{
    m_productInUse.updateSetting(setting, value);
}

void BWAdvancedSettingsWindowController::onSaveAsDefault()
{
    showSaved(m_productInUse.save());
}

void BWAdvancedSettingsWindowController::onRestoreDefaults()
{
    showSaved(m_productInUse.restoreDefaults());
}

void BWAdvancedSettingsWindowController::follow()
{
    for (BWSettingViewController *controller : std::as_const(m_settingControllers))
        controller->follow();
    updateHolds();
}

void BWAdvancedSettingsWindowController::followLater()
{
    if (m_following)
        m_following->cancel();
    m_following = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            follow();
            followLater();
        },
        followSeconds, m_clock);
}

void BWAdvancedSettingsWindowController::updateHolds()
{
    for (BWSettingViewController *controller : std::as_const(m_settingControllers)) {
        const auto mode =
            controller->setting() ? m_productInUse.modeHolding(controller->settingIdentifier()) : std::nullopt;
        const BWSettingViewController *holder = mode ? controllerForSetting(*mode) : nullptr;
        controller->setHeldBy(holder ? holder->localizedName() : QString());
    }
}

void BWAdvancedSettingsWindowController::updateProductName()
{
    const BWCameraProductPtr &product = m_productInUse.product();
    for (QPushButton *button : {m_saveAsDefaultButton, m_restoreDefaultsButton})
        button->setEnabled(product != nullptr);
    m_productName->setText(product ? BWDisplayNames::product(*product, *m_texts) : QString());
}

void BWAdvancedSettingsWindowController::showSaved(bool saved)
{
    m_notice->announce(
        saved ? m_texts->text(u"advanced_settings_window"_s, u"saved_notice"_s, u"Saved"_s)
              : m_texts->text(u"advanced_settings_window"_s, u"not_saved_notice"_s, u"Could not be saved"_s));
}

void BWAdvancedSettingsWindowController::configManagerUpdatedSettings(BWConfigManager &config)
{
    // Valid only during this call.
    if (config.mustResetLayout())
        BWMainQueue::post(m_alive, [this] { resetLayout(); });
}

void BWAdvancedSettingsWindowController::showEvent(QShowEvent *event)
{
    BWUtilityPanel::showEvent(event);
    follow();
    followLater();
}

void BWAdvancedSettingsWindowController::hideEvent(QHideEvent *event)
{
    BWUtilityPanel::hideEvent(event);
    if (const auto following = std::exchange(m_following, {}))
        following->cancel();
}
