#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <QtGlobal>

/// What an export and its owner tell each other on the way: how far it has come, and that it is to stop.
class BWExportWatch {
public:
    /// Bytes of the sources that are written, and of how many. At most twenty times a second, and at the end.
    using Tell = std::function<void(qint64 done, qint64 total)>;

    /// `tell` is called on the exporting thread.
    explicit BWExportWatch(Tell tell = {}) : m_tell(std::move(tell)) { }

    /// Any thread.
    void cancel() { m_cancelled = true; }
    bool isCancelled() const { return m_cancelled; }

    /// The exporting thread only, as add().
    void begin(qint64 total);
    void add(qint64 bytes);

private:
    const Tell m_tell;
    std::atomic<bool> m_cancelled = false;
    qint64 m_done = 0;
    qint64 m_total = 0;
    std::chrono::steady_clock::time_point m_next;
};
