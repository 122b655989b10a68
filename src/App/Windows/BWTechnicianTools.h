#pragma once

#include "BWACUDriver/BWCamera.h"

#include <functional>
#include <memory>
#include <QObject>

class BWEMPIADebuggerWindowController;
class BWLocalizationManager;
class BWMainWindow;

/// What the menu of the technician's tools opens besides the grid debugger. GUI thread.
class BWTechnicianTools : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    BWTechnicianTools(BWMainWindow &window, BWLocalizationManager &texts, std::function<BWCameraPtr()> currentCamera);
    ~BWTechnicianTools() override;

    /// Opens a new register debugger in place of the last one.
    void onEMPIADebugger();

private:
    BWMainWindow &m_window;
    BWLocalizationManager &m_texts;
    std::function<BWCameraPtr()> m_currentCamera;
    std::unique_ptr<BWEMPIADebuggerWindowController> m_empiaDebuggerWindowController;
};
