// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCamera.h"
#include "Model/Products/BWCameraProduct.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QString>

class BWMeasuringMenu;
class QAction;
class QActionGroup;
class QMainWindow;
class QMenu;

/// The menus of the main window: those of its bar, and the one that opens on the picture. What an item does is up to
/// whoever connects its action.
class BWMainMenu : public QObject, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// Which windows are open.
    struct OpenWindows {
        bool camera = false;
        bool albums = false;
        bool settings = false;
        bool advancedSettings = false;
    };

    explicit BWMainMenu(QMainWindow &window);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// The open cameras, one of them checked, and the products that the current one may be.
    void showCameras(const QList<QString> &names, int current);
    void showProducts(const QList<BWCameraProductPtr> &products, const QList<QString> &names, const QString &current);

    /// Enables the items that make sense only once a camera has been there.
    void enablePanels();
    /// Enables the items that act on a streaming camera, and those for which any picture will do.
    void setActionsEnabled(bool camera, bool picture);
    /// Whether the item that records would end a recording.
    void showRecording(bool recording);
    /// Whether the item of the series would stop one.
    void showSeries(bool running);
    /// Checks the item of the comparison and enables those that act on one.
    void showComparison(bool comparing);
    /// Whether the item of the measuring grid shows, and whether it is checked.
    void setGridAvailable(bool available);
    void showGrid(bool on);
    /// The menu of technicians' tools, hidden from users.
    void showTools(bool shown);
    /// Check marks of the window list.
    void showOpenWindows(const OpenWindows &windows);

    QAction *openAlbumFolder;
    QAction *copyPicture;
    QAction *openFile; ///< the next four: of an album, while it shows
    QAction *showInFileManager;
    QAction *renameFile;
    QMenu *moveFile; ///< to another album; filled when it opens
    QAction *importOldSettings;
    QAction *quit;
    QAction *snapshot;
    QAction *record;
    QAction *series;
    QAction *zoomIn;
    QAction *zoomOut;
    QAction *actualSize;
    QAction *fitToWindow;
    QAction *lastCapture; ///< enabled while there is one
    QAction *rotate;
    QAction *flipHorizontally;
    QAction *flipVertically;
    QAction *freeze;
    QAction *grid;
    QAction *statistics;
    QAction *fullScreen;
    QAction *compare;
    QAction *compareSideBySide;
    QAction *compareOverlay;
    QAction *compareDivider;
    QAction *showMoreReference;
    QAction *showLessReference;
    QAction *linkPictures;
    QAction *saveComparison;
    QAction *endComparison;
    QAction *cameraWindowMenuItem;
    QAction *albumManagerMenuItem;
    QAction *settingsMenuItem;
    QAction *advancedSettingsMenuItem;
    QAction *nextWindow;
    QAction *simpleHelpMenuItem;
    QAction *aboutMenuItem;
    QAction *gridDebugger;
    QAction *registerDebugger;
    BWMeasuringMenu *measuring;
    QMenu *pictureMenu; ///< what people do most, for those who have no keyboard at hand
    QAction *pictureMenuFilesEnd; ///< behind its place for what is done with a file

Q_SIGNALS:
    void cameraPicked(int index);
    void productPicked(const QString &identifier);
    /// The key that opens the first menu, without an item of its own.
    void barRequested();
    /// The window list is about to be shown.
    void panelsMenuOpening();

private:
    QAction *add(QMenu *menu, const QKeySequence &shortcut = {});
    void addComparison();
    void fillPictureMenu();

    QMenu *m_fileMenu;
    QMenu *m_cameraMenu;
    QMenu *m_productMenu;
    QMenu *m_viewMenu;
    QMenu *m_comparisonMenu;
    QMenu *m_measureMenu;
    QMenu *m_panelsMenu;
    QMenu *m_helpMenu;
    QMenu *m_toolsMenu;
    QAction *m_cameraListEnd;
    QActionGroup *m_cameras;
    QActionGroup *m_products;
    QString m_recordText;
    QString m_stopText;
    QString m_seriesText;
    QString m_stopSeriesText;
    bool m_recording = false;
    bool m_seriesRuns = false;
    bool m_hasCamera = false;
};
