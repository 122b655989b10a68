// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWMainWindow.h"

#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/LiveView/BWLiveViewGeometry.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWFrozenMark.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWOfferStrip.h"
#include "Views/MainWindow/BWPictureFocus.h"
#include "Views/MainWindow/BWSlidingBars.h"
#include "Views/MainWindow/BWStatisticsPanel.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWAccessibility.h"
#include "Views/Utils/BWTouchInput.h"
#include "Views/Utils/BWViewKeys.h"
#include "Views/Utils/Windows/BWFrameAutosave.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <algorithm>
#include <QAction>
#include <QCloseEvent>
#include <QHoverEvent>
#include <QMenu>
#include <QMenuBar>
#include <utility>

using namespace Qt::StringLiterals;

BWMainWindow::BWMainWindow(BWLiveRenderer &renderer)
    : m_content(new QWidget(this)),
      m_menu(new BWMainMenu(*this)),
      m_clipView(new BWCenteringClipView(renderer, m_content)),
      m_bars(new BWSlidingBars(*menuBar(), m_content)),
      m_controlBar(new BWControlBar(*m_menu, m_bars)),
      m_comparisonStrip(new BWComparisonStrip(*m_menu, m_content)),
      m_offerStrip(new BWOfferStrip(m_content)),
      m_statusPill(new BWStatusPill(m_content)),
      m_statistics(new BWStatisticsPanel([&renderer] { return renderer.figures(); }, m_content)),
      m_frozenMark(new BWFrozenMark(m_content)),
      m_visibility(*this)
{
    BWAccessibleRoles::install();
    setObjectName(u"main"_s);
    setCentralWidget(m_content);
    m_content->setAttribute(Qt::WA_Hover); // to hear where the pointer is, whichever part it is over
    m_content->installEventFilter(this);
    m_controlBar->installEventFilter(this);
    m_bars->addControlBar(m_controlBar);
    for (BWPictureStrip *strip : std::initializer_list<BWPictureStrip *>{m_comparisonStrip, m_offerStrip})
        strip->installEventFilter(this);
    // The bar comes first in the tab order, as it does for the eye.
    m_bars->raise();
    m_statusPill->raise();
    setTabOrder(m_controlBar, m_clipView);
    setTabOrder(m_clipView, m_comparisonStrip);
    m_offerStrip->followInTabOrder(*m_clipView);
    new BWPictureFocus(*m_clipView, *m_clipView);
    m_clipView->setFocus();
    connect(m_controlBar, &BWControlBar::lastCaptureShown, m_menu->lastCapture, &QAction::setEnabled);
    connect(m_menu->lastCapture, &QAction::triggered, m_controlBar, &BWControlBar::lastCaptureTriggered);
    connect(m_controlBar, &BWControlBar::recordingShown, m_menu, &BWMainMenu::showRecording);
    connect(m_menu->fullScreen, &QAction::toggled, this, &BWMainWindow::setFullScreen);
    connect(&m_visibility, &BWWindowVisibility::changed, this, &BWMainWindow::updateSeen);
    connect(m_menu, &BWMainMenu::barRequested, this, &BWMainWindow::openMenu);
    connect(m_bars, &BWSlidingBars::coveredHeightChanged, this, &BWMainWindow::placeBelowBars);
    connect(m_bars, &BWSlidingBars::keyboardReturned, this, [this] { m_clipView->setFocus(); });
    connect(m_offerStrip, &BWOfferStrip::keyboardReturned, this, [this] { m_clipView->setFocus(); });
    connect(m_bars, &BWSlidingBars::pointerShown, this, &BWMainWindow::showPointer);
    connect(m_clipView, &QWidget::customContextMenuRequested, m_menu->pictureMenu,
            [this](QPoint at) { m_menu->pictureMenu->popup(m_clipView->viewport()->mapToGlobal(at)); });
    connect(&m_clipView->touchInput(), &BWTouchInput::touched, this, [this](QPoint at) {
        constexpr int reach = 24; // points; fingers do not get to the very edge
        const QPoint place = m_clipView->viewport()->mapTo(m_content, at);
        const bool callsBars = isFullScreen() && place.y() < reach;
        if (callsBars)
            m_clipView->touchInput().ignoreTap();
        m_bars->pointerAt(callsBars ? QPoint(place.x(), 0) : place);
        m_statusPill->pointerAt(place);
    });
    setEscape(Escape::Bars, [this] { return m_bars->endKeyboard(); });
    setEscape(Escape::FullScreen, [this] {
        const bool leaves = isFullScreen();
        if (leaves)
            setFullScreen(false);
        return leaves;
    });
    setEscape(Escape::Offer, [this] { return m_offerStrip->end(); });
}

void BWMainWindow::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"camera_window"_s, u"window_title"_s, u"BrimwellPro"_s));
    m_clipView->setAccessibleName(manager.text(u"camera_window"_s, u"live_image"_s, u"Live image"_s));
    m_menu->localizeWithManager(manager);
    m_controlBar->localizeWithManager(manager);
    m_comparisonStrip->localizeWithManager(manager);
    m_offerStrip->localizeWithManager(manager);
    m_statistics->localizeWithManager(manager);
    m_frozenMark->localizeWithManager(manager);
    updateMinimumSize();
    layOutContent();
}

void BWMainWindow::setStrip(QWidget *strip)
{
    m_strip = strip;
    strip->setParent(m_content);
    strip->installEventFilter(this);
    setTabOrder(m_clipView, strip);
    layOutContent();
}

void BWMainWindow::resetLayout()
{
    setWindowState(windowState() & ~(Qt::WindowMaximized | Qt::WindowFullScreen));
    const QSize window =
        defaultContentSize.expandedTo(m_content->minimumSize()) + QSize(0, menuBar()->sizeHint().height());
    const QMargins margins = BWFrameAutosave::margins(*this);
    BWFrameAutosave::setFrame(*this, BWWindowPlacement::onScreens().camera(window, margins), margins);
}

void BWMainWindow::rememberFrame(BWUserDefaults &defaults)
{
    m_frame = new BWFrameAutosave(*this, u"main"_s, defaults);
}

void BWMainWindow::setVisible(bool visible)
{
    if (visible && !isVisible() && m_frame && !m_frame->isRemembered())
        resetLayout();
    QMainWindow::setVisible(visible);
}

void BWMainWindow::setFullScreen(bool fullScreen)
{
    if (m_frame)
        m_frame->storeChange();
    setWindowState(windowState().setFlag(Qt::WindowFullScreen, fullScreen));
}

void BWMainWindow::showStatistics(bool shown)
{
    m_statisticsWanted = shown;
    m_menu->statistics->setChecked(shown);
    updateSeen();
}

void BWMainWindow::showFrozen(bool frozen, bool checked)
{
    m_menu->freeze->setChecked(checked);
    m_controlBar->showFrozen(checked);
    m_frozenMark->setVisible(frozen);
    layOutContent();
}

void BWMainWindow::updateSeen()
{
    m_clipView->setSeen(m_visibility.isSeen());
    m_statistics->setVisible(m_statisticsWanted && m_showsLive && m_visibility.isSeen());
}

void BWMainWindow::setShowsLive(bool shows)
{
    m_showsLive = shows;
    updateSeen();
}

void BWMainWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(BWViewKeys::leave) && !event->isAutoRepeat()) {
        for (const std::function<bool()> &leave : m_escapes) {
            if (leave && leave())
                return;
        }
    }
    Q_EMIT otherKeyPressed(event->key(), event->isAutoRepeat());
}

void BWMainWindow::setEscape(Escape what, std::function<bool()> leave)
{
    m_escapes.at(static_cast<std::size_t>(what)) = std::move(leave);
}

/// The control bar decides how narrow the window may become; its captions and contents change.
void BWMainWindow::updateMinimumSize()
{
    // Of which a frozen picture with its statistics and a status line that wraps leave a little.
    const int picture = std::max(200, 13 * fontMetrics().lineSpacing());
    const int strip = stripHeight();
    const int widest = std::max({m_controlBar->minimumSizeHint().width(), m_comparisonStrip->neededWidth(),
                                 m_offerStrip->neededWidth(), strip > 0 ? m_strip->minimumSizeHint().width() : 0});
    m_content->setMinimumSize(widest,
                              BWLiveViewGeometry::barHeight + picture + strip + m_comparisonStrip->takenHeight());
}

int BWMainWindow::stripHeight() const
{
    return m_strip && !m_strip->isHidden() ? m_strip->sizeHint().height() : 0;
}

void BWMainWindow::layOutContent()
{
    const int strip = stripHeight();
    if (strip > 0)
        m_strip->setGeometry(0, m_content->height() - strip, m_content->width(), strip);
    const QRect area = m_content->rect().adjusted(0, 0, 0, -strip);
    m_clipView->setGeometry(area);
    m_bars->placeIn(m_content->width());
    m_comparisonStrip->placeIn(area);
    const QRect aboveComparison = area.adjusted(0, 0, 0, -m_comparisonStrip->takenHeight());
    m_offerStrip->placeIn(aboveComparison);
    m_statusPill->placeIn(aboveComparison.adjusted(0, 0, 0, -m_offerStrip->takenHeight()));
    placeBelowBars();
}

/// The picture itself stays where it is while the bars slide over it; what lies over it moves with them.
void BWMainWindow::placeBelowBars()
{
    const int viewTop = m_clipView->viewport()->mapTo(m_content, QPoint()).y();
    m_clipView->setCovered({0, std::max(0, topInset() - viewTop), 0, m_comparisonStrip->takenHeight()});
    const QRect picture = m_content->rect().adjusted(0, topInset(), 0, 0);
    const QRect belowMark = m_frozenMark->placeIn(picture);
    const bool hasCaption = !m_comparisonStrip->isHidden() && belowMark == picture; // at the place of the mark
    m_statistics->placeIn(belowMark.adjusted(0, hasCaption ? m_comparisonStrip->sizeHint().height() : 0, 0, 0));
    Q_EMIT topInsetChanged(topInset());
}

int BWMainWindow::topInset() const
{
    return m_bars->coveredHeight();
}

void BWMainWindow::layOutFullScreen()
{
    const bool fullScreen = isFullScreen();
    menuBar()->setVisible(!fullScreen);
    m_clipView->setTopInset(fullScreen ? 0 : BWLiveViewGeometry::barHeight);
    m_bars->setSliding(fullScreen);
    Q_EMIT fullScreenChanged(fullScreen);
}

void BWMainWindow::showPointer(bool shown)
{
    if (shown)
        m_clipView->unsetCursor();
    else
        m_clipView->setCursor(Qt::BlankCursor);
}

void BWMainWindow::openMenu()
{
    if (isFullScreen())
        m_bars->openMenu();
    else
        menuBar()->setActiveAction(menuBar()->actions().value(0));
}

bool BWMainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride
        && static_cast<const QKeyEvent *>(event)->matches(BWViewKeys::leave)) {
        event->accept(); // the shortcut of an item tells the key; which thing it leaves is decided here
        return true;
    }
    const bool result = QMainWindow::event(event);
    // This event paints what is due and flushes it. When the screen shows it, neither X11 nor Wayland says.
    if (event->type() == QEvent::UpdateRequest)
        m_clipView->windowFlushed();
    return result;
}

bool BWMainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_content && event->type() == QEvent::Resize) {
        layOutContent();
        Q_EMIT resized();
    }
    if (watched == m_content && (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)) {
        const QPoint position = static_cast<const QHoverEvent *>(event)->position().toPoint();
        m_bars->pointerAt(position);
        m_statusPill->pointerAt(position);
    }
    if (watched == m_content && event->type() == QEvent::HoverLeave)
        m_bars->pointerAt({});
    const QEvent::Type type = event->type();
    if ((watched == m_comparisonStrip || watched == m_offerStrip)
        && (type == QEvent::Show || type == QEvent::Hide || type == QEvent::LayoutRequest)) {
        updateMinimumSize();
        layOutContent();
    }
    if (watched == m_strip && (type == QEvent::ShowToParent || type == QEvent::HideToParent)) {
        updateMinimumSize();
        layOutContent();
        Q_EMIT resized();
    }
    if ((watched == m_controlBar || watched == m_strip) && type == QEvent::LayoutRequest)
        updateMinimumSize();
    return QMainWindow::eventFilter(watched, event);
}

void BWMainWindow::closeEvent(QCloseEvent *event)
{
    event->setAccepted(!m_shouldClose || m_shouldClose());
}

void BWMainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange)
        return;
    m_menu->fullScreen->setChecked(isFullScreen()); // the desktop can change it as well
    if (m_bars->slides() != isFullScreen())
        layOutFullScreen();
    Q_EMIT occlusionStateChanged();
}

void BWMainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    Q_EMIT occlusionStateChanged();
}

void BWMainWindow::hideEvent(QHideEvent *event)
{
    QMainWindow::hideEvent(event);
    Q_EMIT occlusionStateChanged();
}
