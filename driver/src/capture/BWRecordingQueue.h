#pragma once

#include "BWACUDriver/BWFrame.h"

#include <deque>

/// Frames on their way into a movie. A device has only a few buffers, so the queue holds but two of them; further frames
/// are copied, up to a bound in bytes, so that a pause of the disk costs no frame. One thread at a time.
class BWRecordingQueue {
public:
    /// False if there is no room; the frame is not taken then.
    bool push(const BWFrame &frame);
    /// The oldest frame; null if there is none.
    BWFrame pop();
    bool isEmpty() const { return m_entries.empty(); }
    void clear();

private:
    struct Entry {
        BWFrame frame;
        std::size_t copied = 0; ///< bytes
        bool isHeld = false; ///< one of the device's buffers
    };

    std::deque<Entry> m_entries;
    std::size_t m_copied = 0;
    int m_held = 0;
};
