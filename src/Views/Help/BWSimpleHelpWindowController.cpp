// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Help/BWSimpleHelpWindowController.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Utils/BWVersion.h"
#include "Views/Help/BWShortcutTable.h"
#include "Views/Utils/BWControls.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWNoticeView.h"
#include "Views/Utils/Windows/BWFrameAutosave.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"
#include "Views/Utils/Windows/BWWindowPlacement.h"

#include <algorithm>
#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int helpMargin = 24;
constexpr int helpSectionSpacing = 20;
constexpr int helpRowSpacing = 8;
constexpr double shortcutsTitleScale = 1.1;

QLabel *label(bool wraps)
{
    auto *made = new QLabel;
    made->setTextFormat(Qt::PlainText);
    made->setWordWrap(wraps);
    return made;
}

QPushButton *pushButton(const QString &icon)
{
    auto *button = new QPushButton(BWIcons::icon(icon), QString());
    button->setAutoDefault(false);
    return button;
}

} // namespace

BWSimpleHelpWindowController::BWSimpleHelpWindowController(const BWHelpContact &contact, Callbacks callbacks,
                                                           const QWidget *cameraWindow)
    : QWidget(nullptr, Qt::Tool),
      m_contact(contact),
      m_callbacks(std::move(callbacks)),
      m_cameraWindow(cameraWindow),
      m_introduction(label(true)),
      m_faqButton(pushButton(u"help-contents"_s)),
      m_supportButton(pushButton(u"mail-message-new"_s)),
      m_supportNote(label(true)),
      m_problem(new BWCopyableLabel),
      m_shortcutsTitle(label(false)),
      m_shortcutsView(new QScrollArea),
      m_shortcuts(new BWShortcutTable)
{
    m_problem->setWordWrap(true);
    m_problem->hide();

    auto *head = new BWProgramHead(QStringLiteral("BrimwellPro " BW_VERSION));
    head->addLine(m_introduction);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(helpMargin, helpMargin, helpMargin, helpMargin);
    column->setSpacing(helpSectionSpacing);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(head);
    column->addLayout(ways());
    column->addWidget(new BWLine(Qt::Horizontal));
    column->addWidget(m_shortcutsTitle);
    m_shortcutsView->setWidgetResizable(true);
    m_shortcutsView->setWidget(m_shortcuts);
    m_shortcuts->setContentsMargins(helpRowSpacing, helpRowSpacing, helpRowSpacing, helpRowSpacing);
    column->addWidget(m_shortcutsView);
    updateFonts();

    connect(m_faqButton, &QPushButton::clicked, this, &BWSimpleHelpWindowController::onFrequentlyAskedQuestions);
    connect(m_supportButton, &QPushButton::clicked, this, &BWSimpleHelpWindowController::onWriteToSupport);
    new BWClosingKeys(*this);
}

QLayout *BWSimpleHelpWindowController::ways()
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(helpMargin / 2);
    grid->setVerticalSpacing(helpRowSpacing);
    grid->setColumnStretch(1, 1);
    const auto add = [&](QPushButton *button, const QString &address) {
        const int row = grid->rowCount();
        grid->addWidget(button, row, 0);
        grid->addWidget(new BWCopyableLabel(address), row, 1);
        button->setVisible(!address.isEmpty());
        return row;
    };
    add(m_faqButton, m_contact.faqPage.toDisplayString());
    const int row = add(m_supportButton, m_contact.supportAddress);
    m_supportNote->setVisible(!m_contact.supportAddress.isEmpty());
    grid->addWidget(m_supportNote, row + 1, 0, 1, 2);
    grid->addWidget(m_problem, row + 2, 0, 1, 2);
    return grid;
}

void BWSimpleHelpWindowController::updateFonts()
{
    m_shortcutsTitle->setFont(bwHeadingFont(font(), shortcutsTitleScale));
    m_problem->setFont(bwHeadingFont(font(), 1));
}

void BWSimpleHelpWindowController::localizeWithManager(BWLocalizationManager &manager)
{
    setWindowTitle(manager.text(u"help_window"_s, u"window_title"_s, u"Help"_s));
    m_introduction->setText(
        manager.text(u"help_window"_s, u"introduction_label"_s,
                     u"Something is unclear, or does not work as it should? You will find help here."_s));
    m_faqButton->setText(manager.text(u"help_window"_s, u"faq_button"_s, u"&Frequently asked questions"_s));
    m_supportButton->setText(manager.text(u"help_window"_s, u"support_button"_s, u"&Write to support"_s));
    m_supportNote->setText(manager.text(u"help_window"_s, u"support_note_label"_s,
                                        u"The e-mail already tells the version, your system and the attached cameras. "
                                        "Nothing is sent until you send it."_s));
    m_cannotOpen = manager.text(u"help_window"_s, u"cannot_open_label"_s,
                                u"No program was found that can open this. Please use this address:"_s);
    m_shortcutsTitle->setText(manager.text(u"help_window"_s, u"keyboard_shortcuts_label"_s, u"Keyboard and mouse"_s));
    m_shortcutsView->setAccessibleName(m_shortcutsTitle->text());
    m_views = BWShortcutSection::ofViews(manager);
    m_mailSubject = manager.text(u"help_window"_s, u"mail_subject"_s, u"BrimwellPro %1: request for help"_s);
    m_mailRequest = manager.text(u"help_window"_s, u"mail_request"_s,
                                 u"Please tell us here what you did, what happened, and what you expected instead:"_s);
}

void BWSimpleHelpWindowController::makeKeyAndOrderFront()
{
    if (!isVisible())
        prepare();
    show();
    raise();
    activateWindow();
}

void BWSimpleHelpWindowController::onFrequentlyAskedQuestions()
{
    open(m_contact.faqPage, m_contact.faqPage.toDisplayString());
}

void BWSimpleHelpWindowController::onWriteToSupport()
{
    open(mail(), m_contact.supportAddress);
}

void BWSimpleHelpWindowController::open(const QUrl &url, const QString &address)
{
    const bool opened = m_callbacks.openUrl(url);
    m_problem->setText(BWUIUtils::inOneLine(m_cannotOpen, address));
    m_problem->setVisible(!opened);
    fitShortcuts();
}

QUrl BWSimpleHelpWindowController::mail() const
{
    BWSupportMail mail{m_contact.supportAddress, m_mailSubject.arg(QStringLiteral(BW_VERSION)), m_mailRequest, {}};
    mail.facts = {QStringLiteral("BrimwellPro " BW_VERSION), BWSupportMail::system()};
    const QList<BWCameraPtr> cameras = m_callbacks.cameras();
    if (cameras.isEmpty())
        mail.facts.append(u"No camera"_s);
    for (const BWCameraPtr &camera : cameras)
        mail.facts.append(camera->detectedCamera()->description());
    return mail.url();
}

void BWSimpleHelpWindowController::prepare()
{
    m_problem->hide();
    const int beside = 2 * helpMargin + helpRowSpacing + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    m_shortcuts->setSections(BWShortcutSection::ofActions(m_callbacks.actions()) + m_views,
                             m_cameraWindow->screen()->availableGeometry().width() - beside);
    fitShortcuts();
    if (!std::exchange(m_placed, true))
        placeOverCameraWindow();
}

/// Called once; after that the window stays where the user puts it.
void BWSimpleHelpWindowController::placeOverCameraWindow()
{
    const QRect camera = m_cameraWindow->frameGeometry();
    adjustSize(); // if showing resized it, the position would become that of the content
    QRect place(QPoint(), size().grownBy(BWFrameAutosave::margins(*this, m_cameraWindow)));
    place.moveCenter(camera.center());
    move(BWWindowPlacement::onScreens().fitted(place, camera).topLeft());
}

/// Shows all of them if the screen is high enough.
void BWSimpleHelpWindowController::fitShortcuts()
{
    constexpr int least = 100;
    const int frame = 2 * m_shortcutsView->frameWidth();
    QSize size = m_shortcuts->sizeHint() + QSize(frame, frame);
    m_shortcutsView->setFixedSize(size);
    const int room = m_cameraWindow->screen()->availableGeometry().height();
    const int excess = layout()->totalSizeHint().height() + BWWindowPlacement::assumedMargins.top() - room;
    if (excess <= 0)
        return;
    size.rwidth() += style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    size.rheight() = std::max(size.height() - excess, least);
    m_shortcutsView->setFixedSize(size);
}

void BWSimpleHelpWindowController::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateFonts();
}
