// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWMovie.h"
#include "BWACUDriver/BWMovieWriter.h"
#include "BWACUDriver/BWSmallerMovie.h"
#include "media/BWMovieReader.h"

#include <memory>
#include <optional>
#include <QSize>
#include <QString>

/// All that uses libav. It is a library of ours that is loaded when first used, because libav brings a hundred others
/// along: loading them takes longer than all else that the first picture needs.
struct BWMovieLibrary {
    std::unique_ptr<BWMovieReader> (*openReader)(const QString &path, QString &error);
    std::unique_ptr<BWMovieWriter> (*createWriter)(const QString &path, QString &error);
    std::optional<BWMoviePicture> (*readPicture)(int file, QSize most, QString &error);
    BWSmallerMovie::Result (*makeSmaller)(int movie, int target, const BWSmallerMovie::Options &options,
                                          const BWSmallerMovie::Progress &progress);

    /// Null, with the reason in `error`, if it cannot be loaded. Any thread; the first call takes some time.
    static const BWMovieLibrary *load(QString &error);
};
