// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <QByteArrayList>
#include <QString>

/// Turns a movie into one that is small enough to be sent: H.264 with limited range and 4:2:0, and AAC if it has sound, in
/// an MP4 file whose index comes first, as browsers and phones want it. Every picture keeps its time.
class BWSmallerMovie {
public:
    enum class Quality {
        High, ///< looks like the original
        Medium, ///< fine detail stays
        Small, ///< at most `smallSide` pixels wide or high, and coarser
    };
    static constexpr int smallSide = 1280;

    struct Options {
        Quality quality = Quality::Medium;
        int threads = 1; ///< of the encoder
        QByteArrayList encoders{"libx264", "libopenh264"}; ///< libav's names; the first that is there is used
    };

    enum class End {
        Done,
        Cancelled,
        NoEncoder, ///< libav has none of them
        NoPictures, ///< none can be read: the file is damaged, or no movie
        WriteFailed, ///< `error` says why
        Failed, ///< something else, or the new movie is not what it should be
    };
    struct Result {
        End end = End::Failed;
        int pictures = 0; ///< in the new movie
        int leftOut = 0; ///< damaged, or cut off with the end of the file
        int error = 0; ///< an errno
        QString reason{}; ///< for the log; null if all went well
    };
    /// How much is done, from 0 to 1; false makes it stop soon. Called often, on the calling thread.
    using Progress = std::function<bool(double done)>;

    /// Reads an open QuickTime or MP4 file and writes the new movie into another, which is open and empty, and must not
    /// be used unless all went well. Reads no other file, whatever the movie refers to. Before it says Done it has read the
    /// new movie again. Any thread; takes long, and the encoder's threads get the priority of the calling one.
    static Result make(int movie, int target, const Options &options, const Progress &progress);
};
