#include "Views/Albums/BWAlbumFooter.h"

#include "Model/BWLocalizationManager.h"
#include "Views/Utils/BWIcons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QRegularExpression>
#include <QStackedLayout>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

constexpr double noticeSeconds = 12; // to read it, think, and change one's mind
constexpr int margin = 8; // points, as around the pop-up
constexpr int summaryPage = 0;
constexpr int progressPage = 1;
constexpr int noticePage = 2;

/// A text that takes more lines rather than making the window wider.
QLabel *wrappingLabel()
{
    class Label : public QLabel {
    public:
        QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }
    };
    auto *label = new Label;
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    label->setWordWrap(true);
    return label;
}

void setText(QLabel *label, QString text)
{
    label->setToolTip(text);
    label->setAccessibleName(text);
    // Names of files have no spaces, and may be longer than a line.
    static const QRegularExpression joint(u"(?<=[_-])(?=\\w)"_s);
    label->setText(text.replace(joint, QString(QChar(0x200b)))); // a space without width
}

QToolButton *button(const QString &icon)
{
    auto *button = new QToolButton;
    button->setIcon(BWIcons::icon(icon));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void setName(QToolButton *button, const QString &name)
{
    button->setToolTip(name);
    button->setAccessibleName(name);
}

template <typename... Widgets>
QWidget *page(QLabel *label, Widgets *...widgets)
{
    auto *page = new QWidget;
    auto *row = new QHBoxLayout(page);
    row->setContentsMargins(margin, margin / 2, margin, margin / 2);
    row->addWidget(label, 1);
    (row->addWidget(widgets), ...);
    return page;
}

} // namespace

BWAlbumFooter::BWAlbumFooter(QWidget *parent, BWClock &clock)
    : QWidget(parent),
      m_clock(clock),
      m_pages(new QStackedLayout(this)),
      m_summary(wrappingLabel()),
      m_save(button(u"document-save-as"_s)),
      m_trash(button(u"user-trash"_s)),
      m_progressText(wrappingLabel()),
      m_progress(new QProgressBar),
      m_cancel(button(u"process-stop"_s)),
      m_notice(wrappingLabel()),
      m_undo(button(u"edit-undo"_s))
{
    constexpr int progressWidth = 80;
    m_progress->setRange(0, 1000);
    m_progress->setTextVisible(false);
    m_progress->setFixedWidth(progressWidth);
    m_undo->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_pages->addWidget(page(m_summary, m_save, m_trash));
    m_pages->addWidget(page(m_progressText, m_progress, m_cancel));
    m_pages->addWidget(page(m_notice, m_undo));
    connect(m_save, &QToolButton::clicked, this, &BWAlbumFooter::saveTriggered);
    connect(m_trash, &QToolButton::clicked, this, &BWAlbumFooter::trashTriggered);
    connect(m_cancel, &QToolButton::clicked, this, &BWAlbumFooter::cancelTriggered);
    connect(m_undo, &QToolButton::clicked, this, &BWAlbumFooter::undoTriggered);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

BWAlbumFooter::~BWAlbumFooter()
{
    endNotice();
}

void BWAlbumFooter::localize(BWLocalizationManager &manager)
{
    setName(m_save, manager.text(u"album_manager"_s, u"save_button"_s, u"Save the selection as..."_s));
    setName(m_trash, manager.text(u"album_manager"_s, u"trash_button"_s, u"Move the selection to the Trash"_s));
    setName(m_cancel, manager.text(u"album_manager"_s, u"cancel_button"_s, u"Cancel"_s));
    m_undo->setText(manager.text(u"album_manager"_s, u"undo_button"_s, u"Undo"_s));
}

void BWAlbumFooter::setSummary(const QString &text, bool selectionExists)
{
    setText(m_summary, text);
    m_save->setEnabled(selectionExists);
    m_trash->setEnabled(selectionExists);
}

void BWAlbumFooter::showProgress(const QString &text, double done)
{
    m_inProgress = true;
    setText(m_progressText, text);
    m_progress->setAccessibleName(text);
    m_progress->setValue(static_cast<int>(done * m_progress->maximum()));
    showPage();
}

void BWAlbumFooter::endProgress()
{
    m_inProgress = false;
    showPage();
}

void BWAlbumFooter::showNotice(const QString &text, bool canUndo)
{
    endNotice();
    setText(m_notice, text);
    m_undo->setVisible(canUndo);
    m_noticeEnd = DispatchAfterStrict::dispatchForQueue(
        this, [this] { endNotice(); }, noticeSeconds, m_clock);
    showPage();
}

void BWAlbumFooter::endNotice()
{
    if (m_noticeEnd)
        m_noticeEnd->cancel();
    m_noticeEnd.reset();
    showPage();
}

void BWAlbumFooter::showPage()
{
    m_pages->setCurrentIndex(m_inProgress ? progressPage : m_noticeEnd ? noticePage : summaryPage);
}
