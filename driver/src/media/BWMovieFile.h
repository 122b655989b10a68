#pragma once

#include "media/BWLibav.h"

#include <cstdint>

/// An open file as libav's input. The file has to stay open; its position is neither used nor changed.
class BWMovieFile {
public:
    explicit BWMovieFile(int file);
    ~BWMovieFile();
    BWMovieFile(const BWMovieFile &) = delete;
    BWMovieFile &operator=(const BWMovieFile &) = delete;

    /// Reads the header of a QuickTime or MP4 movie; libav's error number, below zero, where it is none. Other files
    /// that the movie refers to are not opened.
    int open();

    AVFormatContext *input() const { return m_input.get(); }

private:
    static int read(void *self, uint8_t *buffer, int size);
    static int64_t seek(void *self, int64_t offset, int whence);

    int m_file;
    int64_t m_position = 0;
    AVIOContext *m_io = nullptr;
    BWLibav::Input m_input;
};
