#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"
#include "media/BWLibav.h"
#include "media/BWYuvPlanes.h"

#include <memory>
#include <optional>
#include <QString>
#include <span>

/// Reads the pictures of a movie in order, in an endless loop. Damaged pictures are left out, and logged once. One
/// thread at a time.
class BWMovieReader {
public:
    /// Opens the movie and steps to its first good picture. Null, with the reason in `error`, if there is none.
    static std::unique_ptr<BWMovieReader> open(const QString &path, QString &error);

    BWResolution size() const;
    double frameRate() const;

    /// MJPEG or YUYV if the pictures are stored as cameras deliver them; then packet() is such a picture.
    std::optional<BWPixelFormat> nativeFormat() const;
    /// How the values of the pictures are to be interpreted.
    BWColorMatrix matrix() const;
    BWColorRange range() const;

    /// Steps to the next good picture, from the last one to the first. False from then on if a whole round has found
    /// none, because the file has been damaged or removed; the current picture stays.
    bool advance();
    /// Steps to the first picture.
    bool rewind();

    /// The current picture as it is stored; empty without a nativeFormat().
    std::span<const uint8_t> packet() const;
    /// Keeps the bytes of packet() valid, without a copy.
    std::shared_ptr<const void> packetKeeper() const;

    /// The current picture, scaled to fill the size and cropped at its middle, as planes of full range and of that
    /// matrix (one other than BT.601 only if the movie has it). False if it cannot be decoded.
    bool decode(BWResolution size, BWColorMatrix wanted, BWYuvPlanes &planes);

private:
    explicit BWMovieReader(const QString &path);

    const AVCodecParameters &parameters() const { return *m_input->streams[m_stream]->codecpar; }
    int openFile();
    bool toStart();
    int step();
    int stepNative();
    int stepDecoded();
    bool isWhole(const AVPacket &candidate) const;
    void logDamage(const QString &what);

    QString m_path;
    BWLibav::Input m_input;
    int m_stream = -1;
    BWLibav::Codec m_codec;
    BWLibav::Packet m_packet{av_packet_alloc()}; ///< of the current picture, if it is native
    BWLibav::Packet m_next{av_packet_alloc()};
    BWLibav::Frame m_frame{av_frame_alloc()}; ///< the current picture, once decoded
    BWLibav::Frame m_nextFrame{av_frame_alloc()};
    std::optional<BWPixelFormat> m_native;
    BWFrameScaler m_scaler;
    bool m_decoded = false; ///< m_frame is the current picture
    bool m_draining = false; ///< the file is at its end, the decoder not yet
    bool m_exhausted = false;
    bool m_damageLogged = false;
};
