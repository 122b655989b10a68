#include "App/Windows/BWTechnicianTools.h"

#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Technician/BWEMPIADebuggerWindowController.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QAction>
#include <utility>

BWTechnicianTools::BWTechnicianTools(BWMainWindow &window, BWLocalizationManager &texts,
                                     std::function<BWCameraPtr()> currentCamera)
    : m_window(window), m_texts(texts), m_currentCamera(std::move(currentCamera))
{
    connect(window.menu().registerDebugger, &QAction::triggered, this, &BWTechnicianTools::onEMPIADebugger);
}

BWTechnicianTools::~BWTechnicianTools() = default;

void BWTechnicianTools::onEMPIADebugger()
{
    m_empiaDebuggerWindowController = std::make_unique<BWEMPIADebuggerWindowController>(m_currentCamera, &m_window);
    m_empiaDebuggerWindowController->localizeWithManager(m_texts);
    placeBWToolWindow(*m_empiaDebuggerWindowController, m_window);
    m_empiaDebuggerWindowController->show();
    m_empiaDebuggerWindowController->raise();
    m_empiaDebuggerWindowController->activateWindow();
}
