// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWSnapshotSound.h"

#include "Utils/BWLogging.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <QAudioDevice>
#include <QAudioSink>
#include <QEventLoop>
#include <QIODevice>
#include <QMediaDevices>
#include <sndfile.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

// A sound that comes later than this no longer belongs to its snapshot.
constexpr auto tooLate = 500ms;

// The sound server's buffer. Short, because the server takes it as the requested latency.
constexpr auto buffered = 40ms;
constexpr auto feedInterval = 5ms;

/// The sound server's library cleans up at exit, and aborts if a thread still waits in it.
void exitWithoutWaiting(int status, void *)
{
    std::fflush(nullptr);
    _exit(status);
}

std::chrono::microseconds durationOf(const BWSnapshotSound::Samples &samples)
{
    return std::chrono::microseconds(samples.format.durationForBytes(static_cast<qint32>(samples.bytes.size())));
}

} // namespace

/// Finds the default audio device, opens it for each sound and closes it afterwards, so that it can sleep in between.
///
/// All of that happens in run(), on a thread that does nothing else. It processes no events on purpose: Qt would use
/// them to look for a lost sound server every few seconds, with a line in the log each time.
class BWSnapshotSound::Player {
public:
    explicit Player(QByteArray file) : m_file(std::move(file)) { }

    /// Returns after end(), as soon as the device lets it.
    void run();

    /// Lets run() make the sound and the device ready; play() does, too. Any thread.
    void begin();
    /// Requests the sound, from its start. Any thread; never waits for the device.
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
    std::optional<Clock::time_point> m_asked; // the newest request that run() has not seen
    bool m_begin = false;
    bool m_end = false;

    // Only run() touches what follows.
    Samples m_samples;
    QAudioDevice m_device; // the last one tried
    std::unique_ptr<QAudioSink> m_sink; // null without a usable device
};

BWSnapshotSound::Samples BWSnapshotSound::decode(const QByteArray &file)
{
    const int descriptor = ::memfd_create("sound", MFD_CLOEXEC);
    [[maybe_unused]] const ssize_t written = ::write(descriptor, file.constData(), std::size_t(file.size()));
    ::lseek(descriptor, 0, SEEK_SET);
    SF_INFO info = {};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE *)> sound(sf_open_fd(descriptor, SFM_READ, &info, SF_TRUE),
                                                             &sf_close);
    Samples samples;
    if (!sound) {
        samples.error = QString::fromLocal8Bit(sf_strerror(nullptr));
        return samples;
    }
    samples.format.setSampleFormat(QAudioFormat::Int16);
    samples.format.setSampleRate(info.samplerate);
    samples.format.setChannelCount(info.channels);
    samples.bytes.resize(info.frames * samples.format.bytesPerFrame());
    const sf_count_t frames = sf_readf_short(sound.get(), reinterpret_cast<short *>(samples.bytes.data()), info.frames);
    samples.bytes.truncate(std::max<sf_count_t>(frames, 0) * samples.format.bytesPerFrame());
    if (samples.bytes.isEmpty())
        samples.error = QString::fromLocal8Bit(sf_strerror(sound.get()));
    return samples;
}

BWSnapshotSound::BWSnapshotSound(const QByteArray &file) : m_player(std::make_shared<Player>(file))
{
    m_thread.run([player = m_player] { player->run(); });
}

BWSnapshotSound::~BWSnapshotSound()
{
    m_player->end();
    if (m_thread.finish())
        return;
    qCWarning(bwApp, "Shutter sound: the audio device does not answer");
    on_exit(&exitWithoutWaiting, nullptr);
}

void BWSnapshotSound::prepare()
{
    m_player->begin();
}

void BWSnapshotSound::play()
{
    m_player->play();
}

void BWSnapshotSound::Player::begin()
{
    const std::lock_guard lock(m_mutex);
    m_begin = true;
    m_changed.notify_all();
}

void BWSnapshotSound::Player::play()
{
    const std::lock_guard lock(m_mutex);
    m_asked = Clock::now();
    m_changed.notify_all();
}

void BWSnapshotSound::Player::end()
{
    const std::lock_guard lock(m_mutex);
    m_end = true;
    m_changed.notify_all();
}

void BWSnapshotSound::Player::run()
{
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_begin || m_asked || m_end; });
        if (m_end)
            return;
    }
    const QEventLoop loop; // never runs; the sink must have somewhere to put its timers
    m_samples = decode(m_file);
    if (m_samples.bytes.isEmpty())
        qCWarning(bwApp).noquote() << "Shutter sound: cannot be decoded:" << m_samples.error;
    prepare();
    while (takeRequest()) {
        prepare(); // another device may be the default one by now
        if (m_sink)
            playOnce();
    }
    m_sink.reset();
}

/// Waits for a request that is not too old; false when the thread has to end.
bool BWSnapshotSound::Player::takeRequest()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_asked || m_end; });
        if (m_end)
            return false;
        if (Clock::now() - *std::exchange(m_asked, std::nullopt) < tooLate)
            return true;
    }
}

/// True as soon as there is a request or the thread has to end; false at that time.
bool BWSnapshotSound::Player::waitUntilAskedOr(Clock::time_point time)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_until(lock, time, [this] { return m_asked || m_end; });
}

void BWSnapshotSound::Player::prepare()
{
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (m_samples.bytes.isEmpty() || device == m_device)
        return;
    m_sink.reset();
    m_device = device;
    if (device.isNull())
        return;
    // In the file's own format: the sound server converts it to what the device needs.
    m_sink = std::make_unique<QAudioSink>(device, m_samples.format);
    m_sink->setBufferSize(m_samples.format.bytesForDuration(std::chrono::microseconds(buffered).count()));
}

void BWSnapshotSound::Player::playOnce()
{
    QIODevice *output = m_sink->start();
    bool well = output && m_sink->error() == QAudio::NoError;
    // A stalled device takes no more data; stopping frees it for the next sound.
    const auto end = Clock::now() + durationOf(m_samples) + buffered + 100ms;
    qint64 written = 0;
    auto next = Clock::now();
    while (well && next < end && !waitUntilAskedOr(next)) {
        const qint64 count = std::min<qint64>(m_sink->bytesFree(), m_samples.bytes.size() - written);
        if (count > 0) {
            const qint64 taken = output->write(m_samples.bytes.constData() + written, count);
            well = taken > 0;
            written += taken;
        }
        next = written < m_samples.bytes.size() ? Clock::now() + feedInterval : end;
    }
    if (well)
        waitUntilAskedOr(end);
    m_sink->stop();
    if (!well)
        giveUp();
}

/// Ignores the device until another one is the default.
void BWSnapshotSound::Player::giveUp()
{
    qCWarning(bwApp).noquote() << "Shutter sound: no sound from" << m_device.description() << '-' << m_sink->error();
    m_sink.reset();
}
