// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Capture/BWSeriesPlan.h"

#include <chrono>
#include <functional>
#include <optional>
#include <QObject>

/// The rules of a series: when the next picture is due, how many there are, when and why it ends. GUI thread.
///
/// The n-th picture is due n intervals after the first, by a clock that nobody sets and that goes on while the computer
/// sleeps, so that lateness never adds up. A picture that cannot be taken when it is due is missed; it is not made up for.
///
/// | State            | left by                                                                              |
/// |------------------|--------------------------------------------------------------------------------------|
/// | Idle             | start(), resume()                                                                    |
/// | Waiting          | the first picture is due                                                             |
/// | Running          | a picture is missed: WaitingForCamera, WaitingForDisk; all are taken and saved: Ended |
/// | WaitingForCamera | the next picture is taken: Running                                                   |
/// | WaitingForDisk   | the same; pictures are not saved as fast as they are taken                           |
/// | Ended            | start(), resume()                                                                    |
///
/// end() leads to Ended from everywhere.
class BWSeries : public QObject {
    Q_OBJECT

public:
    using Time = std::chrono::nanoseconds;

    enum class State { Idle, Waiting, Running, WaitingForCamera, WaitingForDisk, Ended };
    enum class Reason {
        Done,
        Stopped, ///< by the user
        DiskFull,
        AlbumGone, ///< its folder was removed or renamed, or its disk is gone
        NotSaved, ///< for any other reason
        LeftForNextStart, ///< the program ends without the user's doing
    };

    /// What it needs of the rest of the program.
    struct Sources {
        /// Identifies the camera that streams; null if none does.
        std::function<const void *()> camera;
        /// Requests one picture. taken() or notTaken() answers, with the number, unless the camera hangs.
        std::function<void(unsigned request)> take;
        /// Time since an arbitrary moment, that spent asleep included.
        std::function<Time()> now = &BWSeries::timeSinceBoot;
    };

    /// What was missed until the picture that has just been taken.
    struct Gap {
        qint64 missed = 0;
        std::chrono::seconds length{}; ///< between two pictures
    };

    /// More pictures than this are not waiting for the disk at once.
    static constexpr int mostUnsaved = 8;
    /// A shorter gap is only counted.
    static constexpr std::chrono::seconds shortestGap{5};
    /// A picture that the camera owes for longer does not hold up the end.
    static constexpr std::chrono::seconds patience{10};

    explicit BWSeries(Sources sources, BWClock &clock = BWClock::system());
    ~BWSeries() override;

    void start(const BWSeriesPlan &plan);
    /// Goes on with a series of an earlier run: so many pictures were saved and missed, and so long ago its first one was
    /// due. Pictures that were due since then are missed.
    void resume(const BWSeriesPlan &plan, qint64 saved, qint64 missed, Time sinceFirst);
    /// Without effect if none is running.
    void end(Reason reason);

    void taken(unsigned request);
    void notTaken(unsigned request);
    /// A picture that was taken is in the album.
    void saved();

    State state() const;
    bool isRunning() const { return m_isRunning; }
    /// After the end; Done before.
    Reason reason() const { return m_reason; }
    const BWSeriesPlan &plan() const { return m_plan; }
    qint64 savedCount() const { return m_saved; }
    qint64 missedCount() const { return m_missed; }
    /// Nothing if no more picture is to come.
    std::optional<Time> untilNext() const;
    Time sinceFirst() const { return m_sources.now() - m_first; }

    static Time timeSinceBoot();

Q_SIGNALS:
    /// Anything of the above: at least once a second while it runs.
    void changed();
    void gapEnded(const BWSeries::Gap &gap);
    void ended();

private:
    void begin(const BWSeriesPlan &plan, Time sinceFirst);
    void look();
    void pass(qint64 slot);
    void miss(qint64 pictures);
    bool mayTake();
    bool isComplete() const;
    bool wantsMore() const;
    std::optional<qint64> lastSlot() const;
    Time timeOf(qint64 slot) const { return m_first + slot * Time(m_plan.interval); }
    void schedule();

    const Sources m_sources;
    BWClock &m_clock;
    BWSeriesPlan m_plan;
    Time m_first{}; // when the first picture is due
    qint64 m_next = 0; // the picture that is due next, counted from 0
    qint64 m_taken = 0;
    qint64 m_saved = 0;
    qint64 m_missed = 0;
    qint64 m_unsaved = 0; // taken and not saved yet
    unsigned m_requests = 0;
    unsigned m_open = 0; // the request without an answer; 0 if there is none
    const void *m_openCamera = nullptr; // of that request
    Time m_openSince{};
    State m_obstacle = State::Running; // what the series waits for, if it does
    Time m_lastTaken{};
    qint64 m_missedSince = 0; // that
    bool m_isRunning = false;
    bool m_hasBegun = false;
    Reason m_reason = Reason::Done;
    DispatchAfterStrict::Handle m_timer;
};
