#include "media/BWMovieFile.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int bufferSize = 64 * 1024;

int refuseToOpen(AVFormatContext *, AVIOContext **, const char *, int, AVDictionary **)
{
    return AVERROR(EACCES);
}

} // namespace

BWMovieFile::BWMovieFile(int file) : m_file(file) { }

BWMovieFile::~BWMovieFile()
{
    m_input.reset();
    if (m_io)
        av_freep(&m_io->buffer);
    avio_context_free(&m_io);
}

int BWMovieFile::open()
{
    BWLibav::silence();
    auto *const buffer = static_cast<unsigned char *>(av_malloc(bufferSize));
    if (!buffer)
        return AVERROR(ENOMEM);
    m_io = avio_alloc_context(buffer, bufferSize, 0, this, &BWMovieFile::read, nullptr, &BWMovieFile::seek);
    if (!m_io) {
        av_free(buffer);
        return AVERROR(ENOMEM);
    }
    AVFormatContext *context = avformat_alloc_context();
    if (!context)
        return AVERROR(ENOMEM);
    context->pb = m_io;
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->io_open = &refuseToOpen;
    const int result = avformat_open_input(&context, nullptr, av_find_input_format("mov"), nullptr);
    if (result >= 0) // else libav has freed it
        m_input.reset(context);
    return result;
}

int BWMovieFile::read(void *self, uint8_t *buffer, int size)
{
    auto *const file = static_cast<BWMovieFile *>(self);
    ssize_t count = 0;
    do {
        count = ::pread(file->m_file, buffer, static_cast<std::size_t>(size), file->m_position);
    } while (count < 0 && errno == EINTR);
    if (count < 0)
        return AVERROR(errno);
    file->m_position += count;
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

int64_t BWMovieFile::seek(void *self, int64_t offset, int whence)
{
    auto *const file = static_cast<BWMovieFile *>(self);
    struct stat info;
    if (::fstat(file->m_file, &info) != 0)
        return AVERROR(errno);
    const int how = whence & ~AVSEEK_FORCE;
    if (how == AVSEEK_SIZE)
        return info.st_size;
    const int64_t base = how == SEEK_CUR ? file->m_position : how == SEEK_END ? info.st_size : 0;
    if (base + offset < 0)
        return AVERROR(EINVAL);
    return file->m_position = base + offset;
}
