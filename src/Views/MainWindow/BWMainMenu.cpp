// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWMainMenu.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/Utils/BWViewKeys.h"

#include <QAction>
#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

using namespace Qt::StringLiterals;

namespace {

/// An ampersand in a name is not an access key.
QString titled(QString name)
{
    return name.replace(u'&', u"&&"_s);
}

} // namespace

BWMainMenu::BWMainMenu(QMainWindow &window) : QObject(&window)
{
    QMenuBar *bar = window.menuBar();
    m_fileMenu = bar->addMenu(QString());
    m_cameraMenu = bar->addMenu(QString());
    m_viewMenu = bar->addMenu(QString());
    m_measureMenu = bar->addMenu(QString());
    m_panelsMenu = bar->addMenu(QString());
    m_toolsMenu = bar->addMenu(QString());
    m_helpMenu = bar->addMenu(QString());

    openAlbumFolder = add(m_fileMenu, u"Ctrl+O"_s);
    m_fileMenu->addSeparator();
    copyPicture = add(m_fileMenu, BWViewKeys::copy);
    openFile = add(m_fileMenu);
    showInFileManager = add(m_fileMenu, u"Ctrl+Shift+O"_s);
    renameFile = add(m_fileMenu, u"F2"_s);
    moveFile = m_fileMenu->addMenu(QString());
    for (QAction *ofPicture : {copyPicture, showInFileManager, renameFile}) { // the other windows have them, too
        ofPicture->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        window.addAction(ofPicture);
    }
    for (QAction *ofPicture : {copyPicture, openFile, showInFileManager, renameFile, moveFile->menuAction()})
        ofPicture->setEnabled(false);
    m_fileMenu->addSeparator();
    importOldSettings = add(m_fileMenu);
    m_fileMenu->addSeparator();
    quit = add(m_fileMenu, QKeySequence::Quit);
    quit->setShortcut(u"Ctrl+Q"_s);
    quit->setMenuRole(QAction::QuitRole);

    snapshot = add(m_cameraMenu, u"Ctrl+S"_s);
    record = add(m_cameraMenu, u"Ctrl+Shift+S"_s);
    series = add(m_cameraMenu, u"Ctrl+I"_s);
    for (QAction *capture : {snapshot, record, series}) // whichever of our windows has the keyboard
        capture->setShortcutContext(Qt::ApplicationShortcut);
    m_cameraListEnd = m_cameraMenu->addSeparator();
    m_productMenu = m_cameraMenu->addMenu(QString());
    m_cameras = new QActionGroup(this);
    m_products = new QActionGroup(this);

    zoomIn = add(m_viewMenu);
    zoomIn->setShortcuts({u"Ctrl++"_s, u"Ctrl+="_s});
    zoomOut = add(m_viewMenu, u"Ctrl+-"_s);
    for (QAction *stepwise : {zoomIn, zoomOut})
        stepwise->setAutoRepeat(true);
    actualSize = add(m_viewMenu, u"Ctrl+0"_s);
    fitToWindow = add(m_viewMenu, u"Ctrl+9"_s);
    fitToWindow->setCheckable(true);
    m_viewMenu->addSeparator();
    rotate = add(m_viewMenu, u"Ctrl+R"_s);
    flipHorizontally = add(m_viewMenu, u"Ctrl+H"_s);
    flipVertically = add(m_viewMenu, u"Ctrl+J"_s);
    m_viewMenu->addSeparator();
    freeze = add(m_viewMenu, u"Ctrl+F"_s);
    freeze->setCheckable(true);
    lastCapture = add(m_viewMenu, u"F7"_s);
    lastCapture->setEnabled(false);
    grid = add(m_viewMenu, u"Ctrl+G"_s);
    grid->setCheckable(true);
    statistics = add(m_viewMenu, u"Ctrl+Shift+I"_s);
    statistics->setCheckable(true);
    fullScreen = add(m_viewMenu, u"F11"_s);
    fullScreen->setCheckable(true);

    addComparison();
    measuring = new BWMeasuringMenu(*m_measureMenu, this);
    pictureMenu = new QMenu(&window);
    fillPictureMenu();

    cameraWindowMenuItem = add(m_panelsMenu);
    cameraWindowMenuItem->setCheckable(true);
    albumManagerMenuItem = add(m_panelsMenu, u"F9"_s);
    settingsMenuItem = add(m_panelsMenu, u"Ctrl+,"_s);
    advancedSettingsMenuItem = add(m_panelsMenu, u"F8"_s);
    for (QAction *item : {albumManagerMenuItem, settingsMenuItem, advancedSettingsMenuItem})
        item->setCheckable(true);
    m_panelsMenu->addSeparator();
    nextWindow = add(m_panelsMenu, u"F6"_s);
    simpleHelpMenuItem = add(m_helpMenu, u"F1"_s);
    aboutMenuItem = add(m_helpMenu);
    aboutMenuItem->setMenuRole(QAction::AboutRole);
    advancedSettingsMenuItem->setEnabled(false); // the others are useful without a camera too
    gridDebugger = add(m_toolsMenu);
    registerDebugger = add(m_toolsMenu);
    const auto withoutItem = [&](const QKeySequence &shortcut) {
        auto *action = new QAction(this);
        action->setShortcut(shortcut);
        action->setAutoRepeat(false);
        window.addAction(action);
        return action;
    };
    connect(withoutItem(u"Ctrl+Alt+Shift+T"_s), &QAction::triggered, this,
            [this] { showTools(!m_toolsMenu->menuAction()->isVisible()); });
    connect(withoutItem(BWViewKeys::bars), &QAction::triggered, this, &BWMainMenu::barRequested);
    connect(m_panelsMenu, &QMenu::aboutToShow, this, &BWMainMenu::panelsMenuOpening);
    connect(m_cameras, &QActionGroup::triggered, this,
            [this](QAction *action) { Q_EMIT cameraPicked(action->data().toInt()); });
    connect(m_products, &QActionGroup::triggered, this,
            [this](QAction *action) { Q_EMIT productPicked(action->data().toString()); });

    setActionsEnabled(false, false);
    setGridAvailable(false);
    showTools(false);
    showCameras({}, -1);
    showProducts({}, {}, {});
}

void BWMainMenu::addComparison()
{
    m_viewMenu->addSeparator();
    compare = add(m_viewMenu, u"Ctrl+B"_s);
    m_comparisonMenu = m_viewMenu->addMenu(QString());
    compareSideBySide = add(m_comparisonMenu, u"1"_s);
    compareOverlay = add(m_comparisonMenu, u"2"_s);
    compareDivider = add(m_comparisonMenu, u"3"_s);
    auto *modes = new QActionGroup(this);
    for (QAction *mode : {compareSideBySide, compareOverlay, compareDivider})
        modes->addAction(mode);
    m_comparisonMenu->addSeparator();
    showMoreReference = add(m_comparisonMenu, u"."_s);
    showLessReference = add(m_comparisonMenu, u","_s);
    for (QAction *stepwise : {showMoreReference, showLessReference})
        stepwise->setAutoRepeat(true);
    linkPictures = add(m_comparisonMenu, u"Ctrl+K"_s);
    for (QAction *checkable : {compare, compareSideBySide, compareOverlay, compareDivider, linkPictures})
        checkable->setCheckable(true);
    m_comparisonMenu->addSeparator();
    saveComparison = add(m_comparisonMenu, u"Ctrl+Shift+E"_s);
    endComparison = add(m_comparisonMenu, u"Esc"_s);
    showComparison(false);
}

void BWMainMenu::fillPictureMenu()
{
    pictureMenu->addActions({snapshot, record, freeze, lastCapture});
    pictureMenu->addSeparator();
    pictureMenu->addAction(copyPicture);
    pictureMenuFilesEnd = pictureMenu->addSeparator();
    pictureMenu->addActions({actualSize, fitToWindow, rotate, flipHorizontally, flipVertically});
    pictureMenu->addSeparator();
    pictureMenu->addActions({grid, measuring->showTools, compare, fullScreen});
}

QAction *BWMainMenu::add(QMenu *menu, const QKeySequence &shortcut)
{
    QAction *action = menu->addAction(QString());
    action->setShortcut(shortcut);
    action->setAutoRepeat(false); // a key held down a moment too long takes one picture, not twenty
    return action;
}

void BWMainMenu::localizeWithManager(BWLocalizationManager &manager)
{
    const auto set = [](QAction *action, const QString &text) { action->setText(text); };
    m_fileMenu->setTitle(manager.text(u"main_menu"_s, u"file_menu"_s, u"&File"_s));
    set(openAlbumFolder, manager.text(u"main_menu"_s, u"open_album_folder_menu_item"_s, u"&Open album folder"_s));
    set(copyPicture, manager.text(u"main_menu"_s, u"copy_picture_menu_item"_s, u"&Copy picture"_s));
    set(openFile, manager.text(u"main_menu"_s, u"open_file_menu_item"_s, u"Open with another &program"_s));
    set(showInFileManager,
        manager.text(u"main_menu"_s, u"show_in_file_manager_menu_item"_s, u"&Show in the file manager"_s));
    set(renameFile, manager.text(u"main_menu"_s, u"rename_menu_item"_s, u"Re&name..."_s));
    moveFile->setTitle(manager.text(u"main_menu"_s, u"move_menu"_s, u"&Move to album"_s));
    set(importOldSettings, manager.text(u"import"_s, u"menu_item"_s, u"&Import old settings..."_s));
    set(quit, manager.text(u"main_menu"_s, u"quit_menu_item"_s, u"&Quit"_s));

    m_cameraMenu->setTitle(manager.text(u"main_menu"_s, u"camera_menu"_s, u"&Camera"_s));
    set(snapshot, manager.text(u"main_menu"_s, u"snapshot_menu_item"_s, u"Take &snapshot"_s));
    m_recordText = manager.text(u"main_menu"_s, u"record_menu_item"_s, u"&Record video"_s);
    m_stopText = manager.text(u"main_menu"_s, u"stop_recording_menu_item"_s, u"Stop &recording"_s);
    showRecording(m_recording);
    m_seriesText = manager.text(u"series"_s, u"menu_item"_s, u"Pictures at &intervals..."_s);
    m_stopSeriesText = manager.text(u"series"_s, u"stop_menu_item"_s, u"Stop ser&ies"_s);
    showSeries(m_seriesRuns);
    m_productMenu->setTitle(manager.text(u"main_menu"_s, u"product_menu"_s, u"&Product"_s));

    m_viewMenu->setTitle(manager.text(u"main_menu"_s, u"view_menu"_s, u"&View"_s));
    set(zoomIn, manager.text(u"main_menu"_s, u"zoom_in_menu_item"_s, u"Zoom &in"_s));
    set(zoomOut, manager.text(u"main_menu"_s, u"zoom_out_menu_item"_s, u"Zoom &out"_s));
    set(actualSize, manager.text(u"main_menu"_s, u"actual_size_menu_item"_s, u"&Actual size"_s));
    set(fitToWindow, manager.text(u"main_menu"_s, u"fit_to_window_menu_item"_s, u"Fit to &window"_s));
    set(lastCapture, manager.text(u"main_menu"_s, u"last_capture_menu_item"_s, u"&Last capture"_s));
    set(rotate, manager.text(u"main_menu"_s, u"rotate_menu_item"_s, u"&Rotate by 90 degrees"_s));
    set(flipHorizontally, manager.text(u"main_menu"_s, u"flip_horizontally_menu_item"_s, u"Flip &horizontally"_s));
    set(flipVertically, manager.text(u"main_menu"_s, u"flip_vertically_menu_item"_s, u"Flip &vertically"_s));
    set(freeze, manager.text(u"main_menu"_s, u"freeze_menu_item"_s, u"Free&ze"_s));
    set(grid, manager.text(u"main_menu"_s, u"grid_menu_item"_s, u"&Measuring grid"_s));
    set(statistics, manager.text(u"main_menu"_s, u"statistics_menu_item"_s, u"&Statistics"_s));
    set(fullScreen, manager.text(u"main_menu"_s, u"full_screen_menu_item"_s, u"&Full screen"_s));

    set(compare, manager.text(u"comparison"_s, u"compare_menu_item"_s, u"&Compare with an album picture"_s));
    m_comparisonMenu->setTitle(manager.text(u"comparison"_s, u"menu"_s, u"Compariso&n"_s));
    set(compareSideBySide, manager.text(u"comparison"_s, u"side_by_side_menu_item"_s, u"&Side by side"_s));
    set(compareOverlay, manager.text(u"comparison"_s, u"overlay_menu_item"_s, u"&Overlay"_s));
    set(compareDivider, manager.text(u"comparison"_s, u"divider_menu_item"_s, u"&Dividing line"_s));
    set(showMoreReference, manager.text(u"comparison"_s, u"more_menu_item"_s, u"&More of the album picture"_s));
    set(showLessReference, manager.text(u"comparison"_s, u"less_menu_item"_s, u"&Less of the album picture"_s));
    set(linkPictures, manager.text(u"comparison"_s, u"link_menu_item"_s, u"Move both &together"_s));
    set(saveComparison, manager.text(u"comparison"_s, u"save_menu_item"_s, u"Sa&ve comparison as..."_s));
    set(endComparison, manager.text(u"comparison"_s, u"end_menu_item"_s, u"&End comparison"_s));
    m_measureMenu->setTitle(manager.text(u"main_menu"_s, u"measure_menu"_s, u"&Measure"_s));
    measuring->localizeWithManager(manager);

    // The item and the menu that it opens are two texts, because translators may want them to differ. Only the menu shows.
    manager.text(u"main_menu"_s, u"panels_menu_item"_s, u"&Panels"_s);
    m_panelsMenu->setTitle(manager.text(u"main_menu"_s, u"panels_menu"_s, u"&Panels"_s));
    set(cameraWindowMenuItem, manager.text(u"main_menu"_s, u"camera_window_menu_item"_s, u"&Camera window"_s));
    set(albumManagerMenuItem, manager.text(u"main_menu"_s, u"album_manager_menu_item"_s, u"&Album manager"_s));
    set(settingsMenuItem, manager.text(u"main_menu"_s, u"settings_menu_item"_s, u"&Settings"_s));
    set(advancedSettingsMenuItem,
        manager.text(u"main_menu"_s, u"advanced_settings_menu_item"_s, u"A&dvanced settings"_s));
    set(nextWindow, manager.text(u"main_menu"_s, u"next_window_menu_item"_s, u"&Next window"_s));
    manager.text(u"main_menu"_s, u"help_menu_item"_s, u"&Help"_s);
    m_helpMenu->setTitle(manager.text(u"main_menu"_s, u"help_menu"_s, u"&Help"_s));
    set(simpleHelpMenuItem, manager.text(u"main_menu"_s, u"simple_help_menu_item"_s, u"BrimwellPro &help"_s));
    set(aboutMenuItem, manager.text(u"main_menu"_s, u"about_menu_item"_s, u"&About BrimwellPro"_s));

    m_toolsMenu->setTitle(manager.text(u"main_menu"_s, u"tools_menu"_s, u"&Tools"_s));
    set(gridDebugger, manager.text(u"main_menu"_s, u"grid_debugger_menu_item"_s, u"&Grid debugger"_s));
    set(registerDebugger, manager.text(u"main_menu"_s, u"register_debugger_menu_item"_s, u"&Register debugger"_s));
}

void BWMainMenu::showCameras(const QList<QString> &names, int current)
{
    const QList<QAction *> old = m_cameras->actions();
    qDeleteAll(old);
    for (int i = 0; i < names.size(); ++i) {
        auto *action = new QAction(titled(names[i]), m_cameras);
        action->setData(i);
        action->setCheckable(true);
        action->setChecked(i == current);
        m_cameraMenu->insertAction(m_productMenu->menuAction(), action);
    }
    m_cameraListEnd->setVisible(!names.isEmpty());
}

void BWMainMenu::showProducts(const QList<BWCameraProductPtr> &products, const QList<QString> &names,
                              const QString &current)
{
    const QList<QAction *> old = m_products->actions();
    qDeleteAll(old);
    for (int i = 0; i < products.size(); ++i) {
        auto *action = new QAction(titled(names[i]), m_products);
        action->setData(products[i]->identifier());
        action->setCheckable(true);
        action->setChecked(products[i]->identifier() == current);
        m_productMenu->addAction(action);
    }
    m_productMenu->menuAction()->setVisible(!products.isEmpty());
}

void BWMainMenu::enablePanels()
{
    advancedSettingsMenuItem->setEnabled(true);
}

void BWMainMenu::setActionsEnabled(bool camera, bool picture)
{
    record->setEnabled(camera);
    m_hasCamera = camera;
    series->setEnabled(m_hasCamera || m_seriesRuns);
    for (QAction *action :
         {snapshot, zoomIn, zoomOut, actualSize, fitToWindow, rotate, flipHorizontally, flipVertically, freeze, grid})
        action->setEnabled(picture);
}

void BWMainMenu::showRecording(bool recording)
{
    m_recording = recording;
    record->setText(recording ? m_stopText : m_recordText);
}

void BWMainMenu::showSeries(bool running)
{
    m_seriesRuns = running;
    series->setText(running ? m_stopSeriesText : m_seriesText);
    series->setEnabled(m_hasCamera || running);
}

void BWMainMenu::showComparison(bool comparing)
{
    compare->setChecked(comparing);
    for (QAction *action : {compareSideBySide, compareOverlay, compareDivider, showMoreReference, showLessReference,
                            linkPictures, saveComparison, endComparison})
        action->setEnabled(comparing);
}

void BWMainMenu::setGridAvailable(bool available)
{
    grid->setVisible(available);
    gridDebugger->setEnabled(available);
}

void BWMainMenu::showGrid(bool on)
{
    grid->setChecked(on);
}

void BWMainMenu::showTools(bool shown)
{
    m_toolsMenu->menuAction()->setVisible(shown);
}

void BWMainMenu::showOpenWindows(const OpenWindows &windows)
{
    cameraWindowMenuItem->setChecked(windows.camera);
    albumManagerMenuItem->setChecked(windows.albums);
    settingsMenuItem->setChecked(windows.settings);
    advancedSettingsMenuItem->setChecked(windows.advancedSettings);
}
