// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWSlidingBars.h"

#include <algorithm>
#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QMenuBar>
#include <QStyle>
#include <QVBoxLayout>
#include <utility>

BWSlidingBars::BWSlidingBars(const QMenuBar &menuBar, QWidget *content)
    : QWidget(content),
      m_column(new QVBoxLayout(this)),
      m_menuBar(new QMenuBar(this)),
      m_rules({[this](bool shown) { slide(shown); }, [this](bool shown) { Q_EMIT pointerShown(shown); },
               [] { return QApplication::activePopupWidget() != nullptr; }})
{
    setAutoFillBackground(true);
    m_column->setContentsMargins({});
    m_column->setSpacing(0);
    m_column->addWidget(m_menuBar);
    m_menuBar->setNativeMenuBar(false); // a desktop's own panel is covered by the full screen
    m_menuBar->addActions(menuBar.actions());
    m_menuBar->installEventFilter(this);
    m_menuBar->hide();
    connect(&m_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant &top) {
        move(0, top.toInt());
        Q_EMIT coveredHeightChanged();
    });
    connect(&m_slide, &QVariantAnimation::finished, this, [this] { qApp->removeEventFilter(this); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { focusChanged(now); });
}

BWSlidingBars::~BWSlidingBars()
{
    disconnect(qApp, nullptr, this, nullptr); // an open list loses the focus when it goes, after the rules
}

void BWSlidingBars::addControlBar(QWidget *bar)
{
    m_column->addWidget(bar);
}

void BWSlidingBars::setSliding(bool slides)
{
    m_slides = slides;
    m_menuBar->setVisible(slides);
    m_shown = !slides;
    placeIn(width());
    if (slides)
        m_rules.begin(height());
    else
        m_rules.end();
    returnKeyboard();
    Q_EMIT coveredHeightChanged();
}

void BWSlidingBars::placeIn(int width)
{
    endSlide();
    const int height = sizeHint().height();
    setGeometry(0, m_shown ? 0 : -height, width, height);
}

void BWSlidingBars::pointerAt(const std::optional<QPoint> &position)
{
    m_rules.pointerAt(position ? std::optional(position->y()) : std::nullopt,
                      QGuiApplication::mouseButtons() != Qt::NoButton);
}

bool BWSlidingBars::endKeyboard()
{
    const bool ends = m_slides && m_rules.isKeyboardInBars();
    if (ends)
        returnKeyboard();
    return ends;
}

void BWSlidingBars::openMenu()
{
    m_rules.callBars();
    endSlide(); // a menu opens where its title is at that moment
    m_menuBar->setActiveAction(m_menuBar->actions().value(0));
}

void BWSlidingBars::focusChanged(const QWidget *now)
{
    const bool byClick = QGuiApplication::mouseButtons() != Qt::NoButton;
    m_rules.setKeyboardInBars(now && isAncestorOf(now) && !byClick);
}

void BWSlidingBars::slide(bool in)
{
    constexpr int longest = 150; // milliseconds
    if (std::exchange(m_shown, in) == in)
        return;
    m_slide.stop();
    m_slide.setStartValue(y());
    m_slide.setEndValue(in ? 0 : -height());
    // Desktops where users can switch animations off report it to Qt as a duration of 0.
    m_slide.setDuration(std::min(longest, style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this)));
    qApp->installEventFilter(this);
    m_slide.start();
    if (!in)
        returnKeyboard();
}

void BWSlidingBars::endSlide()
{
    if (m_slide.state() == QAbstractAnimation::Running)
        m_slide.setCurrentTime(m_slide.duration());
}

void BWSlidingBars::returnKeyboard()
{
    const QWidget *focus = window()->focusWidget();
    if (m_slides && focus && isAncestorOf(focus))
        Q_EMIT keyboardReturned();
}

bool BWSlidingBars::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate)
        m_rules.setActive(event->type() == QEvent::WindowActivate);
    return QWidget::event(event);
}

/// Sees all events only while the bars slide: what is pressed meanwhile must find them in their place.
bool BWSlidingBars::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (watched == m_menuBar && type == QEvent::Shortcut)
        m_rules.callBars();
    if (type == QEvent::Shortcut || type == QEvent::KeyPress || type == QEvent::MouseButtonPress)
        endSlide();
    return QWidget::eventFilter(watched, event);
}
