// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWAlbumManagerWindowController.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWThumbnailKeyboard.h"
#include "Views/Albums/BWThumbnailMenu.h"
#include "Views/Albums/BWThumbnailTableModel.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWFilePanels.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWLightTabView.h"
#include "Views/Utils/BWViewKeys.h"
#include "Views/Utils/Windows/BWFrameAutosave.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <algorithm>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QToolButton *toolButton(const QString &icon)
{
    auto *button = new QToolButton;
    button->setIcon(BWIcons::icon(icon));
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

/// The selected files of a grid, to select them again after a reload, wherever they are and whatever their names are then.
class KeptSelection {
public:
    KeptSelection(BWThumbnailTableView &grid, const QHash<QUrl, QUrl> &renamed) : m_grid(grid)
    {
        const auto &handler = grid.mouseEventHandler();
        QList<QUrl> files = grid.elements();
        for (QUrl &file : files)
            file = renamed.value(file, file);
        for (const int index : handler->selectedIndexes())
            m_selected.append({files.value(index), index});
        m_anchor = {files.value(handler->anchor()), handler->anchor()};
    }

    void restore() const
    {
        const QList<QUrl> files = m_grid.elements();
        QSet<int> indexes;
        QSet<QUrl> elsewhere;
        int moved = 0; // mostly all by as many places
        for (const auto &[file, index] : m_selected) {
            constexpr int reach = 4; // a look at the whole list for each would take too long
            const int found = BWThumbnailTableModel::find(files, file, index + moved, reach);
            if (found < 0) {
                elsewhere.insert(file);
                continue;
            }
            indexes.insert(found);
            moved = found - index;
        }
        for (int i = 0; i < files.size() && !elsewhere.isEmpty(); ++i) {
            if (elsewhere.contains(files[i]))
                indexes.insert(i);
        }
        const int anchor =
            m_anchor.first.isEmpty() ? -1 : BWThumbnailTableModel::find(files, m_anchor.first, m_anchor.second + moved);
        m_grid.mouseEventHandler()->adoptSelection(indexes, anchor);
        m_grid.showSelection();
    }

private:
    BWThumbnailTableView &m_grid;
    QList<std::pair<QUrl, int>> m_selected;
    std::pair<QUrl, int> m_anchor;
};

} // namespace

BWAlbumManagerWindowController::BWAlbumManagerWindowController(BWAlbumManager &albums, BWUserDefaults &defaults,
                                                               Callbacks callbacks, QWidget *cameraWindow,
                                                               BWClock &clock)
    : BWUtilityPanel(cameraWindow),
      m_albums(albums),
      m_panels(callbacks.panels),
      m_popUp(new BWPopUpButton),
      m_popUpLabel(new QLabel(this)),
      m_add(toolButton(u"list-add"_s)),
      m_remove(toolButton(u"list-remove"_s)),
      m_tabs(new BWLightTabView),
      m_images(new BWThumbnailTableView(nullptr, clock)),
      m_videos(new BWThumbnailTableView(nullptr, clock)),
      m_footer(new BWAlbumFooter),
      m_notice(new BWAlbumNotice(nullptr, clock)),
      m_contents(albums, clock),
      m_thumbnails([this](const QList<QUrl> &files) {
          m_images->redrawElements(files);
          m_videos->redrawElements(files);
      }),
      m_actions(std::make_unique<BWAlbumFileActions>(*this, albums, std::move(callbacks), m_texts, *m_footer, *m_notice,
                                                     clock)),
      m_model(std::make_unique<BWAlbumGridModel>(m_contents, m_thumbnails, m_texts, *m_images, *m_videos, *m_actions))
{
    for (BWThumbnailTableView *grid : {m_images, m_videos}) {
        grid->setModelDelegate(m_model.get());
        grid->setDataSource(m_model.get());
    }
    layOut();
    connectParts();
    reloadAlbums();
    rememberFrame(frameName, defaults);
}

BWAlbumManagerWindowController::~BWAlbumManagerWindowController()
{
    for (BWThumbnailTableView *grid : {m_images, m_videos}) {
        grid->disconnect(this);
        grid->setModelDelegate(nullptr);
        grid->setDataSource(nullptr);
    }
}

void BWAlbumManagerWindowController::layOut()
{
    m_popUp->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_popUp->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_popUpLabel->hide(); // it only names the pop-up for screen readers
    m_popUpLabel->setBuddy(m_popUp);
    m_tabs->setDocumentMode(true);
    m_tabs->addTab(m_images, QString());
    m_tabs->addTab(m_videos, QString());

    auto *top = new QHBoxLayout;
    top->addWidget(m_popUp, 1);
    top->addWidget(m_add);
    top->addWidget(m_remove);
    top->setSpacing(4);
    constexpr int margin = 8;
    top->setContentsMargins(margin, margin, margin, margin);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(top);
    auto *middle = new QGridLayout;
    middle->addWidget(m_tabs, 0, 0);
    middle->addWidget(m_notice, 0, 0, Qt::AlignBottom); // over the tabs
    column->addLayout(middle, 1);
    column->addWidget(m_footer);
    m_images->setFocus(); // users come for the pictures
    resize(defaultContentSize);
}

void BWAlbumManagerWindowController::connectParts()
{
    connect(m_popUp, &QComboBox::activated, this, &BWAlbumManagerWindowController::onChangeAlbum);
    connect(m_add, &QToolButton::clicked, this, &BWAlbumManagerWindowController::onAddAlbum);
    connect(m_remove, &QToolButton::clicked, this, &BWAlbumManagerWindowController::onRemoveAlbum);
    m_albums.moves().addFollower([this, alive = m_alive.watch()](const BWFileMoves::Result::File &file) {
        if (!alive.expired())
            m_renamed.insert(file.original, file.now);
    });
    m_albums.addListener(m_alive,
                         [this] {
                             m_notice->endNotice(); // another album may be current
                             reloadAlbums();
                         },
                         {});
    connect(&m_contents, &BWAlbumContents::reloaded, this, [this] { reloadGrids(false); });
    connect(&m_contents, &BWAlbumContents::changed, this, [this] { reloadGrids(true); });
    connect(&m_contents, &BWAlbumContents::filesWritten, this, &BWAlbumManagerWindowController::wantThumbnails);
    for (BWThumbnailTableView *grid : {m_images, m_videos}) {
        connect(grid, &BWThumbnailTableView::thumbnailsWanted, this,
                [this](const QList<QUrl> &inOrder, const QSize &pixels) {
                    m_wanted = inOrder;
                    m_wantedPixels = std::max(pixels.width(), pixels.height());
                    wantThumbnails();
                });
        connect(grid, &BWThumbnailTableView::selectionShown, this, &BWAlbumManagerWindowController::changedByUser);
    }
    connect(m_tabs, &QTabWidget::currentChanged, this, &BWAlbumManagerWindowController::changedByUser);
    const auto saveSelection = [this] {
        m_model->saveIndexesOfModel(currentGrid(), currentGrid().mouseEventHandler()->selectedIndexes());
    };
    connect(m_footer, &BWAlbumFooter::saveTriggered, this, saveSelection);
    // While a grid has the focus, it handles the key itself.
    connect(new QShortcut(BWThumbnailKeyboard::keyFor(BWThumbnailKeyboard::Command::SaveAs), this),
            &QShortcut::activated, this, saveSelection);
    connect(m_footer, &BWAlbumFooter::trashTriggered, this, [this] {
        m_model->removeIndexesOfModel(currentGrid(), currentGrid().mouseEventHandler()->selectedIndexes());
    });
    connect(new QShortcut(BWThumbnailKeyboard::keyFor(BWThumbnailKeyboard::Command::Copy), this), &QShortcut::activated,
            this, [this] {
                m_model->copyIndexesOfModel(currentGrid(), currentGrid().mouseEventHandler()->selectedIndexes());
            });
    connect(new QShortcut(BWViewKeys::undo, this), &QShortcut::activated, m_actions.get(), &BWAlbumFileActions::undo);
}

void BWAlbumManagerWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"album_manager"_s, u"window_title"_s, u"Albums"_s));
    m_tabs->setTabText(m_tabs->indexOf(m_videos),
                       manager.text(u"album_manager"_s, u"videos_tab_view_item"_s, u"Videos"_s));
    m_tabs->setTabText(m_tabs->indexOf(m_images),
                       manager.text(u"album_manager"_s, u"images_tab_view_item"_s, u"Images"_s));
    const auto name = [](QWidget *widget, const QString &text) {
        widget->setToolTip(text);
        widget->setAccessibleName(text);
    };
    name(m_add, manager.text(u"album_manager"_s, u"add_album_button"_s, u"Add album"_s));
    name(m_remove, manager.text(u"album_manager"_s, u"delete_album_button"_s, u"Delete album"_s));
    m_texts.localizeWithManager(manager);
    m_popUp->setMinimumContentsLength(static_cast<int>(m_texts.defaultAlbumDisplayName.size()));
    m_popUpLabel->setText(manager.text(u"album_manager"_s, u"album_pop_up"_s, u"Album"_s));
    m_footer->localize(manager);
    m_notice->localize(manager);
    m_images->setAccessibleName(m_tabs->tabText(m_tabs->indexOf(m_images)));
    m_videos->setAccessibleName(m_tabs->tabText(m_tabs->indexOf(m_videos)));
    constexpr int leastPictures = 2;
    m_images->rightMenu()->setMovieCommand(m_texts.movies.joinCommand, leastPictures);
    m_videos->rightMenu()->setMovieCommand(m_texts.movies.smallerCommand, 1);
    m_images->localizeWithManager(manager);
    m_videos->localizeWithManager(manager);
    reloadAlbums();
    updateNotices();
    updateSummary();
}

void BWAlbumManagerWindowController::reloadAlbums()
{
    {
        const QSignalBlocker blocker(m_popUp);
        m_popUp->clear();
        const QList<BWAlbumPtr> albums = m_albums.albums();
        for (const BWAlbumPtr &album : albums) {
            m_popUp->addItem(album->shownName(m_texts.defaultAlbumDisplayName));
            m_popUp->setItemData(m_popUp->count() - 1, album->path().toLocalFile(), Qt::ToolTipRole);
        }
        m_popUp->setCurrentIndex(m_albums.selectedIndex());
    }
    m_popUp->setToolTip(m_popUp->currentData(Qt::ToolTipRole).toString());
    for (QWidget *needsAlbums : std::initializer_list<QWidget *>{m_popUp, m_add, m_remove})
        needsAlbums->setEnabled(m_albums.isPrepared());
}

void BWAlbumManagerWindowController::onChangeAlbum(int index)
{
    m_notice->endNotice();
    m_albums.setSelectedIndex(index);
    m_popUp->setToolTip(m_popUp->currentData(Qt::ToolTipRole).toString());
}

void BWAlbumManagerWindowController::onAddAlbum()
{
    const BWFilePanels::Folder panel{m_texts.selectAlbum.title, m_texts.selectAlbum.message, m_albums.albumsBasePath(),
                                     [this](const QUrl &folder) { return makeFolder(folder); }};
    m_panels.chooseFolder(this, panel, [this](const QUrl &folder) { m_albums.addAlbumFromPath(folder); });
}

bool BWAlbumManagerWindowController::makeFolder(const QUrl &folder)
{
    using Problem = BWAlbumManager::FolderProblem;
    const Problem problem = BWAlbumManager::makeAlbumFolder(folder);
    if (problem == Problem::None)
        return true;
    const QString &message = problem == Problem::Name ? m_texts.folderName
        : problem == Problem::Taken                   ? m_texts.folderTaken
        : problem == Problem::NotAllowed              ? m_texts.folderNotAllowed
                                                      : m_texts.folderFailed;
    BWUIUtils::displayOKAlert(m_texts.folderNotMade, message.arg(folder.fileName()));
    return false;
}

void BWAlbumManagerWindowController::onRemoveAlbum()
{
    if (!m_albums.canRemoveCurrentAlbum()) {
        BWUIUtils::displayOKAlert(m_texts.cannotDeleteDefault.title, m_texts.cannotDeleteDefault.message);
        return;
    }
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (BWUIUtils::displayOKCancelAlert(m_texts.deleteAlbum.title, m_texts.deleteAlbum.message)
        && album == m_albums.currentAlbum())
        m_albums.removeCurrentAlbum();
}

void BWAlbumManagerWindowController::reloadGrids(bool keepSelection)
{
    const QScopedValueRollback reloading(m_reloading, true);
    const QHash<QUrl, QUrl> renamed = std::exchange(m_renamed, {});
    const KeptSelection images(*m_images, renamed);
    const KeptSelection videos(*m_videos, renamed); // before either reloads, which renews the lists of both
    m_images->reloadData();
    m_videos->reloadData();
    if (keepSelection || !renamed.isEmpty()) {
        images.restore();
        videos.restore();
    }
    updateNotices();
    updateSummary();
}

/// The user changed the selection or the tab: the notice is about other files now.
void BWAlbumManagerWindowController::changedByUser()
{
    if (!m_reloading)
        m_notice->endNotice();
    updateSummary();
}

void BWAlbumManagerWindowController::updateNotices()
{
    using State = BWAlbumContents::State;
    const auto show = [this](BWThumbnailTableView &grid, const QString &icon, const QString &none) {
        switch (m_contents.state()) {
        case State::Reading:
            grid.setEmptyNotice({}, {});
            return;
        case State::NotAnswering:
            grid.setEmptyNotice(u"network-server"_s, m_texts.notAnswering);
            return;
        case State::Unavailable:
            grid.setEmptyNotice(u"dialog-warning"_s, m_texts.unavailable);
            return;
        case State::Listed:
            grid.setEmptyNotice(icon, none);
            return;
        }
    };
    show(*m_images, u"brimwellpro-snapshot"_s, m_texts.noImages);
    show(*m_videos, u"camera-video"_s, m_texts.noVideos);
}

void BWAlbumManagerWindowController::updateSummary()
{
    const auto total = currentGrid().elementCount();
    const auto selected = currentGrid().mouseEventHandler()->selectedIndexes().size();
    m_footer->setSummary(selected > 0 ? m_texts.selected.arg(selected).arg(total) : m_texts.total.arg(total),
                         selected > 0);
}

void BWAlbumManagerWindowController::wantThumbnails()
{
    m_thumbnails.request(m_wanted, m_wantedPixels);
}

BWThumbnailTableView &BWAlbumManagerWindowController::currentGrid() const
{
    return m_tabs->currentWidget() == m_videos ? *m_videos : *m_images;
}

void BWAlbumManagerWindowController::place(QWidget &cameraWindow)
{
    const QMargins margins = BWFrameAutosave::margins(*this, &cameraWindow);
    const QSize frame = defaultContentSize.expandedTo(minimumSizeHint()).grownBy(margins); // with large fonts
    const QRect camera = cameraWindow.frameGeometry();
    const BWWindowPlacement placement = BWWindowPlacement::onScreens();
    if (!BWFrameAutosave::canPlaceWindows() || cameraWindow.windowState() != Qt::WindowNoState) {
        BWFrameAutosave::setFrame(*this, placement.besideFixed(camera, frame), margins);
        return;
    }
    const QMargins cameraMargins = BWFrameAutosave::margins(cameraWindow);
    const int leastWidth = cameraWindow.minimumSizeHint().grownBy(cameraMargins).width();
    const auto pair = placement.beside(camera, leastWidth, frame, minimumSizeHint().grownBy(margins).width());
    if (pair.camera != camera)
        BWFrameAutosave::setFrame(cameraWindow, pair.camera, cameraMargins);
    BWFrameAutosave::setFrame(*this, pair.albums, margins);
}

void BWAlbumManagerWindowController::showEvent(QShowEvent *event)
{
    BWUtilityPanel::showEvent(event);
    if (!std::exchange(m_shown, true))
        m_contents.follow();
}

void BWAlbumManagerWindowController::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // Not every file system reports what other computers change.
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && m_shown)
        m_contents.refresh();
}
