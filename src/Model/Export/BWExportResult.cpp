// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWExportResult.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds exportReportEvery{50};

using Problem = BWExportResult::Problem;

Problem problemOfSource(int error)
{
    return error == ENOENT || error == ENOTDIR ? Problem::SourceGone : Problem::SourceUnreadable;
}

Problem problemOfTarget(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return Problem::TargetFolderMissing;
    case EISDIR:
        return Problem::TargetIsFolder;
    case EACCES:
    case EPERM:
        return Problem::TargetNotWritable;
    case EROFS:
        return Problem::TargetReadOnly;
    case ENOSPC:
    case EDQUOT:
        return Problem::TargetFull;
    case EFBIG:
        return Problem::TargetTooLarge;
    case EIO:
    case ENXIO:
    case ENODEV:
    case ESTALE:
    case ETIMEDOUT:
    case EHOSTDOWN:
    case ENOTCONN:
        return Problem::TargetFailed;
    case ENAMETOOLONG:
        return Problem::NameTooLong;
    case EEXIST:
        return Problem::NameTaken;
    case EINVAL: // a colon, for instance, on a disk formatted by another system
    case EILSEQ:
        return Problem::NameNotAllowed;
    default:
        return Problem::Other;
    }
}

QString text(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

void BWExportWatch::begin(qint64 total)
{
    m_total = total;
    m_next = Clock::now() + exportReportEvery;
}

void BWExportWatch::add(qint64 bytes)
{
    // A file may have grown since the total was made up.
    const qint64 done = std::min(m_done + bytes, m_total);
    const bool complete = m_done < m_total && done == m_total;
    m_done = done;
    if (!m_report || (!complete && Clock::now() < m_next))
        return;
    m_next = Clock::now() + exportReportEvery;
    m_report(m_done, m_total);
}

BWExportResult BWExportResult::failed(Problem problem, const QUrl &file, const QString &reason)
{
    return {Outcome::Failed, problem, file, reason, {}};
}

BWExportResult BWExportResult::done(const QUrl &target)
{
    return {Outcome::Done, Problem::None, target, {}, {}};
}

BWExportResult BWExportResult::cancelled()
{
    return {Outcome::Cancelled, Problem::None, {}, {}, {}};
}

BWExportResult BWExportResult::sourceFailed(const QUrl &source, int error)
{
    return failed(problemOfSource(error), source, text(error));
}

BWExportResult BWExportResult::sourceChanged(const QUrl &source)
{
    return failed(Problem::SourceChanged, source, u"it changed while it was read"_s);
}

BWExportResult BWExportResult::targetFailed(const QUrl &target, int error)
{
    return failed(problemOfTarget(error), target, text(error));
}

BWExportResult BWExportResult::targetIsSource(const QUrl &target)
{
    return failed(Problem::TargetIsSource, target, u"it is one of the files to save"_s);
}

std::optional<std::chrono::seconds> BWTimeLeft::add(std::chrono::nanoseconds now, double done)
{
    using namespace std::chrono_literals;
    constexpr std::chrono::seconds enough = 3s;
    constexpr double enoughDone = 0.01;
    if (!m_begin)
        m_begin = now;
    const std::chrono::duration<double> passed = now - *m_begin;
    if (passed < enough || done < enoughDone || done >= 1)
        return std::nullopt;
    const std::chrono::duration<double> left = passed * (1 - done) / done;
    const std::chrono::seconds step = left < 115s ? 10s : 60s;
    return step * std::max<int64_t>(1, std::llround(left / step));
}
