// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWLibav.h"

#include <functional>
#include <memory>

struct AVAudioFifo;
struct SwrContext;

/// The sound of a movie on its way into another: AAC, which is copied if it is that already. It keeps its time: silence
/// fills a gap. One thread.
class BWMovieSound {
public:
    /// Writes a packet of the stream, whose times are in that base; false if it cannot be written.
    using Write = std::function<bool(AVPacket &packet, const AVStream &stream, AVRational base)>;

    /// Adds a stream to `output`, which has no header yet. Null if the movie has no sound, or none that libav can read.
    static std::unique_ptr<BWMovieSound> open(const AVFormatContext &input, AVFormatContext &output);
    ~BWMovieSound();

    /// Of the stream in the input.
    int index() const { return m_input->index; }
    /// The next packet of it, or null at its end; false if something cannot be written. Damaged sound is left out.
    bool take(const AVPacket *packet, const Write &write);

private:
    explicit BWMovieSound(AVStream *input) : m_input(input) { }
    bool prepare(AVFormatContext &output);
    bool isCopied() const { return !m_decoder; }
    bool decode(const AVPacket *packet, const Write &write);
    bool keepTime(int64_t time, const Write &write);
    void add(const AVFrame &samples);
    bool encode(bool ends, const Write &write);
    BWLibav::Frame emptyFrame(int samples) const;
    bool send(const AVFrame *frame, const Write &write);

    AVStream *const m_input;
    AVStream *m_stream = nullptr; ///< of the output
    BWLibav::Codec m_decoder;
    BWLibav::Codec m_encoder;
    SwrContext *m_resampler = nullptr;
    AVAudioFifo *m_samples = nullptr; ///< that wait for enough of them
    int64_t m_next = AV_NOPTS_VALUE; ///< the time of the sample that follows them, in samples
    int64_t m_surplus = 0; ///< samples to come whose time is taken
};
