// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWAlbumNotice.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Utils/BWUIUtils.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWViewKeys.h"

#include <QHBoxLayout>
#include <QRegularExpression>
#include <QToolButton>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr double noticeSeconds = 12; // time to read it, think, and decide to undo
constexpr int noticeBarMargin = 8; // points, as in the footer

} // namespace

BWWrappingLabel::BWWrappingLabel()
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setWordWrap(true);
}

void BWWrappingLabel::setWrappingText(QString text)
{
    setToolTip(text);
    setAccessibleName(text);
    // File names have no spaces, and may be longer than a line.
    static const QRegularExpression joint(u"(?<=[_-])(?=\\w)"_s);
    setText(text.replace(joint, QString(QChar(0x200b)))); // a space without width
}

BWAlbumNotice::BWAlbumNotice(QWidget *parent, BWClock &clock)
    : QFrame(parent), m_clock(clock), m_text(new BWWrappingLabel), m_undo(new QToolButton)
{
    m_undo->setIcon(BWIcons::icon(u"edit-undo"_s));
    m_undo->setAutoRaise(true);
    m_undo->setFocusPolicy(Qt::TabFocus);
    m_undo->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(noticeBarMargin, noticeBarMargin / 2, noticeBarMargin, noticeBarMargin / 2);
    row->addWidget(m_text, 1);
    row->addWidget(m_undo);
    setFrameShape(StyledPanel);
    setAutoFillBackground(true);
    hide();
    connect(m_undo, &QToolButton::clicked, this, &BWAlbumNotice::undoTriggered);
}

BWAlbumNotice::~BWAlbumNotice()
{
    if (m_end)
        m_end->cancel();
}

void BWAlbumNotice::localize(BWLocalizationManager &manager)
{
    m_undo->setText(manager.text(u"album_manager"_s, u"undo_button"_s, u"Undo"_s));
    m_undo->setToolTip(BWUIUtils::withShortcut(m_undo->text(), BWViewKeys::undo));
}

void BWAlbumNotice::showNotice(const QString &text, bool canUndo)
{
    endNotice();
    m_text->setWrappingText(text);
    m_undo->setVisible(canUndo);
    show();
    raise();
    m_end = DispatchAfterStrict::dispatchForQueue(
        this, [this] { endNotice(); }, noticeSeconds, m_clock);
}

void BWAlbumNotice::endNotice()
{
    if (const auto end = std::exchange(m_end, nullptr))
        end->cancel();
    if (window()->focusWidget() == m_undo)
        focusPreviousChild(); // back to the thumbnails; the next one would be the pop-up, where keys change the album
    hide();
}

QString BWAlbumNotice::text() const
{
    return isHidden() ? QString() : m_text->toolTip();
}

void BWAlbumNotice::mousePressEvent(QMouseEvent *)
{
    endNotice();
}
