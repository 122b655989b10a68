// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <QString>
#include <QUrl>

/// How an export ended.
struct BWExportResult {
    enum class Outcome {
        Done,
        Cancelled, ///< nothing of it is left; the file at the target is as before
        Failed ///< the same, but for `leftover`
    };
    /// What went wrong, as far as the user can do something about it.
    enum class Problem {
        None,
        SourceGone,
        SourceUnreadable, ///< not a file, not allowed, or a broken disk
        SourceChanged, ///< another program wrote to it while it was read
        TargetIsSource, ///< the archive would replace one of the files that go into it
        TargetFolderMissing,
        TargetIsFolder,
        TargetNotWritable,
        TargetReadOnly, ///< for every user
        TargetFull,
        TargetTooLarge, ///< for the file system there, whatever its room
        TargetFailed, ///< a fault of the disk, which may have been pulled out
        NameTooLong,
        NameNotAllowed,
        NameTaken, ///< where nothing may be replaced
        NotSaved, ///< what is measured in it is still on its way into the file, or cannot get there
        NoEncoder, ///< this computer cannot write such movies
        NoPictures, ///< the movie, or all of the pictures, are damaged
        Other
    };

    Outcome outcome = Outcome::Done;
    Problem problem = Problem::None;
    QUrl file; ///< done: the target; failed: the file that it failed on
    QString reason; ///< in the system's words, for the log; null unless failed
    QUrl leftover; ///< the part of an archive that a failure left; empty without one
    int leftOut = 0; ///< of a movie: damaged pictures

    static BWExportResult done(const QUrl &target);
    static BWExportResult cancelled();
    /// `error` is an errno.
    static BWExportResult sourceFailed(const QUrl &source, int error);
    static BWExportResult sourceChanged(const QUrl &source);
    static BWExportResult targetFailed(const QUrl &target, int error);
    static BWExportResult targetIsSource(const QUrl &target);
    /// For reasons that are no errno.
    static BWExportResult failed(Problem problem, const QUrl &file, const QString &reason);
};

/// Carries progress from a running export to its owner, and the owner's request to stop.
class BWExportWatch {
public:
    /// Bytes of the sources that are written, and of how many. At most twenty times a second, and at the end.
    using Report = std::function<void(qint64 done, qint64 total)>;

    /// `report` is called on the exporting thread.
    explicit BWExportWatch(Report report = {}) : m_report(std::move(report)) { }

    /// Any thread.
    void cancel() { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled; }

    /// The exporting thread only, as add(). Movies count something else than bytes.
    void begin(qint64 total);
    void add(qint64 bytes);

private:
    const Report m_report;
    std::atomic<bool> m_cancelled = false;
    qint64 m_done = 0;
    qint64 m_total = 0;
    std::chrono::steady_clock::time_point m_next;
};

/// How long something that takes minutes will take from now on, by how long it took so far.
class BWTimeLeft {
public:
    /// `now` is a steady time; `done` is from 0 to 1. Nothing before there is enough to go by, or once all is done; else
    /// rounded so that it does not change with every call: seconds to tens, and from two minutes on to whole minutes.
    std::optional<std::chrono::seconds> add(std::chrono::nanoseconds now, double done);

private:
    std::optional<std::chrono::nanoseconds> m_begin;
};
