#include "App/Windows/BWAuxiliaryWindows.h"

#include "Model/BWRepository.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Session/BWCameraSession.h"
#include "Model/Settings/BWConfigManager.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Help/BWAboutWindowController.h"
#include "Views/Help/BWHelpContact.h"
#include "Views/Help/BWSimpleHelpWindowController.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Settings/BWAdvancedSettingsWindowController.h"
#include "Views/Settings/BWSettingsWindowController.h"
#include "Views/Technician/BWEMPIADebuggerWindowController.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Activates an open window; shows another without activating it.
void bringToFront(QWidget &window)
{
    if (window.isVisible()) {
        window.raise();
        window.activateWindow();
    } else {
        window.show();
    }
}

} // namespace

BWAuxiliaryWindows::BWAuxiliaryWindows(BWMainWindow &window, BWRepository &repository, BWCameraSession &session,
                                       BWProductInUse &productInUse, const OpenUrl &openUrl, BWClock &clock)
    : m_window(window),
      m_config(repository.configManager()),
      m_texts(repository.localizationManager()),
      m_productInUse(productInUse),
      m_session(session),
      m_albums(std::make_unique<BWAlbumManagerWindowController>(
          repository.albumManager(), repository.userDefaults(),
          BWAlbumManagerWindowController::Callbacks{m_panels, openUrl}, &window, clock)),
      m_settings(std::make_unique<BWSettingsWindowController>(
          m_config, repository.userDefaults(),
          BWSettingsWindowController::Callbacks{*this, [this] { showAdvancedSettings(); }}, &window)),
      m_advancedSettings(std::make_unique<BWAdvancedSettingsWindowController>(productInUse, repository.userDefaults(),
                                                                              &window, clock)),
      m_help(std::make_unique<BWSimpleHelpWindowController>(
          BWHelpContact::fromFile(u":/contact.json"_s),
          BWSimpleHelpWindowController::Callbacks{openUrl, [&session] { return session.cameras(); },
                                                  [&window] { return window.menuBar()->actions(); }},
          &window)),
      m_about(std::make_unique<BWAboutWindowController>(BWLibraryList::ours(), &window))
{
    m_settings->localizeWithManager(m_texts);
    m_help->localizeWithManager(m_texts);
    m_about->localizeWithManager(m_texts);
    m_advancedSettings->localizeWithManager(m_texts);
    m_albums->localizeWithManager(m_texts);
    connect(m_albums.get(), &BWAlbumManagerWindowController::visibilityChanged, this, &BWAuxiliaryWindows::updateMenu);
    connect(m_settings.get(), &BWSettingsWindowController::visibilityChanged, this, &BWAuxiliaryWindows::updateMenu);
    connect(m_advancedSettings.get(), &BWAdvancedSettingsWindowController::visibilityChanged, this,
            &BWAuxiliaryWindows::updateMenu);
    const BWMainMenu &menu = window.menu();
    addToMenu(menu.albumManagerMenuItem, *m_albums, &BWAuxiliaryWindows::showAlbums);
    addToMenu(menu.settingsMenuItem, *m_settings, &BWAuxiliaryWindows::showSettings);
    addToMenu(menu.advancedSettingsMenuItem, *m_advancedSettings, &BWAuxiliaryWindows::showAdvancedSettings);
    connect(menu.nextWindow, &QAction::triggered, this, &BWAuxiliaryWindows::activateNextWindow);
    connect(menu.simpleHelpMenuItem, &QAction::triggered, m_help.get(),
            &BWSimpleHelpWindowController::makeKeyAndOrderFront);
    connect(menu.registerDebugger, &QAction::triggered, this, &BWAuxiliaryWindows::onEMPIADebugger);
    connect(menu.aboutMenuItem, &QAction::triggered, m_about.get(), &BWAboutWindowController::makeKeyAndOrderFront);
}

BWAuxiliaryWindows::~BWAuxiliaryWindows() = default;

void BWAuxiliaryWindows::addToMenu(QAction *item, QWidget &window, void (BWAuxiliaryWindows::*show)())
{
    connect(item, &QAction::triggered, this, [this, &window, show] {
        if (window.isVisible())
            window.hide();
        else
            (this->*show)();
        updateMenu();
    });
}

void BWAuxiliaryWindows::listen()
{
    m_config.addListener(m_settings.get());
    m_config.addListener(m_advancedSettings.get());
}

void BWAuxiliaryWindows::showAlbums()
{
    bringToFront(*m_albums);
}

void BWAuxiliaryWindows::showSettings()
{
    bringToFront(*m_settings);
}

void BWAuxiliaryWindows::showAdvancedSettings()
{
    bringToFront(*m_advancedSettings);
}

void BWAuxiliaryWindows::onEMPIADebugger()
{
    m_registerDebugger = std::make_unique<BWEMPIADebuggerWindowController>(
        [&productInUse = m_productInUse] { return productInUse.camera(); }, &m_window);
    m_registerDebugger->localizeWithManager(m_texts);
    placeBWToolWindow(*m_registerDebugger, m_window);
    m_registerDebugger->show();
    m_registerDebugger->raise();
    m_registerDebugger->activateWindow();
}

void BWAuxiliaryWindows::activateNextWindow()
{
    QList<QWidget *> open;
    for (QWidget *window :
         std::initializer_list<QWidget *>{&m_window, m_albums.get(), m_settings.get(), m_advancedSettings.get()}) {
        if (window->isVisible())
            open.append(window);
    }
    if (open.isEmpty())
        return;
    QWidget *next = open[(open.indexOf(QApplication::activeWindow()) + 1) % open.size()];
    next->raise();
    next->activateWindow();
}

void BWAuxiliaryWindows::hideAll()
{
    for (QWidget *window :
         std::initializer_list<QWidget *>{m_albums.get(), m_settings.get(), m_advancedSettings.get()}) {
        if (window->isVisible()) {
            window->hide();
            m_hidden.append(window);
        }
    }
}

void BWAuxiliaryWindows::showHidden()
{
    for (QWidget *window : std::exchange(m_hidden, {}))
        window->show();
}

void BWAuxiliaryWindows::resetLayout()
{
    m_albums->resetLayout();
}

void BWAuxiliaryWindows::updateMenu()
{
    m_window.menu().showOpenWindows({.camera = true,
                                     .albums = m_albums->isVisible(),
                                     .settings = m_settings->isVisible(),
                                     .advancedSettings = m_advancedSettings->isVisible()});
}

void BWAuxiliaryWindows::changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera)
{
    Q_UNUSED(sender)
    m_session.changeCurrentCamera(camera);
}
