// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWNoticeView.h"

#include "Views/Utils/BWIcons.h"

#include <algorithm>
#include <QDialog>
#include <QFocusEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

namespace {

constexpr int illustrationSize = 96;
constexpr int noticeMargin = 24;
constexpr double headingScale = 1.4;
constexpr double narrowestColumnInEms = 30;
constexpr int noticeIconSize = 64;
constexpr int iconDistance = 20;
constexpr int lineSpacing = 4;
constexpr double titleScale = 1.4;

/// Shows an icon at a fixed size, redrawn whenever the palette or the screen changes.
class IconView : public QWidget {
public:
    IconView(const QIcon &icon, int size) : m_icon(icon) { setFixedSize(size, size); }

    QSize sizeHint() const override { return minimumSize(); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        m_icon.paint(&painter, rect());
    }

private:
    QIcon m_icon;
};

} // namespace

BWCopyableLabel::BWCopyableLabel(const QString &text, QWidget *parent) : QLabel(text, parent)
{
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFocusPolicy(Qt::StrongFocus);
}

void BWCopyableLabel::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        setSelection(0, static_cast<int>(text().size()));
}

void BWCopyableLabel::focusOutEvent(QFocusEvent *event)
{
    QLabel::focusOutEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        setSelection(0, 0);
}

QFont bwHeadingFont(const QFont &font, double scale)
{
    QFont heading = font;
    if (heading.pointSizeF() > 0) // unknown if the font's size is given in pixels
        heading.setPointSizeF(heading.pointSizeF() * scale);
    heading.setWeight(QFont::Bold);
    return heading;
}

BWNoticeView::BWNoticeView(const QString &illustrationName, QWidget *parent)
    : QWidget(parent),
      m_heading(new QLabel),
      m_explanation(new QLabel),
      m_column(new QVBoxLayout),
      m_buttons(new QHBoxLayout)
{
    for (QLabel *label : {m_heading, m_explanation}) {
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
        m_column->addWidget(label);
    }
    m_column->setSpacing(noticeMargin / 2);
    m_buttons->addStretch();

    auto *upper = new QHBoxLayout;
    upper->setSpacing(noticeMargin);
    upper->addWidget(new IconView(BWIcons::icon(illustrationName), illustrationSize), 0, Qt::AlignTop);
    upper->addLayout(m_column, 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(noticeMargin, noticeMargin, noticeMargin, noticeMargin * 2 / 3);
    layout->setSpacing(noticeMargin * 2 / 3);
    layout->addLayout(upper, 1);
    layout->addLayout(m_buttons);
    updateFonts();
}

void BWNoticeView::fill(QDialog &dialog)
{
    auto *layout = new QVBoxLayout(&dialog);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(this);
}

void BWNoticeView::setHeading(const QString &heading)
{
    m_usual.heading = heading;
    updateTexts();
}

void BWNoticeView::setExplanation(const QString &explanation)
{
    m_usual.explanation = explanation;
    updateTexts();
}

void BWNoticeView::setObstacleHeading(const QString &heading)
{
    m_obstacle.heading = heading;
    updateTexts();
}

void BWNoticeView::setObstacle(const QString &explanation)
{
    if (explanation == m_obstacle.explanation)
        return;
    m_obstacle.explanation = explanation;
    updateTexts();
}

void BWNoticeView::updateTexts()
{
    const Texts &shown = m_obstacle.explanation.isEmpty() ? m_usual : m_obstacle;
    m_heading->setText(shown.heading);
    m_explanation->setText(shown.explanation);
}

QString BWNoticeView::explanation() const
{
    return m_explanation->text();
}

void BWNoticeView::addContent(QWidget *widget)
{
    m_column->addWidget(widget);
    m_heading->setBuddy(widget); // which names a pop-up for screen readers
    m_contents.append(widget);
}

void BWNoticeView::updateWidth()
{
    int width = qRound(narrowestColumnInEms * QFontMetricsF(font()).horizontalAdvance(u'M'));
    for (QWidget *content : std::as_const(m_contents)) {
        content->ensurePolished();
        width = std::max(width, content->sizeHint().width());
    }
    m_heading->setFixedWidth(width);
    m_explanation->setFixedWidth(width);
}

QPushButton *BWNoticeView::addButton()
{
    auto *button = new QPushButton;
    button->setAutoDefault(false);
    m_buttons->addWidget(button);
    return button;
}

void BWNoticeView::updateFonts()
{
    m_heading->setFont(bwHeadingFont(font(), headingScale));
    updateWidth();
}

void BWNoticeView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        updateFonts();
}

void BWNoticeView::showEvent(QShowEvent *event)
{
    updateWidth();
    QWidget::showEvent(event);
}

BWProgramHead::BWProgramHead(const QString &title, QWidget *parent)
    : QWidget(parent), m_title(new QLabel(title)), m_texts(new QVBoxLayout)
{
    m_title->setTextFormat(Qt::PlainText);
    m_texts->setSpacing(lineSpacing);
    m_texts->addStretch();
    m_texts->addWidget(m_title);
    m_texts->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(iconDistance);
    row->addWidget(new IconView(BWIcons::applicationIcon(), noticeIconSize), 0, Qt::AlignVCenter);
    row->addLayout(m_texts, 1);
    updateFonts();
}

void BWProgramHead::addLine(QLabel *line)
{
    m_texts->insertWidget(m_texts->count() - 1, line); // above the stretch
}

void BWProgramHead::updateFonts()
{
    m_title->setFont(bwHeadingFont(font(), titleScale));
}

void BWProgramHead::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateFonts();
}
