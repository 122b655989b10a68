#include "App/LiveView/BWStatusLine.h"

#include "Views/MainWindow/BWStatusPill.h"

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
