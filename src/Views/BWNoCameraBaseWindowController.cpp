// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/BWNoCameraBaseWindowController.h"

#include "Model/Session/BWStartProblemText.h"
#include "Utils/BWUIUtils.h"
#include "Views/Utils/BWNoticeView.h"
#include "Views/Utils/BWPreparingView.h"

#include <QAction>
#include <QCloseEvent>
#include <QPushButton>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr double pollSeconds = 0.3;
}

BWNoCameraBaseWindowController::BWNoCameraBaseWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent,
                                                               Qt::WindowFlags flags)
    : QDialog(parent, flags),
      m_callbacks(std::move(callbacks)),
      m_clock(clock),
      m_view(new BWNoticeView(u"brimwellpro-plug-in"_s)),
      m_preparing(new BWPreparingView),
      m_actionButton(m_view->addButton()),
      m_quitButton(m_view->addButton())
{
    m_actionButton->hide();
    m_view->addContent(m_preparing);
    m_view->fill(*this);
    connect(m_quitButton, &QPushButton::clicked, this, [this] { onTerminate(); });
    watchPendingDevices();
}

void BWNoCameraBaseWindowController::setTexts(const Texts &texts, BWLocalizationManager &manager)
{
    setWindowTitle(texts.title);
    m_view->setHeading(texts.heading);
    m_view->setExplanation(texts.explanation);
    m_view->setObstacleHeading(BWStartProblemText::title(manager));
    m_preparing->setText(texts.preparing);
    m_quitButton->setText(texts.quit);
    m_quitButton->setShortcut(u"Ctrl+Q"_s); // the menu's shortcut does not reach this window
}

void BWNoCameraBaseWindowController::setPreparingCamera(bool preparing)
{
    m_preparing->setPreparing(preparing);
}

void BWNoCameraBaseWindowController::setObstacle(const QString &obstacle)
{
    m_view->setObstacle(obstacle);
}

void BWNoCameraBaseWindowController::showAction(QAction &action)
{
    const auto update = [this, &action] {
        m_actionButton->setText(action.text());
        m_actionButton->setToolTip(BWUIUtils::withShortcut(action.toolTip(), action.shortcut()));
        m_actionButton->setVisible(action.isEnabled());
    };
    addAction(&action); // the menu's key reaches only the main window
    connect(&action, &QAction::changed, this, update);
    connect(m_actionButton, &QPushButton::clicked, &action, &QAction::trigger);
    update();
}

void BWNoCameraBaseWindowController::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // It appears without warning: a key that was meant for a snapshot must not press a button.
    setFocus();
}

void BWNoCameraBaseWindowController::closeEvent(QCloseEvent *event)
{
    event->ignore(); // onTerminate() closes it, or the user calls that off
    onTerminate();
}

void BWNoCameraBaseWindowController::watchPendingDevices()
{
    if (const auto next = std::exchange(m_next, {}))
        next->cancel();
    const bool pending = m_callbacks.pendingDevices && m_callbacks.pendingDevices();
    setPreparingCamera(pending);
    setObstacle(m_callbacks.obstacle ? m_callbacks.obstacle() : QString());
    if (pending)
        m_next = DispatchAfterStrict::dispatchForQueue(
            this, [this] { watchPendingDevices(); }, pollSeconds, m_clock);
}
