// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/MainWindow/BWStatusLine.h"

#include "Views/Utils/BWPillPainting.h"

#include <algorithm>
#include <QAccessible>
#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <utility>

namespace {

constexpr int statusSidePadding = 17;
constexpr int statusEndPadding = 5;
constexpr int edgeDistance = 11;
constexpr int nearDistance = 40;
constexpr int longestFade = 300; // milliseconds
constexpr int textFlags = Qt::AlignCenter | Qt::TextWordWrap;

} // namespace

BWStatusPill::BWStatusPill(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    connect(&m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant &opacity) {
        m_opacity = opacity.toDouble();
        update();
    });
    connect(&m_fade, &QVariantAnimation::finished, this, &BWStatusPill::fit);
    hide();
}

void BWStatusPill::setText(const QString &text, const QString &spoken)
{
    if (const QString &name = spoken.isNull() ? text : spoken; name != accessibleName())
        setAccessibleName(name);
    if (text == m_text)
        return;
    m_text = text;
    setVisible(!text.isEmpty());
    const bool fadesAway = m_faded && m_fade.state() == QAbstractAnimation::Running;
    if (!fadesAway)
        fit();
}

void BWStatusPill::announce(const QString &text)
{
    m_fade.stop();
    m_faded = false;
    m_opacity = 1;
    hide(); // screen readers speak a notification when it appears
    m_text.clear();
    setText(text);
}

void BWStatusPill::setFaded(bool faded)
{
    if (std::exchange(m_faded, faded) == faded)
        return;
    m_fade.stop();
    m_fade.setStartValue(m_opacity);
    m_fade.setEndValue(faded ? 0.0 : 1.0);
    // Desktops where users can switch animations off report it to Qt as a duration of 0.
    m_fade.setDuration(std::min(longestFade, style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this)));
    m_fade.start();
}

void BWStatusPill::placeIn(const QRect &area, Qt::Alignment alignment)
{
    m_area = area;
    m_alignment = alignment;
    fit();
}

void BWStatusPill::pointerAt(const QPoint &position)
{
    constexpr QMargins around(nearDistance, nearDistance, nearDistance, nearDistance);
    if (geometry().marginsAdded(around).contains(position))
        Q_EMIT pointerNear();
}

int BWStatusPill::widestText() const
{
    return std::max(1, m_area.width() - 2 * (edgeDistance + statusSidePadding));
}

void BWStatusPill::fit()
{
    if (m_text.isEmpty() || m_area.isEmpty())
        return;
    const QRect bounds = fontMetrics().boundingRect(QRect(0, 0, widestText(), 10000), textFlags, m_text);
    const QSize size = bounds.size() + QSize(2 * statusSidePadding, 2 * statusEndPadding);
    const QRect within = m_area.adjusted(edgeDistance, edgeDistance, -edgeDistance, -edgeDistance);
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, m_alignment, size, within));
    m_drawn = {};
    update();
}

void BWStatusPill::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        fit();
    QWidget::changeEvent(event);
}

void BWStatusPill::paintEvent(QPaintEvent *)
{
    const auto drawText = [this](QPainter &painter) {
        painter.setPen(bwPillTextColor);
        QRect text(0, 0, widestText(), height()); // so that it is wrapped as it was measured
        text.moveCenter(rect().center());
        painter.drawText(text, textFlags, m_text);
    };
    if (m_opacity > 0)
        paintBWPill(*this, m_drawn, drawText, m_opacity);
}

BWStatusLine::BWStatusLine(BWStatusPill &pill, BWClock &clock)
    : m_pill(pill),
      m_clock(clock),
      m_quiet(
          quietTime, [this](bool) { fade(); }, clock)
{
    connect(&pill, &BWStatusPill::pointerNear, this, [this] { m_quiet.show(); });
}

BWStatusLine::~BWStatusLine()
{
    if (m_moment)
        m_moment->cancel();
}

void BWStatusLine::setText(const QString &text, Kind kind)
{
    if (std::exchange(m_text, text) != text)
        m_quiet.show();
    m_kind = kind;
    hold();
    show();
}

void BWStatusLine::setProgress(const QString &text)
{
    m_progress = text;
    hold();
    show();
}

void BWStatusLine::setSeries(const QString &text, const QString &spoken)
{
    m_series = text;
    m_seriesSpoken = spoken.isNull() ? text : spoken;
    hold();
    show();
}

void BWStatusLine::setRecording(bool recording)
{
    m_recording = recording;
    hold();
}

void BWStatusLine::show()
{
    if (m_moment)
        return;
    if (!m_progress.isNull() || m_series.isNull())
        m_pill.setText(m_progress.isNull() ? m_text : m_progress);
    else if (m_kind == Kind::Lasting)
        m_pill.setText(m_text + u'\n' + m_series, m_text + u'\n' + m_seriesSpoken);
    else
        m_pill.setText(m_series, m_seriesSpoken);
}

void BWStatusLine::showForAMoment(const QString &text, double seconds)
{
    if (m_moment)
        m_moment->cancel();
    m_pill.announce(text);
    m_moment = DispatchAfterStrict::dispatchForQueue(
        this, [this] { endMoment(); }, seconds, m_clock);
}

/// A line that has faded before fades once more, with the text of the moment.
void BWStatusLine::endMoment()
{
    m_moment.reset();
    fade();
    show();
}

void BWStatusLine::hold()
{
    m_quiet.setHeld(m_kind == Kind::Lasting || m_recording || !m_progress.isNull() || !m_series.isNull());
}

void BWStatusLine::fade()
{
    m_pill.setFaded(!m_moment && !m_quiet.isShown());
}
