// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// Brings captures into albums: takes them from any thread, copies them one after the other on a thread of its own,
/// and reports on the GUI thread. The album is the one that is current when the GUI thread gets to the capture.
class BWAlbumIntake {
public:
    using CurrentAlbum = std::function<BWAlbumPtr()>;
    using Completion = std::function<void(bool added, const QUrl &file)>;
    /// How much of a file is copied, from 0 to 1. Called for long copies only, a few times a second.
    using Progress = std::function<void(double done)>;

    /// `contentsChanged` is called for each capture that is in its album, before its completion.
    BWAlbumIntake(CurrentAlbum currentAlbum, std::function<void()> contentsChanged);
    /// Copies what is left without calling anything, unless the disk takes far too long.
    ~BWAlbumIntake();
    BWAlbumIntake(const BWAlbumIntake &) = delete;
    BWAlbumIntake &operator=(const BWAlbumIntake &) = delete;

    /// Any thread; returns at once. Into `album` instead of the current one, if given, and then without `contentsChanged`.
    void add(const QUrl &file, BWMediaType type, Completion completion, Progress progress = {}, BWAlbumPtr album = {});

    /// Holds captures back until release(), while the current album is unknown. Those still held back at the end stay
    /// where they are. Owner's thread.
    void hold() { m_held = true; }
    void release();

    /// Calls `done` as soon as all captures are copied or have failed, and their completions have returned; at once if
    /// the only one left is one whose completion is waiting for something, such as the user.
    void whenDone(std::function<void()> done);

    /// Ends all copies without calling their completions: the captures stay where they are.
    void abandon();

    /// Expires with this object, for posted calls.
    std::weak_ptr<void> alive() const { return m_alive.watch(); }

private:
    struct Capture {
        QUrl file;
        BWMediaType type;
        Completion completion;
        Progress progress;
        BWAlbumPtr album; ///< null for the current one
    };

    void startCopies();
    void startCopy(const Capture &capture);
    void report(const Capture &capture, bool added, const QUrl &file);
    BWAlbum::Progress throttled(const Progress &progress);
    void notifyIfDone();

    const CurrentAlbum m_currentAlbum;
    const std::function<void()> m_contentsChanged;
    BWAliveToken m_alive;
    const std::shared_ptr<std::atomic<bool>> m_abandoned = std::make_shared<std::atomic<bool>>(false);
    std::atomic<int> m_open = 0; // captures not reported yet
    std::mutex m_mutex; // guards the captures
    std::deque<Capture> m_captures; // whose copies have not begun
    bool m_held = false;
    std::vector<std::function<void()>> m_whenDone;
    BWWorkerPool m_worker; // last, so that it ends first
};
