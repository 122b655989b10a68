#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Views/Utils/BWDialogFilePanels.h"

#include <functional>
#include <memory>
#include <QObject>
#include <QUrl>

class BWAlbumManagerWindowController;
class BWMainWindow;
class BWRepository;

/// The windows beside the camera window: shown and hidden from its menu, and put in their places. GUI thread.
class BWAuxiliaryWindows : public QObject {
    Q_OBJECT

public:
    /// `openUrl` opens a file with the desktop's program for it. All must outlive this object.
    BWAuxiliaryWindows(BWMainWindow &window, BWRepository &repository, std::function<void(const QUrl &)> openUrl,
                       BWClock &clock);
    ~BWAuxiliaryWindows() override;

    /// To the front; in use only if it was there already.
    void showAlbums();
    void toggleAlbums();
    void hideAll();
    /// Puts all windows where they belong, those that are not open when they are shown the next time.
    void resetLayout();
    /// The check marks in the menu.
    void updateMenu();

    BWAlbumManagerWindowController &albums() const { return *m_albums; }

private:
    void place();

    BWMainWindow &m_window;
    BWDialogFilePanels m_panels;
    std::unique_ptr<BWAlbumManagerWindowController> m_albums;
    bool m_mustPlace = false;
};
