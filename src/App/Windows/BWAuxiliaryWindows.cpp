// SPDX-License-Identifier: GPL-3.0-or-later
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
#include "Views/Utils/Windows/BWFrameAutosave.h"
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
      m_repository(repository),
      m_config(repository.configManager()),
      m_texts(repository.localizationManager()),
      m_productInUse(productInUse),
      m_session(session),
      m_openUrl(openUrl),
      m_clock(clock)
{
    const BWMainMenu &menu = window.menu();
    addToMenu(menu.albumManagerMenuItem, m_albums, &BWAuxiliaryWindows::showAlbums);
    addToMenu(menu.settingsMenuItem, m_settings, &BWAuxiliaryWindows::showSettings);
    addToMenu(menu.advancedSettingsMenuItem, m_advancedSettings, &BWAuxiliaryWindows::showAdvancedSettings);
    connect(menu.nextWindow, &QAction::triggered, this, &BWAuxiliaryWindows::activateNextWindow);
    connect(menu.simpleHelpMenuItem, &QAction::triggered, this, &BWAuxiliaryWindows::showHelp);
    connect(menu.registerDebugger, &QAction::triggered, this, &BWAuxiliaryWindows::onEMPIADebugger);
    connect(menu.aboutMenuItem, &QAction::triggered, this, &BWAuxiliaryWindows::showAbout);
}

BWAuxiliaryWindows::~BWAuxiliaryWindows() = default;

void BWAuxiliaryWindows::addToMenu(QAction *item, const std::unique_ptr<BWUtilityPanel> &panel,
                                   void (BWAuxiliaryWindows::*show)())
{
    connect(item, &QAction::triggered, this, [this, &panel, show] {
        if (panel && panel->isVisible())
            panel->hide();
        else
            (this->*show)();
        updateMenu();
    });
}

void BWAuxiliaryWindows::prepare(BWUtilityPanel &panel, BWLocalizationManagerDelegate &texts)
{
    texts.localizeWithManager(m_texts);
    connect(&panel, &BWUtilityPanel::visibilityChanged, this, &BWAuxiliaryWindows::updateMenu);
}

void BWAuxiliaryWindows::showAlbums()
{
    if (!m_albums) {
        auto made = std::make_unique<BWAlbumManagerWindowController>(
            m_repository.albumManager(), m_repository.userDefaults(),
            BWAlbumManagerWindowController::Callbacks{
                m_panels, m_openUrl, [this](const QUrl &file) { Q_EMIT showRequested(file); },
                [this](const QUrl &file) { Q_EMIT compareRequested(file); }, [this] { return m_config.movieChoices(); },
                [this](const BWMovieExport::Choices &choices) { m_config.setMovieChoices(choices); },
                [this](bool isSaving) { Q_EMIT savingChanged(isSaving); }},
            &m_window, m_clock);
        prepare(*made, *made);
        m_albums = std::move(made);
    }
    bringToFront(*m_albums);
}

void BWAuxiliaryWindows::joinPictures(const QList<QUrl> &pictures)
{
    showAlbums();
    albums()->joinPictures(pictures);
}

void BWAuxiliaryWindows::showSettings()
{
    if (!m_settings) {
        auto made = std::make_unique<BWSettingsWindowController>(
            m_config, m_repository.userDefaults(),
            BWSettingsWindowController::Callbacks{*this, [this] { showAdvancedSettings(); }}, &m_window);
        prepare(*made, *made);
        m_config.addListener(made.get());
        m_settings = std::move(made);
        showCameras();
    }
    bringToFront(*m_settings);
}

void BWAuxiliaryWindows::showAdvancedSettings()
{
    if (!m_advancedSettings) {
        auto made = std::make_unique<BWAdvancedSettingsWindowController>(m_productInUse, m_repository.userDefaults(),
                                                                         &m_window, m_clock);
        prepare(*made, *made);
        m_config.addListener(made.get());
        m_advancedSettings = std::move(made);
    }
    bringToFront(*m_advancedSettings);
}

void BWAuxiliaryWindows::showHelp()
{
    if (!m_help) {
        m_help = std::make_unique<BWSimpleHelpWindowController>(
            BWHelpContact::fromFile(u":/contact.json"_s),
            BWSimpleHelpWindowController::Callbacks{m_openUrl, [this] { return m_session.cameras(); },
                                                    [this] { return m_window.menuBar()->actions(); }},
            &m_window);
        m_help->localizeWithManager(m_texts);
    }
    m_help->makeKeyAndOrderFront();
}

void BWAuxiliaryWindows::showAbout()
{
    if (!m_about) {
        m_about = std::make_unique<BWAboutWindowController>(BWLibraryList::ours(), &m_window);
        m_about->localizeWithManager(m_texts);
    }
    m_about->makeKeyAndOrderFront();
}

BWAlbumManagerWindowController *BWAuxiliaryWindows::albums() const
{
    return static_cast<BWAlbumManagerWindowController *>(m_albums.get());
}

BWSettingsWindowController *BWAuxiliaryWindows::settings() const
{
    return static_cast<BWSettingsWindowController *>(m_settings.get());
}

bool BWAuxiliaryWindows::isSaving() const
{
    return m_albums && albums()->isSaving();
}

void BWAuxiliaryWindows::showCameras()
{
    if (m_settings)
        settings()->updateCameras(m_session.cameras(), m_session.currentCamera());
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

/// Those made so far.
QList<BWUtilityPanel *> BWAuxiliaryWindows::panels() const
{
    QList<BWUtilityPanel *> made{m_albums.get(), m_settings.get(), m_advancedSettings.get()};
    made.removeAll(nullptr);
    return made;
}

void BWAuxiliaryWindows::activateNextWindow()
{
    QList<QWidget *> open;
    if (m_window.isVisible())
        open.append(&m_window);
    // All of them: the results of measuring, and the progress of saving, are opened elsewhere.
    for (auto *window : m_window.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        const bool isOne = window->windowType() == Qt::Tool || window->windowType() == Qt::Dialog;
        if (isOne && window->isVisible())
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
    for (BWUtilityPanel *panel : panels()) {
        if (panel->isVisible()) {
            panel->hide();
            m_hidden.append(panel);
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
    if (m_albums)
        m_albums->resetLayout();
    else
        BWFrameAutosave::forget(BWAlbumManagerWindowController::frameName, m_repository.userDefaults());
    if (!m_settings)
        BWFrameAutosave::forget(BWSettingsWindowController::frameName, m_repository.userDefaults());
    if (!m_advancedSettings)
        BWFrameAutosave::forget(BWAdvancedSettingsWindowController::frameName, m_repository.userDefaults());
}

void BWAuxiliaryWindows::updateMenu()
{
    const auto isOpen = [](const std::unique_ptr<BWUtilityPanel> &panel) { return panel && panel->isVisible(); };
    m_window.menu().showOpenWindows({.camera = true,
                                     .albums = isOpen(m_albums),
                                     .settings = isOpen(m_settings),
                                     .advancedSettings = isOpen(m_advancedSettings)});
}

void BWAuxiliaryWindows::changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera)
{
    Q_UNUSED(sender)
    m_session.changeCurrentCamera(camera);
}
