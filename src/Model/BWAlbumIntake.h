#pragma once

#include "Model/BWAlbum.h"

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <QObject>
#include <QThreadPool>

/// Brings captures into albums: takes them from any thread, copies them one after the other on a thread of its own,
/// and reports on the thread that it was made on. The album is the one that is current when that thread gets to it.
class BWAlbumIntake {
public:
    using CurrentAlbum = std::function<BWAlbumPtr()>;
    using Completion = std::function<void(bool added, const QUrl &file)>;

    /// `contentsChanged` is called for each capture that has come into its album, before its completion.
    BWAlbumIntake(CurrentAlbum currentAlbum, std::function<void()> contentsChanged);
    /// Copies what is left, without calling anything.
    ~BWAlbumIntake();

    /// Any thread; returns at once.
    void add(const QUrl &file, BWMediaType type, Completion completion);

    /// Returns when all captures are copied or have failed, and the completions are called.
    void finish();

    /// Where queued calls of the owner can live.
    QObject *context() { return &m_context; }

private:
    struct Capture {
        QUrl file;
        BWMediaType type;
        Completion completion;
    };
    struct Result {
        bool added;
        QUrl file;
        Completion completion;
    };

    void startCopies();
    void copy(const BWAlbumPtr &album, const Capture &capture);
    void report();
    template <typename Item>
    std::optional<Item> takeFirst(std::deque<Item> &items);

    CurrentAlbum m_currentAlbum;
    std::function<void()> m_contentsChanged;
    std::mutex m_mutex; // guards the two queues
    std::deque<Capture> m_captures;
    std::deque<Result> m_results;
    QObject m_context;
    QThreadPool m_worker;
};
