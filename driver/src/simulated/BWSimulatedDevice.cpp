// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulated/BWSimulatedDevice.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWCameraSetting.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t pooledBuffers = 8;
constexpr uint64_t backlog = 2; ///< overdue frames that are still delivered

using Clock = std::chrono::steady_clock;

/// Damage that a check of both ends of the image does not find: markers that do not belong in the middle of it.
void tear(std::vector<uint8_t> &jpeg)
{
    const std::size_t middle = jpeg.size() / 2;
    for (std::size_t i = middle; i + 1 < std::min(middle + 64, jpeg.size() - 2); i += 2) {
        jpeg[i] = 0xff;
        jpeg[i + 1] = 0xd5;
    }
}

} // namespace

BWBufferPool::BWBufferPool(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        m_free.push_back(m_buffers.emplace_back(std::make_unique<Buffer>()).get());
}

BWBufferPool::Buffer *BWBufferPool::acquire()
{
    const std::lock_guard lock(m_mutex);
    if (m_free.empty())
        return nullptr;
    Buffer *buffer = m_free.back();
    m_free.pop_back();
    return buffer;
}

void BWBufferPool::release(Buffer *buffer)
{
    buffer->passedOn = {};
    const std::lock_guard lock(m_mutex);
    m_free.push_back(buffer);
}

BWSimulatedDevice::BWSimulatedDevice(BWSimulatedCameraOptions options, std::shared_ptr<BWSimulatedCable> cable,
                                     std::shared_ptr<const BWSimulatedObstacle> obstacle)
    : m_options(std::move(options)),
      m_profile(BWSimulatedProfile::forType(m_options.type)),
      m_cable(std::move(cable)),
      m_obstacle(std::move(obstacle)),
      m_controls(m_profile.controls)
{
}

BWSimulatedDevice::~BWSimulatedDevice()
{
    m_cable->clearButton(this);
    m_cable->release(this);
}

void BWSimulatedDevice::setEvents(std::function<void()> button,
                                  std::function<void(int identifier, double value)> control)
{
    m_cable->setButton(this, std::move(button));
    m_control = std::move(control);
}

std::vector<BWControlInfo> BWSimulatedDevice::controls() const
{
    return m_profile.controls;
}

BWResolution BWSimulatedDevice::resolution() const
{
    return m_resolution;
}

void BWSimulatedDevice::setResolution(BWResolution requested)
{
    m_resolution = requested.nearestOf(m_profile.description->availableResolutions);
}

BWStartProblem BWSimulatedDevice::startStreaming()
{
    BWStartProblem problem = m_obstacle->problem();
    const bool carried = problem.kind == BWStartProblem::Kind::NoBandwidth
        && m_resolution == BWResolution(1, 1).nearestOf(m_profile.description->availableResolutions);
    if (!problem.isNone() && !carried)
        return problem;
    switch (m_cable->claim(this)) {
    case BWSimulatedCable::Claim::Granted:
        break;
    case BWSimulatedCable::Claim::InUse:
        return {BWStartProblem::Kind::InUse};
    case BWSimulatedCable::Claim::Gone:
        return {BWStartProblem::Kind::Gone};
    }
    picture().setResolution(m_resolution);
    m_mode = mode();
    m_pool = std::make_shared<BWBufferPool>(pooledBuffers);
    m_sequence = 0;
    m_schedule.start(Clock::now(), m_mode.framesPerSecond);
    return {};
}

void BWSimulatedDevice::stopStreaming()
{
    m_cable->release(this);
    m_pool.reset();
}

BWCaptureDevice::WaitResult BWSimulatedDevice::waitFrame(std::chrono::milliseconds timeout, BWFrame &frame)
{
    const auto deadline = Clock::now() + timeout;
    while (true) {
        switch (m_cable->waitForTurn(m_schedule.due(), deadline)) {
        case BWSimulatedCable::Turn::Frame:
            break;
        case BWSimulatedCable::Turn::Nothing:
            return WaitResult::Nothing;
        case BWSimulatedCable::Turn::Gone:
            return WaitResult::Gone;
        }
        auto time = Clock::now();
        if (m_options.pacing == BWSimulatedCameraOptions::Pacing::RealTime) {
            const uint64_t skipped = m_schedule.skipOverdue(Clock::now(), backlog);
            m_sequence += skipped;
            m_pictureIndex += skipped;
            time = m_schedule.due();
        }
        m_schedule.advance();
        m_controls.advance(std::chrono::duration<double>(1 / m_mode.framesPerSecond), m_control);
        const BWSimulatedCable::Fault fault = m_cable->takeFault();
        const bool captured = !fault.lost && capture(time, fault, frame);
        ++m_sequence;
        ++m_pictureIndex;
        if (captured)
            return WaitResult::Frame;
    }
}

void BWSimulatedDevice::interrupt()
{
    m_cable->interrupt();
}

bool BWSimulatedDevice::expectsFrames() const
{
    return m_cable->framesOutstanding();
}

double BWSimulatedDevice::setControl(int identifier, double value)
{
    return m_controls.set(identifier, value);
}

void BWSimulatedDevice::setVideoNorm(int norm)
{
    m_controls.set(BWSettingVideoNorm, norm);
}

int BWSimulatedDevice::readRegister(int identifier)
{
    const bool exists = identifier >= 0 && identifier < static_cast<int>(m_registers.size());
    return exists ? m_registers[static_cast<std::size_t>(identifier)] : 0;
}

void BWSimulatedDevice::writeRegister(int identifier, int value)
{
    if (identifier >= 0 && identifier < static_cast<int>(m_registers.size()))
        m_registers[static_cast<std::size_t>(identifier)] = static_cast<uint8_t>(value & 0xff);
}

BWPictureSource &BWSimulatedDevice::picture()
{
    if (!m_picture) {
        QString error;
        m_picture = makePictureSource(m_options.path, &error);
        if (!m_picture) {
            qCWarning(bwSimulation).noquote()
                << "Showing the specimen:" << m_options.path << "cannot be used:" << error;
            m_picture = makePictureSource({});
        }
    }
    return *m_picture;
}

BWSimulatedProfile::Mode BWSimulatedDevice::mode()
{
    // What comes from a file is best passed on unchanged.
    const auto requested = m_options.pixelFormat ? m_options.pixelFormat : picture().nativeFormat();
    BWSimulatedProfile::Mode mode =
        m_profile.mode(m_resolution, requested, static_cast<int>(m_controls.value(BWSettingVideoNorm)));
    mode.framesPerSecond = picture().frameRate().value_or(mode.framesPerSecond);
    return mode;
}

bool BWSimulatedDevice::capture(BWSimulatedCable::Time time, BWSimulatedCable::Fault fault, BWFrame &frame)
{
    BWBufferPool::Buffer *buffer = m_pool->acquire();
    if (!buffer)
        return false;
    m_picture->setControls(m_controls.picture());
    BWFrameInfo info;
    info.pixelFormat = m_mode.format;
    info.width = m_resolution.width();
    info.height = m_resolution.height();
    info.planes[0] = draw(*buffer, fault);
    // JPEG defines its own colours, whatever the source.
    const bool compressed = m_mode.format == BWPixelFormat::MJPEG;
    info.matrix = compressed ? BWColorMatrix::BT601 : m_picture->matrix();
    info.range = compressed ? BWColorRange::Full : m_picture->range();
    info.timestamp = time;
    info.sequence = m_sequence;
    frame = BWFrame(
        info, [pool = m_pool.get(), buffer] { pool->release(buffer); }, m_pool);
    return true;
}

BWPlane BWSimulatedDevice::draw(BWBufferPool::Buffer &buffer, BWSimulatedCable::Fault fault)
{
    const bool compressed = m_mode.format == BWPixelFormat::MJPEG;
    const int stride = compressed ? 0 : m_resolution.width() * 2;
    buffer.passedOn = m_picture->passOn(m_pictureIndex, m_mode.format);
    const std::span<const uint8_t> passedOn = buffer.passedOn.bytes;
    if (!passedOn.empty() && !fault.torn && !fault.truncated)
        return {passedOn.data(), passedOn.size(), stride};
    std::vector<uint8_t> &bytes = buffer.bytes;
    if (!passedOn.empty()) {
        bytes.assign(passedOn.begin(), passedOn.end());
    } else if (compressed) {
        m_picture->renderJPEG(m_pictureIndex, bytes);
    } else {
        bytes.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(m_resolution.height()));
        m_picture->renderYUYV(m_pictureIndex, bytes.data(), stride);
    }
    if (compressed && fault.torn)
        tear(bytes);
    if (compressed && fault.truncated)
        bytes.resize(bytes.size() / 2);
    return {bytes.data(), bytes.size(), stride};
}
