#pragma once

#include <condition_variable>
#include <mutex>
#include <QString>
#include <thread>

/// Brings what was written to a file to the disk, on a thread of its own: a disk may take its time over it, and the
/// writer goes on meanwhile.
class BWDiskSync {
public:
    /// Keeps the file open; without effect where it cannot be opened.
    explicit BWDiskSync(const QString &path);
    /// Waits for a request that is being carried out.
    ~BWDiskSync();

    /// Returns at once. A request that comes while one is being carried out is carried out after it.
    void request();

    /// The open file; -1 if it could not be opened.
    int descriptor() const { return m_descriptor; }

private:
    void run();

    const int m_descriptor;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_wanted = false;
    bool m_ending = false;
    std::thread m_thread;
};
