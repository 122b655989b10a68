#include "BWStatusLine.h"

#include "Views/BWStatusPill.h"

BWStatusLine::BWStatusLine(BWStatusPill &pill, BWClock &clock) : m_pill(pill), m_clock(clock) { }

BWStatusLine::~BWStatusLine()
{
    if (m_moment)
        m_moment->cancel();
}

void BWStatusLine::setText(const QString &text)
{
    m_text = text;
    if (!m_moment)
        m_pill.setText(text);
}

void BWStatusLine::showForAMoment(const QString &text, double seconds)
{
    if (m_moment)
        m_moment->cancel();
    m_pill.setText(text);
    m_moment = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            m_moment.reset();
            m_pill.setText(m_text);
        },
        seconds, m_clock);
}
