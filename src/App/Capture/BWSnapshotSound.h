#pragma once

#include "Utils/BWWorkerPool.h"

#include <memory>
#include <QByteArray>

class BWSoundPlayer;

/// The sound of the shutter. Audio devices may take their time, or forever, so all that has to do with them happens on
/// a thread of its own: nothing here waits for one. Where there is no device, there is no sound.
class BWSnapshotSound {
public:
    /// `file` holds the bytes of the sound's file. Its samples are made ready at once, before the first play().
    explicit BWSnapshotSound(const QByteArray &file);
    /// Cuts off a sound that is being played. Does not wait for a device that does not answer.
    ~BWSnapshotSound();
    BWSnapshotSound(const BWSnapshotSound &) = delete;
    BWSnapshotSound &operator=(const BWSnapshotSound &) = delete;

    /// Plays the sound now, from its beginning; one that is being played makes room for it. Any thread.
    void play();

private:
    std::shared_ptr<BWSoundPlayer> m_player; // shared with the thread
    BWWorkerPool m_thread{1, std::chrono::milliseconds(300)}; // for a device to let go
};
