// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "AppDelegate.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "BWManualClock.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include <algorithm>
#include <memory>
#include <QAction>
#include <QApplication>
#include <QList>
#include <QSize>
#include <QStringList>

class BWThumbnailTableView;
class QMenu;

/// How a desktop may look.
struct Look {
    enum class Colors { Light, Dark, WhiteOnBlack, BlackOnWhite };

    static const QList<Look> &all();
    /// To be called before there is an application.
    void setUpScreen(const class TestFolder &folder) const;
    void dressUp() const;

    QString name;
    Colors colors = Colors::Light;
    double scale = 1;
    int pointSize = 10;
    QString style = QStringLiteral("Fusion");
    QSize screen{1280, 800}; ///< in points
};

/// The real program on simulated cameras, in one language and one look, in which windows are looked at.
class Tour {
public:
    /// Milliseconds; the computer may be busy, and a sanitizer slow.
    static inline const int patience = 30000 * std::max(1, qEnvironmentVariableIntValue("BW_PATIENCE"));

    Tour(const QString &language, const Look &look) : m_language(language), m_look(look) { }
    void begin();
    void end();

    template <typename Window>
    static Window *visible()
    {
        const auto windows = QApplication::topLevelWidgets();
        for (QWidget *widget : windows) {
            if (auto *window = qobject_cast<Window *>(widget); window && window->isVisible())
                return window;
        }
        return nullptr;
    }

    /// Checks a window, and paints it; into WINDOW-LANGUAGE-LOOK.png if BW_TOUR_OUTPUT names a folder.
    void see(QWidget *seen, const QString &name) const;
    /// What was found since the last report. At the end of a test.
    void reportFaults();
    /// The camera window, as it is, and as narrow as it can be.
    void seeNarrowest(const QString &name) const;
    void setFullScreen(bool full);
    void seeMenu(QMenu *menu, const QString &name) const;
    /// Opened by its menu item, and once more after something has been done in it.
    template <typename Window>
    void seePanel(QAction *item, const QString &name, void (Window::*act)() = nullptr, const QString &after = {}) const
    {
        item->trigger();
        auto *panel = visible<Window>();
        see(panel, name);
        if (act) {
            (panel->*act)();
            see(panel, after);
        }
        panel->close();
    }

    void plugIn(int camera);
    /// Until one of them is on the screen.
    void showFrames() const;
    void waitForThumbnails(BWThumbnailTableView &grid, int count);

    // The looks of the camera window while there is a picture; each leaves it as it was.
    void seePlain();
    void seeMeasuring();
    void seeLookBack();
    void seeComparing();
    void seeFullScreen();

    BWManualClock clock;
    QList<std::shared_ptr<BWSimulatedCamera>> cameras;
    std::unique_ptr<AppDelegate> delegate;
    std::unique_ptr<BWMessageBoxAlertPresenter> alertPresenter;
    BWMainWindow *window = nullptr; ///< of the camera

private:
    void freeze(bool frozen) const;
    void measure(bool begins) const;
    void showAll(bool shown) const;

    mutable QStringList m_faults;
    const QString m_language;
    const Look m_look;
    QSize m_usual; // of the camera window, while it is full screen
    bool m_hasQuit = false;
};
