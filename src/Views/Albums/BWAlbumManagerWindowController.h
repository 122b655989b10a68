#pragma once

#include "Model/Albums/BWAlbumContents.h"
#include "Model/Texts/BWLocalizationManagerDelegate.h"
#include "Model/Thumbnails/BWThumbnails.h"
#include "Views/Albums/BWAlbumGridModel.h"
#include "Views/Albums/BWAlbumSaving.h"
#include "Views/Albums/BWAlbumTexts.h"
#include "Views/Albums/BWAlbumTrashing.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <functional>

class BWAlbumFooter;
class BWAlbumManager;
class BWAlbumNotice;
class BWFilePanels;
class BWLightTabView;
class QComboBox;
class QLabel;
class QToolButton;

/// The album window: which album is current, its images and videos as grids of thumbnails, and what is done with them.
/// A utility window beside the camera window. It wires its parts together; what albums are is the manager's. GUI thread.
class BWAlbumManagerWindowController : public BWUtilityPanel, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    static constexpr QSize defaultContentSize{287, 550};

    /// What is outside of the program.
    struct Callbacks {
        BWFilePanels &panels;
        std::function<bool(const QUrl &file)> open; ///< with the desktop's program for it; false if there is none
    };

    /// From now on it alone is told when the albums or their contents change.
    BWAlbumManagerWindowController(BWAlbumManager &albums, BWUserDefaults &defaults, Callbacks callbacks,
                                   QWidget *cameraWindow, BWClock &clock = BWClock::system());
    ~BWAlbumManagerWindowController() override;

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Files are being saved elsewhere.
    bool isSaving() const { return m_saving->isSaving(); }

    void onAddAlbum();
    void onRemoveAlbum();
    void onChangeAlbum(int index);

protected:
    /// Gives the window its default size and puts it to the right of the camera window, which makes room for it.
    void place(QWidget &cameraWindow) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void layOut();
    void connectParts();
    void reloadAlbums();
    bool makeFolder(const QUrl &folder);
    void reloadGrids(bool keepSelection);
    void changedByUser();
    void updateNotices();
    void updateSummary();
    void wantThumbnails();
    void openFiles(const QList<QUrl> &files);
    BWThumbnailTableView &currentGrid() const;

    BWAlbumManager &m_albums;
    Callbacks m_callbacks;
    BWAlbumTexts m_texts;
    QComboBox *m_popUp;
    QLabel *m_popUpLabel;
    QToolButton *m_add;
    QToolButton *m_remove;
    BWLightTabView *m_tabs;
    BWThumbnailTableView *m_images;
    BWThumbnailTableView *m_videos;
    BWAlbumFooter *m_footer;
    BWAlbumNotice *m_notice;
    BWAlbumContents m_contents;
    BWThumbnails m_thumbnails;
    QList<QUrl> m_wanted;
    int m_wantedPixels = 0;
    std::unique_ptr<BWAlbumSaving> m_saving;
    std::unique_ptr<BWAlbumTrashing> m_trashing;
    std::unique_ptr<BWAlbumGridModel> m_model;
    bool m_shown = false; // has been, so that the album is listed
    bool m_reloading = false;
};
