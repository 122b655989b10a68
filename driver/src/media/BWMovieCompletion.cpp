#include "BWACUDriver/BWMovieCompletion.h"

#include "BWACUDriver/BWFileBytes.h"
#include "media/BWMovieIndex.h"

#include <cstring>
#include <QFile>
#include <QtEndian>

namespace {

/// What is written is on the disk when this returns true.
bool writeAt(QFile &file, int64_t offset, const QByteArray &bytes)
{
    return file.seek(offset) && file.write(bytes) == bytes.size() && file.flush()
        && BWFileBytes::synchronizeData(file.handle());
}

/// The header of a media data box with a 64-bit size.
QByteArray longDataHeader(int64_t size)
{
    QByteArray header(16, Qt::Uninitialized);
    qToBigEndian<uint32_t>(1, header.data());
    std::memcpy(header.data() + 4, "mdat", 4);
    qToBigEndian(static_cast<uint64_t>(size), header.data() + 8);
    return header;
}

} // namespace

BWMovieCompletion completeMovie(const QString &path, QString *error)
{
    const auto fail = [error](const QString &reason) {
        if (error)
            *error = reason;
        return BWMovieCompletion::Failed;
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        return fail(file.errorString());
    const std::optional<BWMovieFragments> fragments = BWMovieFragments::read(file);
    if (!fragments)
        return fail(QStringLiteral("it is not a recording of this program"));
    if (fragments->isPlain)
        return BWMovieCompletion::Plain;
    if (fragments->samples.empty())
        return BWMovieCompletion::Empty;
    const QByteArray index = makeMovieIndex(*fragments);
    if (index.isEmpty())
        return fail(QStringLiteral("its header is damaged"));

    if (!file.resize(fragments->end) || !writeAt(file, fragments->end, index)) {
        const QString reason = file.errorString();
        file.resize(fragments->end);
        return fail(reason);
    }
    const int64_t begin = fragments->movie.offset;
    if (!writeAt(file, begin, longDataHeader(fragments->end - begin)))
        return fail(file.errorString());
    return BWMovieCompletion::Completed;
}
