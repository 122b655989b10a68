#include "Views/Utils/BWProgramHead.h"

#include "Views/Utils/BWHeadingFont.h"
#include "Views/Utils/BWIcons.h"
#include "Views/Utils/BWIconView.h"

#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace {
constexpr int iconSize = 64;
constexpr int iconDistance = 20;
constexpr int lineSpacing = 4;
constexpr double titleScale = 1.4;
} // namespace

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
    row->addWidget(new BWIconView(BWIcons::applicationIcon(), {iconSize, iconSize}), 0, Qt::AlignVCenter);
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
