// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWCaptureFiles.h"

#include "App/Capture/BWLastCaptureController.h"
#include "App/LiveView/BWLookBackController.h"
#include "App/LiveView/BWMeasurementsInFile.h"
#include "App/LiveView/BWSceneController.h"
#include "Model/Capture/BWCaptureController.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWStatusLine.h"

#include <QMenu>
#include <utility>

using namespace Qt::StringLiterals;

BWCaptureFiles::BWCaptureFiles(const Parts &parts)
    : m_parts(parts),
      m_actions(parts.window, parts.albums, m_albumTexts,
                {[this](const QString &text, bool) { m_parts.statusLine.showForAMoment(text); }, parts.open}),
      m_lists(parts.config.showInRecentFiles()),
      m_menu(new QMenu(&parts.window)),
      m_albums(new QMenu(&parts.window))
{
    m_albumTexts.localizeWithManager(parts.texts);
    parts.config.addListener(this);
    parts.albums.moves().setSettle(
        [this, alive = m_alive.watch()](const std::function<void(const QList<QUrl> &)> &done) {
            if (alive.expired())
                return done({});
            m_shown = m_parts.lookBack.file();
            m_last = m_parts.lastCapture.file();
            m_parts.measurements.whenSaved([this, done] { done(m_parts.measurements.unsavedFiles()); });
        });
    parts.albums.moves().addFollower([this, alive = m_alive.watch()](const BWFileMoves::Result::File &file) {
        if (!alive.expired())
            follow(file);
    });
    connect(&parts.scene, &BWSceneController::mainChanged, this, &BWCaptureFiles::updateMenu);
    connect(&parts.lookBack, &BWLookBackController::undoMoveRequested, this, [this] { m_actions.undo(); });
    connectMenu();
}

BWCaptureFiles::~BWCaptureFiles() = default;

void BWCaptureFiles::connectMenu()
{
    const BWMainMenu &menu = m_parts.window.menu();
    const BWLookBackController &shown = m_parts.lookBack;
    connect(menu.copyPicture, &QAction::triggered, this, &BWCaptureFiles::copy);
    connect(menu.openFile, &QAction::triggered, this, [this, &shown] { m_actions.open(shown.file()); });
    connect(menu.showInFileManager, &QAction::triggered, this,
            [this, &shown] { m_actions.showInFileManager({shown.file()}); });
    connect(menu.renameFile, &QAction::triggered, this, [this, &shown] { m_actions.rename(shown.file()); });
    connect(menu.moveFile, &QMenu::aboutToShow, this,
            [this, &menu, &shown] { m_actions.offerAlbums(*menu.moveFile, {shown.file()}); });
    connect(menu.snapshot, &QAction::enabledChanged, this, &BWCaptureFiles::updateMenu);
    connect(menu.pictureMenu, &QMenu::aboutToShow, this, &BWCaptureFiles::fillPictureMenu);
    connect(&m_parts.window.controlBar(), &BWControlBar::lastCaptureMenuRequested, this,
            &BWCaptureFiles::showLastCaptureMenu);
    updateMenu();
}

void BWCaptureFiles::captureAdded(const QUrl &file)
{
    m_parts.lastCapture.captureAdded(file);
    if (m_lists)
        m_recentFiles.add(file);
}

/// Whoever does not want the list any more wants nothing left in it.
void BWCaptureFiles::configManagerUpdatedSettings(BWConfigManager &config)
{
    if (std::exchange(m_lists, config.showInRecentFiles()) && !m_lists)
        m_recentFiles.clear();
}

void BWCaptureFiles::follow(const BWFileMoves::Result::File &file)
{
    const bool isHere = m_parts.albums.albumOfFile(file.now) == m_parts.albums.currentAlbum();
    if (isHere && m_shown == file.original && m_parts.lookBack.isActive())
        m_parts.lookBack.show(file.now);
    if (isHere && m_last == file.original)
        m_parts.lastCapture.captureAdded(file.now);
}

void BWCaptureFiles::updateMenu()
{
    const BWMainMenu &menu = m_parts.window.menu();
    const bool isFile = m_parts.scene.main() == BWSceneController::Main::Album && m_parts.lookBack.isActive();
    for (QAction *ofFile : {menu.openFile, menu.showInFileManager, menu.renameFile, menu.moveFile->menuAction()})
        ofFile->setEnabled(isFile);
    menu.copyPicture->setEnabled(isFile || menu.snapshot->isEnabled());
}

/// What shows: the file, or what a snapshot would be of.
void BWCaptureFiles::copy()
{
    if (m_parts.lookBack.isActive()) {
        m_actions.copy({m_parts.lookBack.file()});
        return;
    }
    m_parts.capture.copyPicture(m_parts.currentCamera(), [this, alive = m_alive.watch()](const QByteArray &jpeg) {
        if (alive.expired())
            return;
        if (jpeg.isNull())
            m_parts.statusLine.showForAMoment(m_albumTexts.noPictureToCopy);
        else
            m_actions.copyPicture(jpeg);
    });
}

/// A picture that is no file yet has no use for what is done with files.
void BWCaptureFiles::fillPictureMenu()
{
    const BWMainMenu &menu = m_parts.window.menu();
    for (QAction *ofFile : {menu.openFile, menu.showInFileManager, menu.renameFile, menu.moveFile->menuAction()}) {
        menu.pictureMenu->removeAction(ofFile);
        if (m_parts.lookBack.isActive())
            menu.pictureMenu->insertAction(menu.pictureMenuFilesEnd, ofFile);
    }
}

void BWCaptureFiles::showLastCaptureMenu(QPoint place)
{
    const QUrl file = m_parts.lastCapture.file();
    if (file.isEmpty())
        return;
    BWLocalizationManager &texts = m_parts.texts;
    m_menu->clear();
    m_menu->addAction(m_parts.window.menu().lastCapture);
    m_menu->addSeparator();
    m_menu->addAction(texts.text(u"thumbnail_table_view"_s, u"right_menu_copy"_s, u"Copy"_s), this,
                      [this, file] { m_actions.copy({file}); });
    m_menu->addAction(texts.text(u"thumbnail_table_view"_s, u"right_menu_open"_s, u"Open"_s), this,
                      [this, file] { m_actions.open(file); });
    m_menu->addAction(
        texts.text(u"thumbnail_table_view"_s, u"right_menu_show_in_file_manager"_s, u"Show in the File Manager"_s),
        this, [this, file] { m_actions.showInFileManager({file}); });
    m_menu->addAction(texts.text(u"thumbnail_table_view"_s, u"right_menu_rename"_s, u"Rename..."_s), this,
                      [this, file] { m_actions.rename(file); });
    m_albums->setTitle(texts.text(u"thumbnail_table_view"_s, u"right_menu_move"_s, u"Move to Album"_s));
    m_actions.offerAlbums(*m_albums, {file});
    m_menu->addMenu(m_albums);
    m_menu->popup(place);
}
