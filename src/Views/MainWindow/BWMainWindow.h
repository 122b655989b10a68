// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/Windows/BWWindowVisibility.h"

#include <array>
#include <cstddef>
#include <functional>
#include <QMainWindow>

class BWCenteringClipView;
class BWComparisonStrip;
class BWControlBar;
class BWFrameAutosave;
class BWFrozenMark;
class BWLiveRenderer;
class BWMainMenu;
class BWOfferStrip;
class BWSlidingBars;
class BWStatisticsPanel;
class BWStatusPill;
class BWUserDefaults;

/// The camera window: menu bar, live image, the control bar over its top and the status line over its lower edge.
/// It only lays its parts out and passes window events on.
class BWMainWindow : public QMainWindow, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// Size of the content below the menu bar after a reset of the layout.
    static constexpr QSize defaultContentSize{977, 550};

    explicit BWMainWindow(BWLiveRenderer &renderer);

    void localizeWithManager(BWLocalizationManager &manager) override;

    BWMainMenu &menu() const { return *m_menu; }
    BWControlBar &controlBar() const { return *m_controlBar; }
    BWCenteringClipView &centeringClipView() const { return *m_clipView; }
    BWComparisonStrip &comparisonStrip() const { return *m_comparisonStrip; }
    BWOfferStrip &offerStrip() const { return *m_offerStrip; }
    BWStatusPill &currentCameraLabel() const { return *m_statusPill; }

    /// A strip of controls over the whole width below the picture, which has room while it is visible. The window owns it.
    void setStrip(QWidget *strip);

    /// Gives the content its default size and puts the window into the middle of the main screen.
    void resetLayout();
    /// Remembers the window's frame from now on. Without one the layout is reset when the window is shown.
    void rememberFrame(BWUserDefaults &defaults);
    void setVisible(bool visible) override;

    void setFullScreen(bool fullScreen);
    /// How much of the picture's top the bars cover: all of the control bar in a window, nothing in full screen until they
    /// slide in.
    int topInset() const;

    /// What Escape leaves, one thing at a press: the first of these that there is to leave. Open menus and questions take
    /// the key before, no shortcut of this window does.
    enum class Escape { Bars, Comparison, StillPicture, FullScreen, Offer };
    /// `leave` returns whether there was anything to leave.
    void setEscape(Escape what, std::function<bool()> leave);

    /// The figures over the live image, and the menu's check mark.
    void showStatistics(bool shown);
    /// The mark over a picture that stands still; the button and the menu's check mark, which are ahead of it for a moment.
    void showFrozen(bool frozen, bool checked);
    /// Without the live image there are no figures to show.
    void setShowsLive(bool shows);

    /// Asked when the user closes the window: true to let it close. By default it may.
    void setShouldClose(std::function<bool()> shouldClose) { m_shouldClose = std::move(shouldClose); }

Q_SIGNALS:
    void resized();
    void fullScreenChanged(bool fullScreen);
    void topInsetChanged(int inset);
    /// The window was shown, hidden, minimised or restored.
    void occlusionStateChanged();
    /// A key that nothing in the window handles.
    void otherKeyPressed(int key, bool autoRepeat);

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void updateSeen();
    void updateMinimumSize();
    void layOutContent();
    int stripHeight() const;
    void placeBelowBars();
    void layOutFullScreen();
    void showPointer(bool shown);
    void openMenu();

    QWidget *m_content;
    BWMainMenu *m_menu;
    BWCenteringClipView *m_clipView;
    BWSlidingBars *m_bars;
    BWControlBar *m_controlBar;
    BWComparisonStrip *m_comparisonStrip;
    BWOfferStrip *m_offerStrip;
    BWStatusPill *m_statusPill;
    BWStatisticsPanel *m_statistics;
    BWFrozenMark *m_frozenMark;
    QWidget *m_strip = nullptr;
    BWFrameAutosave *m_frame = nullptr;
    std::function<bool()> m_shouldClose;
    std::array<std::function<bool()>, static_cast<std::size_t>(Escape::Offer) + 1> m_escapes;
    bool m_statisticsWanted = false;
    bool m_showsLive = true;
    BWWindowVisibility m_visibility;
};
