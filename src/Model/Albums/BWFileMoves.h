// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Export/BWExportResult.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <memory>
#include <QByteArray>
#include <QList>
#include <QString>
#include <set>
#include <sys/types.h>
#include <vector>

/// The name of a capture's file: the number that it got when it was taken, what the user added to it, the ending.
struct BWCaptureName {
    enum class Fault { None, Empty, Sign, Hidden, TooLong };

    QString number; ///< "20240607_image_001"; empty for a file that got its name elsewhere
    QString rest; ///< what the user may choose
    QString ending; ///< ".jpg"

    static BWCaptureName of(const QByteArray &fileName);

    /// The file's name with another rest; spaces around that do not count.
    QByteArray with(const QString &newRest) const;
    /// Why no file can have that name.
    Fault faultOf(const QString &newRest) const;

    /// The numbers that are in use among these names after a stem such as "20240607_image_", whatever follows them.
    static std::set<unsigned long> numbersAmong(const QList<QByteArray> &names, const QByteArray &stem);
};

/// Gives files of albums other names and other albums, in the background, one request after the other, and undoes that.
/// Nothing is ever overwritten or lost: a file is at its old place or, whole, at its new one. GUI thread.
class BWFileMoves {
public:
    struct Result {
        struct File {
            QUrl original;
            QUrl now;
        };
        QList<File> files;
        QList<BWExportResult> failed; ///< those files stay where they were
        bool cancelled = false; ///< before the rest
    };
    using Finished = std::function<void(const Result &result)>;
    /// Bytes, a few times a second.
    using Progress = std::function<void(qint64 done, qint64 total)>;
    /// Saves what is on its way into files, then calls `done` with those for which that was not possible.
    using Settle = std::function<void(std::function<void(const QList<QUrl> &unsettled)> done)>;

    /// `changed` is called after each request that moved something.
    explicit BWFileMoves(std::function<void()> changed);
    /// Cancels.
    ~BWFileMoves();
    BWFileMoves(const BWFileMoves &) = delete;
    BWFileMoves &operator=(const BWFileMoves &) = delete;

    /// What comes before each move from now on. Files that are unsettled stay where they are.
    void setSettle(Settle settle) { m_settle = std::move(settle); }

    /// Who else shows a file learns where it is now, before anybody lists its folder again.
    void addFollower(std::function<void(const Result::File &file)> follow) { m_followers.push_back(std::move(follow)); }

    /// Within its folder; fails if the name is taken.
    void rename(const QUrl &file, const QByteArray &name, Finished finished);
    /// Into a folder. Where the name is taken, a capture gets the next free number there, any other file "(2)".
    void move(const QList<QUrl> &files, const QUrl &folder, Finished finished, const Progress &progress = {});
    /// Ends the copying between disks; the file that is being copied stays.
    void cancel();
    bool isRunning() const { return !m_watches.empty(); }

    /// Whether there is something to undo: the last request that moved anything.
    bool canUndo() const { return !m_last.isEmpty(); }
    /// Once. A file whose old name has been taken meanwhile gets "(2)".
    void undo(Finished finished, const Progress &progress = {});
    /// Something else was done that comes first when the user undoes.
    void forget() { m_last.clear(); }

private:
    struct Moved : Result::File {
        dev_t device = 0;
        ino_t inode = 0;
    };
    struct Request {
        QUrl file;
        std::function<QUrl()> freeName; ///< on the worker
        Moved expected{}; ///< if it has to be a certain file
    };
    void start(const std::vector<Request> &requests, bool isUndo, Finished finished, const Progress &progress);
    void run(const std::vector<Request> &requests, const QList<QUrl> &unsettled, bool isUndo, const Finished &finished,
             const std::shared_ptr<BWExportWatch> &watch);
    static Result serve(const std::vector<Request> &requests, const QList<QUrl> &unsettled, BWExportWatch &watch,
                        QList<Moved> &moved);
    static BWExportResult moveOne(const Request &request, const std::function<bool(double done)> &report, QUrl &now);

    std::function<void()> m_changed;
    Settle m_settle;
    std::vector<std::function<void(const Result::File &file)>> m_followers;
    QList<Moved> m_last;
    std::vector<std::shared_ptr<BWExportWatch>> m_watches; // of the requests that run or wait
    BWAliveToken m_alive;
    BWWorkerPool m_thread;
};
