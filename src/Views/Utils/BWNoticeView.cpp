#include "Views/Utils/BWNoticeView.h"

#include "Views/Utils/BWHeadingFont.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWIconView.h"

#include <algorithm>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

namespace {
constexpr int illustrationSize = 96;
constexpr int outerMargin = 24;
constexpr double headingScale = 1.4;
constexpr double narrowestColumnInEms = 30;
} // namespace

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
    m_column->setSpacing(outerMargin / 2);
    m_buttons->addStretch();

    auto *upper = new QHBoxLayout;
    upper->setSpacing(outerMargin);
    upper->addWidget(new BWIconView(BWIcons::icon(illustrationName), {illustrationSize, illustrationSize}), 0,
                     Qt::AlignTop);
    upper->addLayout(m_column, 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(outerMargin, outerMargin, outerMargin, outerMargin * 2 / 3);
    layout->setSpacing(outerMargin * 2 / 3);
    layout->addLayout(upper, 1);
    layout->addLayout(m_buttons);
    updateFonts();
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
    m_heading->setBuddy(widget); // a pop-up has no other name to screen readers
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
