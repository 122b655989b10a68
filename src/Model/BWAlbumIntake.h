#pragma once

#include "Model/BWAlbum.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <QObject>
#include <QThreadPool>
#include <vector>

/// Brings captures into albums: takes them from any thread, copies them one after the other on a thread of its own,
/// and reports on the thread that it was made on. The album is the one that is current when that thread gets to it.
class BWAlbumIntake {
public:
    using CurrentAlbum = std::function<BWAlbumPtr()>;
    using Completion = std::function<void(bool added, const QUrl &file)>;
    /// How much of a file is copied, from 0 to 1. Told only of copies that take long, a few times a second.
    using Progress = std::function<void(double done)>;

    /// `contentsChanged` is called for each capture that has come into its album, before its completion.
    BWAlbumIntake(CurrentAlbum currentAlbum, std::function<void()> contentsChanged);
    /// Copies what is left, without calling anything.
    ~BWAlbumIntake();

    /// Any thread; returns at once.
    void add(const QUrl &file, BWMediaType type, Completion completion, Progress progress = {});

    /// Calls `done` as soon as all captures are copied or have failed, and the completions are called; at once if that
    /// is so by now.
    void whenDone(std::function<void()> done);

    /// Ends the copies that run or wait, without calling their completions: the captures stay where they are.
    void abandon() { m_abandoned = true; }

    /// Where queued calls of the owner can live.
    QObject *context() { return &m_context; }

private:
    struct Capture {
        QUrl file;
        BWMediaType type;
        Completion completion;
        Progress progress;
    };
    struct Result {
        bool added;
        QUrl file;
        Completion completion;
    };

    void startCopies();
    void copy(const BWAlbumPtr &album, const Capture &capture);
    void report();
    void tellIfDone();
    BWAlbum::Progress throttled(const Progress &progress);
    template <typename Item>
    std::optional<Item> takeFirst(std::deque<Item> &items);

    CurrentAlbum m_currentAlbum;
    std::function<void()> m_contentsChanged;
    std::atomic<bool> m_abandoned = false;
    std::mutex m_mutex; // guards the two queues
    std::deque<Capture> m_captures;
    std::deque<Result> m_results;
    int m_open = 0; // captures that are not reported yet
    std::vector<std::function<void()>> m_whenDone; // GUI thread, as all below
    QObject m_context;
    QThreadPool m_worker;
};
