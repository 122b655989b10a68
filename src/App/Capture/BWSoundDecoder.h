#pragma once

#include <QAudioFormat>
#include <QByteArray>
#include <QString>

/// Makes plain samples of a short sound in a compressed file, the whole of it at once.
class BWSoundDecoder {
public:
    /// `file` holds the file's bytes, MP3 or whatever else libavformat knows. Answers interleaved samples in `format`,
    /// without the silence that encoders put around a sound; empty, with the reason in `error` if given, where that
    /// cannot be done. Any thread.
    static QByteArray decode(const QByteArray &file, const QAudioFormat &format, QString *error = nullptr);
};
