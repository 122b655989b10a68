// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWFrozenMark.h"

#include "Views/Utils/BWCrispFrame.h"

#include <QEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
constexpr int cornerDistance = 11; // as the other texts over the picture keep
}

BWFrozenMark::BWFrozenMark(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void BWFrozenMark::localizeWithManager(BWLocalizationManager &manager)
{
    const QString text = manager.text(u"camera_window"_s, u"frozen_mark"_s, u"Frozen"_s);
    setAccessibleName(text);
    m_picture.setCaption(BWFlashPicture::Sign::Pause, text);
    fit();
}

QRect BWFrozenMark::placeIn(const QRect &area)
{
    move(area.topLeft() + QPoint(cornerDistance, cornerDistance));
    return isHidden() ? area : area.adjusted(0, cornerDistance + height(), 0, 0);
}

void BWFrozenMark::fit()
{
    m_picture.setFont(font());
    m_drawn = {};
    resize(m_picture.size());
}

void BWFrozenMark::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        fit();
    QWidget::changeEvent(event);
}

void BWFrozenMark::paintEvent(QPaintEvent *)
{
    if (m_drawn.isNull() || m_drawn.devicePixelRatio() != devicePixelRatioF())
        m_drawn = m_picture.fadingPart(devicePixelRatioF());
    QPainter painter(this);
    drawBWPixmap(painter, {}, m_drawn);
}
