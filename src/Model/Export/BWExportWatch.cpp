#include "Model/Export/BWExportWatch.h"

#include <algorithm>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds tellEvery{50};

} // namespace

void BWExportWatch::begin(qint64 total)
{
    m_total = total;
    m_next = Clock::now() + tellEvery;
}

void BWExportWatch::add(qint64 bytes)
{
    // A file may have grown since the total was made up.
    const qint64 done = std::min(m_done + bytes, m_total);
    const bool complete = m_done < m_total && done == m_total;
    m_done = done;
    if (!m_tell || (!complete && Clock::now() < m_next))
        return;
    m_next = Clock::now() + tellEvery;
    m_tell(m_done, m_total);
}
