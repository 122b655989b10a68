#include "Views/MainWindow/BWStatusLine.h"

#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <QAccessible>
#include <QEvent>
#include <QPainter>

namespace {

constexpr int statusSidePadding = 17;
constexpr int statusEndPadding = 5;
constexpr int bottomDistance = 11;
constexpr int textFlags = Qt::AlignCenter | Qt::TextWordWrap;

} // namespace

BWStatusPill::BWStatusPill(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void BWStatusPill::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    setAccessibleName(text);
    setVisible(!text.isEmpty());
    fit();
    update();
}

void BWStatusPill::announce(const QString &text)
{
    hide(); // screen readers speak a notification when it appears
    m_text.clear();
    setText(text);
}

void BWStatusPill::placeIn(const QRect &area)
{
    m_area = area;
    fit();
}

int BWStatusPill::widestText() const
{
    return std::max(1, m_area.width() - 2 * (bottomDistance + statusSidePadding));
}

void BWStatusPill::fit()
{
    if (m_text.isEmpty() || m_area.isEmpty())
        return;
    const QRect bounds = fontMetrics().boundingRect(QRect(0, 0, widestText(), 10000), textFlags, m_text);
    const QSize size = bounds.size() + QSize(2 * statusSidePadding, 2 * statusEndPadding);
    const QPoint corner(m_area.x() + (m_area.width() - size.width()) / 2,
                        m_area.y() + m_area.height() - bottomDistance - size.height());
    setGeometry(QRect(corner, size));
    m_drawn = {};
}

void BWStatusPill::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        fit();
    QWidget::changeEvent(event);
}

void BWStatusPill::paintEvent(QPaintEvent *)
{
    paintBWPill(*this, m_drawn, [this](QPainter &painter) {
        painter.setPen(bwPillTextColor);
        QRect text(0, 0, widestText(), height()); // so that it is wrapped as it was measured
        text.moveCenter(rect().center());
        painter.drawText(text, textFlags, m_text);
    });
}

BWStatusLine::BWStatusLine(BWStatusPill &pill, BWClock &clock) : m_pill(pill), m_clock(clock) { }

BWStatusLine::~BWStatusLine()
{
    if (m_moment)
        m_moment->cancel();
}

void BWStatusLine::setText(const QString &text)
{
    m_text = text;
    show();
}

void BWStatusLine::setProgress(const QString &text)
{
    m_progress = text;
    show();
}

void BWStatusLine::show()
{
    if (!m_moment)
        m_pill.setText(m_progress.isNull() ? m_text : m_progress);
}

void BWStatusLine::showForAMoment(const QString &text, double seconds)
{
    if (m_moment)
        m_moment->cancel();
    m_pill.announce(text);
    m_moment = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            m_moment.reset();
            show();
        },
        seconds, m_clock);
}
