#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <QAudioDevice>
#include <QByteArray>

class QAudioSink;

/// Plays one short sound on the default audio device. Finds the device, makes the samples for it, opens it for each
/// sound and closes it afterwards, so that it can sleep in between.
///
/// All of that happens in run(), on a thread that does nothing else. No events are processed there on purpose: Qt would
/// use them to look for a lost sound server every few seconds, with a line in the log each time.
class BWSoundPlayer {
public:
    explicit BWSoundPlayer(QByteArray file);
    ~BWSoundPlayer();

    /// Returns after end(), as soon as the device lets it.
    void run();

    /// Asks for the sound, from its beginning. Any thread; never waits for the device.
    void play();
    /// Asks run() to return. Any thread.
    void end();

private:
    using Clock = std::chrono::steady_clock;

    void prepare();
    void playOnce();
    void giveUp();
    bool takeRequest();
    bool waitUntilAskedOr(Clock::time_point time);

    const QByteArray m_file;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<Clock::time_point> m_asked; // the newest request that was not looked at yet
    bool m_end = false;

    // From here on the own of the thread in run().
    QAudioDevice m_device; // the last one that was tried
    QByteArray m_samples; // in the format of the device
    std::unique_ptr<QAudioSink> m_sink; // none without a device that can be used
};
