// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWClock.h"
#include "Views/Settings/BWSettingsWindowController.h"
#include "Views/Utils/BWFilePanels.h"

#include <functional>
#include <memory>
#include <QList>
#include <QObject>
#include <QUrl>

class BWAboutWindowController;
class BWAlbumManagerWindowController;
class BWCameraSession;
class BWConfigManager;
class BWEMPIADebuggerWindowController;
class BWLocalizationManager;
class BWLocalizationManagerDelegate;
class BWMainWindow;
class BWProductInUse;
class BWRepository;
class BWSettingsWindowController;
class BWSimpleHelpWindowController;
class BWUtilityPanel;
class QAction;

/// The windows beside the camera window: makes each when it is first wanted, shows and hides them from the camera window's
/// menu, and puts them in their places. GUI thread.
class BWAuxiliaryWindows : public QObject, private BWSettingsWindowControllerDelegate {
    Q_OBJECT

public:
    /// Opens a file or page with the desktop's program for it; false if there is none.
    using OpenUrl = std::function<bool(const QUrl &)>;

    /// All must outlive this object.
    BWAuxiliaryWindows(BWMainWindow &window, BWRepository &repository, BWCameraSession &session,
                       BWProductInUse &productInUse, const OpenUrl &openUrl, BWClock &clock);
    ~BWAuxiliaryWindows() override;

    /// Brings it to the front; activates it only if it was open already.
    void showAlbums();
    /// Offers to make a movie of pictures, in the album window.
    void joinPictures(const QList<QUrl> &pictures);
    void showSettings();
    void showAdvancedSettings();
    /// Opens a new register debugger in place of the last one.
    void onEMPIADebugger();
    /// Activates the next of the open windows, the camera window being one of them. Not every desktop reaches panels
    /// beside a window when the user steps through the windows by keyboard.
    void activateNextWindow();
    /// While there is no camera.
    void hideAll();
    /// Those that `hideAll` found open.
    void showHidden();
    /// Puts the album window in its place, and sees that windows not made yet will come to theirs; the others do that
    /// themselves.
    void resetLayout();
    /// The attached cameras, or which of them is live, changed.
    void showCameras();
    /// The check marks in the menu.
    void updateMenu();

    /// Whether files of an album are being saved elsewhere.
    bool isSaving() const;

Q_SIGNALS:
    /// A file of the current album is to be shown in the main window.
    void showRequested(const QUrl &file);
    /// One is to be compared with the live image.
    void compareRequested(const QUrl &file);
    /// Files of an album begin to be saved elsewhere, or are.
    void savingChanged(bool isSaving);

private:
    void changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera) override;
    void addToMenu(QAction *item, const std::unique_ptr<BWUtilityPanel> &panel, void (BWAuxiliaryWindows::*show)());
    void prepare(BWUtilityPanel &panel, BWLocalizationManagerDelegate &texts);
    void showHelp();
    void showAbout();
    QList<BWUtilityPanel *> panels() const;
    BWAlbumManagerWindowController *albums() const;
    BWSettingsWindowController *settings() const;

    BWMainWindow &m_window;
    BWRepository &m_repository;
    BWConfigManager &m_config;
    BWLocalizationManager &m_texts;
    BWProductInUse &m_productInUse;
    BWCameraSession &m_session;
    OpenUrl m_openUrl;
    BWClock &m_clock;
    BWDialogFilePanels m_panels;
    std::unique_ptr<BWUtilityPanel> m_albums;
    std::unique_ptr<BWUtilityPanel> m_settings;
    std::unique_ptr<BWUtilityPanel> m_advancedSettings;
    std::unique_ptr<BWSimpleHelpWindowController> m_help;
    std::unique_ptr<BWAboutWindowController> m_about;
    std::unique_ptr<BWEMPIADebuggerWindowController> m_registerDebugger;
    QList<QWidget *> m_hidden;
};
