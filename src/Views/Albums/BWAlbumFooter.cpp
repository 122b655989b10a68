// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWAlbumFooter.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWThumbnailKeyboard.h"
#include "Views/Utils/BWIcons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QStackedLayout>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int footerMargin = 8; // points, the same as around the pop-up
constexpr int summaryPage = 0;
constexpr int progressPage = 1;

QToolButton *button(const QString &icon)
{
    auto *button = new QToolButton;
    button->setIcon(BWIcons::icon(icon));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void setName(QToolButton *button, const QString &name, const QKeySequence &key = {})
{
    button->setToolTip(BWUIUtils::withShortcut(name, key));
    button->setAccessibleName(name);
}

template <typename... Widgets>
QWidget *page(QLabel *label, Widgets *...widgets)
{
    auto *page = new QWidget;
    auto *row = new QHBoxLayout(page);
    row->setContentsMargins(footerMargin, footerMargin / 2, footerMargin, footerMargin / 2);
    row->addWidget(label, 1);
    (row->addWidget(widgets), ...);
    return page;
}

} // namespace

BWAlbumFooter::BWAlbumFooter(QWidget *parent)
    : QWidget(parent),
      m_pages(new QStackedLayout(this)),
      m_summary(new BWWrappingLabel),
      m_save(button(u"document-save-as"_s)),
      m_trash(button(u"user-trash"_s)),
      m_progressText(new BWWrappingLabel),
      m_progress(new QProgressBar),
      m_cancel(button(u"process-stop"_s))
{
    constexpr int progressWidth = 80;
    m_progress->setRange(0, 1000);
    m_progress->setTextVisible(false);
    m_progress->setFixedWidth(progressWidth);
    m_pages->addWidget(page(m_summary, m_save, m_trash));
    m_pages->addWidget(page(m_progressText, m_progress, m_cancel));
    connect(m_save, &QToolButton::clicked, this, &BWAlbumFooter::saveTriggered);
    connect(m_trash, &QToolButton::clicked, this, &BWAlbumFooter::trashTriggered);
    connect(m_cancel, &QToolButton::clicked, this, &BWAlbumFooter::cancelTriggered);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void BWAlbumFooter::localize(BWLocalizationManager &manager)
{
    using Command = BWThumbnailKeyboard::Command;
    setName(m_save, manager.text(u"album_manager"_s, u"save_button"_s, u"Save the selection as..."_s),
            BWThumbnailKeyboard::keyFor(Command::SaveAs));
    setName(m_trash, manager.text(u"album_manager"_s, u"trash_button"_s, u"Move the selection to the Trash"_s),
            BWThumbnailKeyboard::keyFor(Command::Trash));
    setName(m_cancel, manager.text(u"album_manager"_s, u"cancel_button"_s, u"Cancel"_s));
}

void BWAlbumFooter::setSummary(const QString &text, bool selectionExists)
{
    m_summary->setWrappingText(text);
    m_save->setEnabled(selectionExists);
    m_trash->setEnabled(selectionExists);
}

void BWAlbumFooter::showProgress(const QString &text, double done)
{
    m_progressText->setWrappingText(text);
    m_progress->setAccessibleName(text);
    m_progress->setValue(static_cast<int>(done * m_progress->maximum()));
    m_pages->setCurrentIndex(progressPage);
}

void BWAlbumFooter::endProgress()
{
    m_pages->setCurrentIndex(summaryPage);
}
