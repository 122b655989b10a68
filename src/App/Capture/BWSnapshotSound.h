// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWWorkerPool.h"

#include <memory>
#include <QAudioFormat>
#include <QByteArray>
#include <QString>

/// The sound of the shutter. Audio devices may take their time, or forever, so everything about them happens on a
/// thread of its own: nothing here waits for one. Without a device there is no sound.
class BWSnapshotSound {
public:
    /// Interleaved samples of a sound.
    struct Samples {
        QByteArray bytes; ///< empty if the file could not be decoded
        QAudioFormat format;
        QString error; ///< why it could not
    };

    /// The whole sound of a file's bytes (MP3 or any other format of libsndfile), without the silence that encoders put
    /// around it. Any thread.
    static Samples decode(const QByteArray &file);

    /// `file` holds the bytes of the sound's file.
    explicit BWSnapshotSound(const QByteArray &file);
    /// Cuts off a sound that is being played. Does not wait for a device that does not answer.
    ~BWSnapshotSound();
    BWSnapshotSound(const BWSnapshotSound &) = delete;
    BWSnapshotSound &operator=(const BWSnapshotSound &) = delete;

    /// Begins to make the samples and the device ready, if that has not begun, so that the first play() is as prompt as
    /// the others. Any thread.
    void prepare();
    /// Plays the sound now, from its beginning; one that is being played makes room for it. Any thread.
    void play();

private:
    class Player;

    std::shared_ptr<Player> m_player; // shared with the thread
    BWWorkerPool m_thread{1, std::chrono::milliseconds(300)}; // for a device to let go
};
