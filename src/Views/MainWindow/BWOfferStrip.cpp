// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWOfferStrip.h"

#include <QHBoxLayout>

using namespace Qt::StringLiterals;

BWOfferStrip::BWOfferStrip(QWidget *parent)
    : BWPictureStrip(parent),
      m_movie(new BWStripButton(BWStripButton::Shows::Text, this)),
      m_close(new BWStripButton(BWStripButton::Shows::Cross, this))
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 5, 8, 5);
    row->setSpacing(3);
    for (BWStripButton *button : {m_movie, m_close}) {
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keys to the picture
        row->addWidget(button);
    }
    connect(m_movie, &QToolButton::clicked, this, &BWOfferStrip::movieWanted);
    connect(m_close, &QToolButton::clicked, this, &BWOfferStrip::end);
}

void BWOfferStrip::localizeWithManager(BWLocalizationManager &manager)
{
    m_movie->setText(manager.text(u"series"_s, u"movie_button"_s, u"Make a movie of the series..."_s));
    m_close->setText(manager.text(u"series"_s, u"movie_close_button"_s, u"Close"_s));
    m_close->setToolTip(m_close->text());
    for (BWStripButton *button : {m_movie, m_close})
        button->setAccessibleName(button->text());
    setAccessibleName(m_movie->text());
}

void BWOfferStrip::followInTabOrder(QWidget &widget)
{
    setTabOrder(&widget, m_movie);
    setTabOrder(m_movie, m_close);
}

bool BWOfferStrip::end()
{
    const bool shows = !isHidden();
    if (isAncestorOf(window()->focusWidget()))
        Q_EMIT keyboardReturned(); // or whatever comes next would have it
    hide();
    return shows;
}
