// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Albums/BWRecentFiles.h"
#include "Model/Settings/BWConfigManager.h"
#include "Views/Albums/BWFileActions.h"

#include <functional>
#include <QObject>

class BWCaptureController;
class BWLastCaptureController;
class BWLookBackController;
class BWMainWindow;
class BWMeasurementsInFile;
class BWSceneController;
class BWStatusLine;
class QMenu;

/// Joins the main window to the files of captures: the menu items for the one that shows, a menu for the last capture, the
/// picture for the clipboard. Who shows a file follows it to its new name. GUI thread.
class BWCaptureFiles : public QObject, private BWConfigManagerListener {
    Q_OBJECT

public:
    struct Parts {
        BWMainWindow &window;
        BWSceneController &scene;
        BWLookBackController &lookBack;
        BWLastCaptureController &lastCapture;
        BWMeasurementsInFile &measurements;
        BWCaptureController &capture;
        BWAlbumManager &albums;
        BWConfigManager &config;
        BWStatusLine &statusLine;
        BWLocalizationManager &texts;
        std::function<BWCameraPtr()> currentCamera;
        std::function<bool(const QUrl &file)> open; ///< with the desktop's program for it
    };

    /// All must outlive this object.
    explicit BWCaptureFiles(const Parts &parts);
    ~BWCaptureFiles() override;

    /// A capture has come into an album.
    void captureAdded(const QUrl &file);

private:
    void configManagerUpdatedSettings(BWConfigManager &config) override;
    void connectMenu();
    void follow(const BWFileMoves::Result::File &file);
    void updateMenu();
    void copy();
    void fillPictureMenu();
    void showLastCaptureMenu(QPoint place);

    Parts m_parts;
    BWAlbumTexts m_albumTexts;
    BWFileActions m_actions;
    BWRecentFiles m_recentFiles;
    bool m_lists; // recent files
    QUrl m_shown; // when the last move began; its folder may be listed before it is reported
    QUrl m_last;
    QMenu *m_menu; // where the pointer is; the window's, like the next
    QMenu *m_albums; // for the last capture
    BWAliveToken m_alive;
};
