#include "Views/Settings/BWAdvancedSettingsWindowController.h"

#include "Model/Products/BWAutomaticModes.h"
#include "Model/Products/BWSettingSender.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWMainQueue.h"
#include "Views/Settings/BWAutoSettingViewController.h"
#include "Views/Settings/BWNormSettingViewController.h"
#include "Views/Settings/BWNumericSettingViewController.h"
#include "Views/Utils/BWAccessibility.h"
#include "Views/Utils/BWControls.h"

#include <array>
#include <QGridLayout>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int rows = 4;
constexpr int columns = 3;
constexpr double followSeconds = 1;

// Column by column. Backlight compensation is not among them: it is stored with a product and never changed.
constexpr std::array<int, rows * columns> settingsOrderByColumn{
    BWSettingHue,          BWSettingContrast,   BWSettingSharpness, BWSettingGain, //
    BWSettingSaturation,   BWSettingBrightness, BWSettingGamma,     BWSettingExposureAbsolute,
    BWSettingWhiteBalance, BWSettingAutoWhite,  BWSettingVideoNorm, BWSettingAutoExposure};

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

BWAdvancedSettingsWindowController::BWAdvancedSettingsWindowController(BWConfigManager &config,
                                                                       BWUserDefaults &defaults,
                                                                       CurrentCamera currentCamera,
                                                                       QWidget *cameraWindow, BWClock &clock)
    : BWUtilityPanel(cameraWindow),
      m_config(config),
      m_currentCamera(std::move(currentCamera)),
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
    rememberFrame(u"advanced_settings"_s, defaults);
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
    auto *line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
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
    column->addWidget(line);
    column->addLayout(buttons);
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
}

void BWAdvancedSettingsWindowController::prepare()
{
    auto *grid = static_cast<QGridLayout *>(m_settingsView->layout());
    for (std::size_t i = 0; i < settingsOrderByColumn.size(); ++i) {
        const int setting = settingsOrderByColumn[i];
        BWSettingViewController *controller = makeController(setting, *m_texts);
        controller->setSettingChangedBlock(
            [this](BWCameraSetting &changed, double value) { updateSetting(changed, value); });
        controller->setSettingIdentifier(setting);
        controller->enable(false);
        m_settingControllers.append(controller);
        m_settingControllersBySetting.insert(setting, controller);
        grid->addWidget(controller, static_cast<int>(i) % rows, static_cast<int>(i) / rows);
    }
    updateProductName();
    // The buttons were there before the controls.
    setTabOrder(m_settingControllers.last(), m_restoreDefaultsButton);
    setTabOrder(m_restoreDefaultsButton, m_saveAsDefaultButton);
    m_settingControllers.first()->setFocus();
}

void BWAdvancedSettingsWindowController::setCurrentCamera(const BWCameraPtr &)
{
    m_product.reset();
    reload();
}

BWCameraProductPtr BWAdvancedSettingsWindowController::productFor(const BWCamera &camera) const
{
    return m_config.currentProductForCameraIdentifier(camera.identifierForProducts());
}

void BWAdvancedSettingsWindowController::reload()
{
    const BWCameraPtr camera = m_currentCamera();
    if (!camera)
        return;
    const BWCameraProductPtr previous = std::exchange(m_product, productFor(*camera));
    if (!previous || previous != m_product)
        loadProductWithVideoNorm(previous != nullptr);
}

void BWAdvancedSettingsWindowController::loadProductWithVideoNorm(bool applyNorm)
{
    const BWCameraPtr camera = m_currentCamera();
    if (!camera)
        return;
    for (BWSettingViewController *controller : std::as_const(m_settingControllers)) {
        const int setting = controller->settingIdentifier();
        const auto live = camera->settingForIdentifier(setting);
        if (!live || !camera->detectedCamera()->cameraDescription()->acceptsSetting(setting)) {
            controller->setSetting(nullptr); // that of another camera, which may well be alive
            controller->enable(false);
            continue;
        }
        controller->enable(true);
        const auto value = m_product ? m_product->valueForSetting(setting) : std::nullopt;
        if (value)
            live->setValue(*value);
        controller->setSetting(live);
        if (value && (setting != BWSettingVideoNorm || applyNorm))
            controller->apply();
    }
    updateHolds();
    updateProductName();
    clearNotice();
    if (applyNorm) // or the camera has just started with what the product has
        Q_EMIT productReplaced();
}

void BWAdvancedSettingsWindowController::updateResolution(BWResolution resolution)
{
    if (!m_product)
        return;
    m_product->setCurrentResolution(resolution);
    clearNotice();
}

void BWAdvancedSettingsWindowController::updateSetting(BWCameraSetting &setting, double value)
{
    // While one camera takes the place of another, the controls are still those of the one that goes.
    const BWCameraPtr camera = m_currentCamera();
    if (camera && camera->settingForIdentifier(setting.identifier()).get() == &setting)
        BWSettingSender::send(*camera, setting, value);
    if (m_product)
        m_product->setValue(value, setting.identifier());
    updateHolds();
    clearNotice();
    // A camera needs its time to answer; until then it would seem to put the old value back.
    if (m_following)
        followLater();
}

void BWAdvancedSettingsWindowController::onSaveAsDefault()
{
    if (!m_product)
        return;
    showSaved(m_product->save());
}

void BWAdvancedSettingsWindowController::onRestoreDefaults()
{
    if (!m_product)
        return;
    m_product->setDefaults();
    const bool saved = m_product->save();
    // Not by way of reload(): the product is the same, its values are not. A camera of another product, which is about
    // to start, gets its own values then.
    if (const BWCameraPtr camera = m_currentCamera(); camera && productFor(*camera) == m_product)
        loadProductWithVideoNorm(true);
    showSaved(saved);
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
    const BWCameraPtr camera = m_currentCamera();
    for (BWSettingViewController *controller : std::as_const(m_settingControllers)) {
        const auto mode = camera && controller->setting()
            ? BWAutomaticModes::modeHolding(controller->settingIdentifier(), *camera)
            : std::nullopt;
        const BWSettingViewController *holder = mode ? controllerForSetting(*mode) : nullptr;
        controller->setHeldBy(holder ? holder->localizedName() : QString());
    }
}

void BWAdvancedSettingsWindowController::updateProductName()
{
    for (QPushButton *button : {m_saveAsDefaultButton, m_restoreDefaultsButton})
        button->setEnabled(m_product != nullptr);
    m_productName->setText(m_product ? m_texts->text(u"camera_product"_s, m_product->identifier(), m_product->name())
                                     : QString());
}

void BWAdvancedSettingsWindowController::showSaved(bool saved)
{
    m_notice->announce(
        saved ? m_texts->text(u"advanced_settings_window"_s, u"saved_notice"_s, u"Saved"_s)
              : m_texts->text(u"advanced_settings_window"_s, u"not_saved_notice"_s, u"Could not be saved"_s));
}

void BWAdvancedSettingsWindowController::clearNotice()
{
    m_notice->clear();
}

void BWAdvancedSettingsWindowController::configManagerUpdatedSettings(BWConfigManager &config)
{
    // A pulse: it has to be read now.
    const bool mustResetLayout = config.mustResetLayout();
    BWMainQueue::post(m_alive, [this, mustResetLayout] {
        reload();
        if (mustResetLayout)
            resetLayout();
    });
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
