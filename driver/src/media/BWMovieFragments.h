#pragma once

#include "media/BWMovieBoxes.h"

#include <optional>

/// One picture of a movie.
struct BWMovieSample {
    int64_t offset = 0; ///< in the file
    uint32_t size = 0;
    int64_t time = 0; ///< in units of the media's time scale
};

/// A movie of fragments of one picture each, as far as it was written.
struct BWMovieFragments {
    BWMovieBoxes::Place movie; ///< the movie box in front, which has no pictures
    BWMovieBoxes::Box index; ///< its content
    std::vector<BWMovieSample> samples; ///< in order; their times rise
    int64_t end = 0; ///< behind the last whole picture
    bool isPlain = false; ///< a movie with an index; the fields above are empty then

    /// Nothing if the file is not of that kind.
    static std::optional<BWMovieFragments> read(QIODevice &file);
};
