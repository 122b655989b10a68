#include "BWAuxiliaryWindows.h"

#include "Model/BWRepository.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/BWMainMenu.h"
#include "Views/BWMainWindow.h"

#include <QAction>
#include <utility>

BWAuxiliaryWindows::BWAuxiliaryWindows(BWMainWindow &window, BWRepository &repository,
                                       std::function<void(const QUrl &)> openUrl, BWClock &clock)
    : m_window(window),
      m_albums(std::make_unique<BWAlbumManagerWindowController>(
          repository.albumManager(), repository.userDefaults(),
          BWAlbumManagerWindowController::Surroundings{m_panels, std::move(openUrl)}, &window, clock))
{
    m_albums->localizeWithManager(repository.localizationManager());
    connect(m_albums.get(), &BWAlbumManagerWindowController::visibilityChanged, this, &BWAuxiliaryWindows::updateMenu);
    connect(window.menu().albumManagerMenuItem, &QAction::triggered, this, &BWAuxiliaryWindows::toggleAlbums);
}

BWAuxiliaryWindows::~BWAuxiliaryWindows() = default;

void BWAuxiliaryWindows::showAlbums()
{
    if (m_albums->isVisible()) {
        m_albums->raise();
        m_albums->activateWindow();
        return;
    }
    place();
    m_albums->show();
}

void BWAuxiliaryWindows::toggleAlbums()
{
    if (m_albums->isVisible())
        m_albums->hide();
    else
        showAlbums();
    updateMenu();
}

void BWAuxiliaryWindows::hideAll()
{
    m_albums->hide();
}

void BWAuxiliaryWindows::resetLayout()
{
    m_mustPlace = true;
    if (m_albums->isVisible())
        place();
}

/// Only now is it certain where the camera window is, its frame included.
void BWAuxiliaryWindows::place()
{
    if (std::exchange(m_mustPlace, false))
        m_albums->resetLayout(m_window);
}

void BWAuxiliaryWindows::updateMenu()
{
    m_window.menu().showOpenWindows(true, m_albums->isVisible());
}
