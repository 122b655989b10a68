#include "Views/Utils/BWIconView.h"

#include <QPainter>

BWIconView::BWIconView(const QIcon &icon, const QSize &size, QWidget *parent)
    : QWidget(parent), m_icon(icon), m_size(size)
{
    setFixedSize(size);
}

void BWIconView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    m_icon.paint(&painter, rect());
}
