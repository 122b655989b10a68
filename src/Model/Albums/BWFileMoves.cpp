// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWFileMoves.h"

#include "Model/Albums/BWFileCopy.h"
#include "Model/Thumbnails/BWThumbnailStore.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <optional>
#include <QFile>
#include <QRegularExpression>
#include <sys/stat.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Where a capture's number ends and what follows begins.
struct NumberedName {
    QString stem; ///< "20240607_image_"
    QString digits;
    QString rest;
};

NumberedName numberedNameOf(const QString &base)
{
    static const QRegularExpression pattern(u"^(\\d{8}_(?:image|video)_)(\\d{3,})(.*)$"_s,
                                            QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = pattern.match(base);
    return match.hasMatch() ? NumberedName{match.captured(1), match.captured(2), match.captured(3)} : NumberedName();
}

/// The name it has, as long as that is free; then the lowest free number, or "(2)", "(3)" and so on.
std::function<QUrl()> freeNameIn(const QUrl &folder, const QByteArray &name)
{
    return [folder, name] {
        QUrl candidate = BWFilePath::entry(folder, name);
        if (!BWFilePath::exists(candidate))
            return candidate;
        const BWCaptureName parts = BWCaptureName::of(name);
        const QString stem = numberedNameOf(parts.number).stem;
        if (stem.isEmpty()) {
            for (int number = 2; BWFilePath::exists(candidate); ++number)
                candidate = BWFilePath::entry(folder, BWFilePath::numbered(name, number));
            return candidate;
        }
        const std::set<unsigned long> used =
            BWCaptureName::numbersAmong(BWFilePath::entries(folder).value_or(QList<QByteArray>()), stem.toLatin1());
        unsigned long number = 1;
        while (used.contains(number))
            ++number;
        const BWCaptureName next{stem + QString::number(number).rightJustified(3, u'0'), parts.rest, parts.ending};
        return BWFilePath::entry(folder, next.with(parts.rest));
    };
}

std::function<QUrl()> numberedNameFor(const QUrl &place)
{
    return [place] {
        QUrl candidate = place;
        for (int number = 2; BWFilePath::exists(candidate); ++number)
            candidate = BWFilePath::url(BWFilePath::numbered(BWFilePath::native(place), number));
        return candidate;
    };
}

constexpr struct stat noStatus {
};

std::optional<struct stat> statusOf(const QUrl &file)
{
    struct stat info { };
    return ::lstat(BWFilePath::native(file).constData(), &info) == 0 ? std::optional(info) : std::nullopt;
}

BWExportResult failureOf(const QUrl &file, int error)
{
    if (error == EAGAIN)
        return BWExportResult::sourceChanged(file);
    return BWFilePath::exists(file) ? BWExportResult::targetFailed(file, error)
                                    : BWExportResult::sourceFailed(file, ENOENT);
}

} // namespace

BWCaptureName BWCaptureName::of(const QByteArray &fileName)
{
    const qsizetype dot = fileName.lastIndexOf('.');
    const QString base = QFile::decodeName(dot > 0 ? fileName.left(dot) : fileName);
    const QString ending = dot > 0 ? QFile::decodeName(fileName.mid(dot)) : QString();
    const NumberedName parts = numberedNameOf(base);
    if (parts.stem.isEmpty())
        return {{}, base, ending};
    return {parts.stem + parts.digits, parts.rest.trimmed(), ending};
}

QByteArray BWCaptureName::with(const QString &newRest) const
{
    const QString added = newRest.trimmed();
    return QFile::encodeName(number.isEmpty() || added.isEmpty() ? number + added + ending
                                                                 : number + u' ' + added + ending);
}

BWCaptureName::Fault BWCaptureName::faultOf(const QString &newRest) const
{
    const QString added = newRest.trimmed();
    if (number.isEmpty() && added.isEmpty())
        return Fault::Empty;
    const bool hasSign = std::any_of(added.cbegin(), added.cend(), [](QChar sign) {
        return sign == u'/' || sign.category() == QChar::Other_Control;
    });
    if (hasSign)
        return Fault::Sign;
    if (number.isEmpty() && added.startsWith(u'.'))
        return Fault::Hidden;
    return with(newRest).size() > NAME_MAX ? Fault::TooLong : Fault::None;
}

std::set<unsigned long> BWCaptureName::numbersAmong(const QList<QByteArray> &names, const QByteArray &stem)
{
    std::set<unsigned long> numbers;
    for (const QByteArray &name : names) {
        qsizetype end = stem.size();
        while (end < name.size() && std::isdigit(static_cast<unsigned char>(name[end])))
            ++end;
        bool isNumber = false;
        const unsigned long number = name.mid(stem.size(), end - stem.size()).toULong(&isNumber);
        if (isNumber && name.startsWith(stem))
            numbers.insert(number);
    }
    return numbers;
}

BWFileMoves::BWFileMoves(std::function<void()> changed) : m_changed(std::move(changed)) { }

BWFileMoves::~BWFileMoves()
{
    cancel();
}

void BWFileMoves::rename(const QUrl &file, const QByteArray &name, Finished finished)
{
    const QUrl folder = file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
    start({{file, [folder, name] { return BWFilePath::entry(folder, name); }}}, false, std::move(finished), {});
}

void BWFileMoves::move(const QList<QUrl> &files, const QUrl &folder, Finished finished, const Progress &progress)
{
    std::vector<Request> requests;
    for (const QUrl &file : files)
        requests.push_back({file, freeNameIn(folder, BWFilePath::lastComponent(file))});
    start(requests, false, std::move(finished), progress);
}

void BWFileMoves::undo(Finished finished, const Progress &progress)
{
    std::vector<Request> requests;
    const QList<Moved> last = std::exchange(m_last, {});
    for (const Moved &moved : last)
        requests.push_back({moved.now, numberedNameFor(moved.original), moved});
    start(requests, true, std::move(finished), progress);
}

void BWFileMoves::cancel()
{
    for (const auto &watch : m_watches)
        watch->cancel();
}

void BWFileMoves::start(const std::vector<Request> &requests, bool isUndo, Finished finished, const Progress &progress)
{
    const std::weak_ptr<void> owner = m_alive.watch();
    const auto watch = std::make_shared<BWExportWatch>([owner, progress](qint64 done, qint64 total) {
        if (progress)
            BWMainQueue::post(owner, [progress, done, total] { progress(done, total); });
    });
    m_watches.push_back(watch);
    const auto whenSettled = [this, owner, requests, isUndo, finished = std::move(finished),
                              watch](const QList<QUrl> &unsettled) {
        if (!owner.expired())
            run(requests, unsettled, isUndo, finished, watch);
    };
    if (m_settle)
        m_settle(whenSettled);
    else
        whenSettled({});
}

void BWFileMoves::run(const std::vector<Request> &requests, const QList<QUrl> &unsettled, bool isUndo,
                      const Finished &finished, const std::shared_ptr<BWExportWatch> &watch)
{
    m_thread.run([this, owner = m_alive.watch(), requests, unsettled, isUndo, finished, watch] {
        QList<Moved> moved;
        const Result result = serve(requests, unsettled, *watch, moved);
        BWMainQueue::post(owner, [this, result, moved, isUndo, finished, watch] {
            std::erase(m_watches, watch);
            if (!moved.isEmpty() && !isUndo)
                m_last = moved;
            for (const Result::File &file : result.files) {
                for (const auto &follow : m_followers)
                    follow(file);
            }
            if (!moved.isEmpty())
                m_changed();
            if (finished)
                finished(result);
        });
    });
}

/// On the worker.
BWFileMoves::Result BWFileMoves::serve(const std::vector<Request> &requests, const QList<QUrl> &unsettled,
                                       BWExportWatch &watch, QList<Moved> &moved)
{
    const auto sizeOf = [](const QUrl &file) { return qint64(statusOf(file).value_or(noStatus).st_size); };
    const BWThumbnailStore thumbnails(BWThumbnailStore::defaultFolder());
    Result result;
    qint64 total = 0;
    for (const Request &request : requests)
        total += sizeOf(request.file);
    watch.begin(total);
    for (const Request &request : requests) {
        result.cancelled = result.cancelled || watch.isCancelled();
        if (result.cancelled)
            break;
        const auto report = [&watch, size = sizeOf(request.file), before = qint64(0)](double done) mutable {
            const qint64 now = qint64(double(size) * done);
            watch.add(now - std::exchange(before, now));
            return !watch.isCancelled();
        };
        QUrl now;
        const BWExportResult failure = unsettled.contains(request.file)
            ? BWExportResult::failed(BWExportResult::Problem::NotSaved, request.file, u"not all of it is saved"_s)
            : moveOne(request, report, now);
        if (!now.isEmpty()) {
            thumbnails.forget(BWFilePath::native(request.file));
            const struct stat info = statusOf(now).value_or(noStatus);
            result.files.append({request.file, now});
            moved.append(Moved{{request.file, now}, info.st_dev, info.st_ino});
        } else if (failure.outcome == BWExportResult::Outcome::Cancelled) {
            result.cancelled = true;
        } else {
            qCWarning(bwModel).noquote() << "Cannot move" << request.file.toDisplayString() << '-' << failure.reason;
            result.failed.append(failure);
        }
    }
    return result;
}

BWExportResult BWFileMoves::moveOne(const Request &request, const std::function<bool(double done)> &report, QUrl &now)
{
    if (const auto found = statusOf(request.file); request.expected.inode != 0
        && (!found || found->st_ino != request.expected.inode || found->st_dev != request.expected.device))
        return BWExportResult::sourceFailed(request.file, ENOENT);
    now = BWFileCopy::moveUnderFreeName(request.file, request.freeName, report);
    if (now.isEmpty())
        return errno == ECANCELED ? BWExportResult::cancelled() : failureOf(request.file, errno);
    report(1);
    return BWExportResult::done(now);
}
