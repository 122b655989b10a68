#include "App/Capture/BWSoundPlayer.h"

#include "App/Capture/BWSoundDecoder.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <QAudioSink>
#include <QEventLoop>
#include <QIODevice>
#include <QMediaDevices>
#include <utility>

using namespace std::chrono_literals;

namespace {

// A sound that comes later than this belongs to nothing any more.
constexpr auto tooLate = 500ms;

// What lies ready at the sound server. Short, because it is also what the server takes for the latency that is wished.
constexpr auto buffered = 40ms;
constexpr auto feedInterval = 5ms;

std::chrono::microseconds durationOf(const QByteArray &samples, const QAudioFormat &format)
{
    return std::chrono::microseconds(format.durationForBytes(static_cast<qint32>(samples.size())));
}

} // namespace

BWSoundPlayer::BWSoundPlayer(QByteArray file) : m_file(std::move(file)) { }

BWSoundPlayer::~BWSoundPlayer() = default;

void BWSoundPlayer::play()
{
    const std::lock_guard lock(m_mutex);
    m_asked = Clock::now();
    m_changed.notify_all();
}

void BWSoundPlayer::end()
{
    const std::lock_guard lock(m_mutex);
    m_end = true;
    m_changed.notify_all();
}

void BWSoundPlayer::run()
{
    const QEventLoop loop; // never runs; the sink must have somewhere to put its timers
    prepare();
    while (takeRequest()) {
        prepare(); // another device may be the default one by now
        if (m_sink)
            playOnce();
    }
    m_sink.reset();
}

/// Waits for a request that is not too late to be answered; false when the thread has to end.
bool BWSoundPlayer::takeRequest()
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

/// True as soon as there is a request, or the thread has to end; false when it is that time.
bool BWSoundPlayer::waitUntilAskedOr(Clock::time_point time)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_until(lock, time, [this] { return m_asked || m_end; });
}

void BWSoundPlayer::prepare()
{
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device == m_device)
        return;
    m_sink.reset();
    m_device = device;
    if (device.isNull())
        return;
    const QAudioFormat format = device.preferredFormat();
    QString error;
    m_samples = BWSoundDecoder::decode(m_file, format, &error);
    if (m_samples.isEmpty()) {
        qCWarning(bwApp).noquote() << "Shutter sound: cannot be decoded:" << error;
        return;
    }
    m_sink = std::make_unique<QAudioSink>(device, format);
    m_sink->setBufferSize(format.bytesForDuration(std::chrono::microseconds(buffered).count()));
}

void BWSoundPlayer::playOnce()
{
    QIODevice *output = m_sink->start();
    bool well = output && m_sink->error() == QAudio::NoError;
    // A device that stands still takes no more; the next sound finds it free again.
    const auto end = Clock::now() + durationOf(m_samples, m_sink->format()) + buffered + 100ms;
    qint64 written = 0;
    auto next = Clock::now();
    while (well && next < end && !waitUntilAskedOr(next)) {
        const qint64 count = std::min<qint64>(m_sink->bytesFree(), m_samples.size() - written);
        if (count > 0) {
            const qint64 taken = output->write(m_samples.constData() + written, count);
            well = taken > 0;
            written += taken;
        }
        next = written < m_samples.size() ? Clock::now() + feedInterval : end;
    }
    if (well)
        waitUntilAskedOr(end);
    m_sink->stop();
    if (!well)
        giveUp();
}

/// Leaves the device alone until another one is the default.
void BWSoundPlayer::giveUp()
{
    qCWarning(bwApp).noquote() << "Shutter sound: no sound from" << m_device.description() << '-' << m_sink->error();
    m_sink.reset();
}
