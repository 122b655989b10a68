// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/BWMovieLibrary.h"

#include "base/BWDriverLog.h"

#include <dlfcn.h>

namespace {

struct Loaded {
    Loaded();

    const BWMovieLibrary *library = nullptr;
    QString error;
};

Loaded::Loaded()
{
    // Found by the program's own search path. Never unloaded, because its objects live as long as they like.
    if (void *const handle = ::dlopen(BW_MOVIE_LIBRARY, RTLD_NOW | RTLD_LOCAL))
        library = static_cast<const BWMovieLibrary *>(::dlsym(handle, "bwMovieLibrary"));
    if (library)
        return;
    error = QString::fromLocal8Bit(::dlerror());
    qCWarning(bwMedia).noquote() << "Movies can be neither recorded nor read:" << error;
}

} // namespace

const BWMovieLibrary *BWMovieLibrary::load(QString &error)
{
    static const Loaded loaded;
    error = loaded.error;
    return loaded.library;
}

std::unique_ptr<BWMovieReader> BWMovieReader::open(const QString &path, QString &error)
{
    const BWMovieLibrary *const library = BWMovieLibrary::load(error);
    return library ? library->openReader(path, error) : nullptr;
}

std::unique_ptr<BWMovieWriter> BWMovieWriter::create(const QString &path, QString *error)
{
    QString reason;
    const BWMovieLibrary *const library = BWMovieLibrary::load(reason);
    auto writer = library ? library->createWriter(path, reason) : nullptr;
    if (!writer && error)
        *error = reason;
    return writer;
}

bool BWMovieWriter::isPossible()
{
    QString reason;
    return BWMovieLibrary::load(reason) != nullptr;
}

std::optional<BWMoviePicture> BWMoviePicture::read(int file, QSize most, QString *error)
{
    QString reason;
    const BWMovieLibrary *const library = BWMovieLibrary::load(reason);
    auto picture = library ? library->readPicture(file, most, reason) : std::nullopt;
    if (!picture && error)
        *error = reason;
    return picture;
}

BWSmallerMovie::Result BWSmallerMovie::make(int movie, int target, const Options &options, const Progress &progress)
{
    QString reason;
    const BWMovieLibrary *const library = BWMovieLibrary::load(reason);
    return library ? library->makeSmaller(movie, target, options, progress)
                   : Result{.end = End::NoEncoder, .reason = reason};
}

void BWMoviePicture::prepare()
{
    QString reason;
    BWMovieLibrary::load(reason);
}
