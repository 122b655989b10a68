#include "Model/Export/BWExportResult.h"

#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

using Problem = BWExportResult::Problem;

Problem problemOf(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return Problem::TargetFolderMissing;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
        return Problem::TargetNotWritable;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return Problem::TargetFull;
    case ENAMETOOLONG:
        return Problem::NameTooLong;
    default:
        return Problem::Other;
    }
}

BWExportResult failed(Problem problem, const QUrl &file, const QString &reason)
{
    return {BWExportResult::Outcome::Failed, problem, file, reason, {}};
}

QString text(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

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
    return failed(Problem::SourceUnreadable, source, text(error));
}

BWExportResult BWExportResult::sourceChanged(const QUrl &source)
{
    return failed(Problem::SourceChanged, source, u"it changed while it was read"_s);
}

BWExportResult BWExportResult::targetFailed(const QUrl &target, int error)
{
    return failed(problemOf(error), target, text(error));
}

BWExportResult BWExportResult::targetIsSource(const QUrl &target)
{
    return failed(Problem::TargetIsSource, target, u"it is one of the files to save"_s);
}
