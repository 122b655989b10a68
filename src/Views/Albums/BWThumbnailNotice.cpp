#include "Views/Albums/BWThumbnailNotice.h"

#include "Views/Utils/BWIcons.h"

#include <QPainter>

namespace {

constexpr int iconSize = 64;
constexpr int gap = 14;
constexpr int margin = 20;
constexpr int widest = 320; // longer lines are hard to read
constexpr double iconOpacity = 0.45;
constexpr float textOpacity = 0.75F;

} // namespace

BWThumbnailNotice::BWThumbnailNotice(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void BWThumbnailNotice::setNotice(const QString &iconName, const QString &text)
{
    m_icon = iconName.isNull() ? QIcon() : BWIcons::icon(iconName);
    m_text = text;
    update();
}

void BWThumbnailNotice::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int textWidth = std::min(widest, width() - 2 * margin);
    const QRect bounds =
        painter.boundingRect(QRect(0, 0, textWidth, height()), Qt::AlignHCenter | Qt::TextWordWrap, m_text);
    const int top = (height() - iconSize - gap - bounds.height()) / 2;
    painter.setOpacity(iconOpacity);
    m_icon.paint(&painter, (width() - iconSize) / 2, top, iconSize, iconSize);
    painter.setOpacity(1);
    QColor colour = palette().color(QPalette::Text);
    colour.setAlphaF(textOpacity);
    painter.setPen(colour);
    painter.drawText(QRect((width() - textWidth) / 2, top + iconSize + gap, textWidth, bounds.height()),
                     Qt::AlignHCenter | Qt::TextWordWrap, m_text);
}
