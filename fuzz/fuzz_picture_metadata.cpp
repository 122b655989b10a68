// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds picture files, and XMP in one, to their readers; what is read must survive being saved.

#include "Model/Measuring/BWPictureMetadata.h"

#include <cstdlib>

namespace {

/// The smallest file with a picture in which metadata can stand.
QByteArray picture(const QByteArray &xmp)
{
    const qsizetype length = xmp.size() + 29 + 2;
    return QByteArray("\xff\xd8\xff\xe1") + char(length >> 8) + char(length)
        + QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + xmp
        + QByteArray("\xff\xc0\0\x0b\x08\0\x1e\0\x28\1\1\x11\0\xff\xda\0\x08\1\1\0\0\x3f\0\0\xff\xd9", 26);
}

void check(const QByteArray &jpeg)
{
    const auto read = BWPictureMetadata::from(jpeg);
    if (read.problem != BWPictureProblem::None && read.problem != BWPictureProblem::Partly) {
        if (read.metadata != BWPictureMetadata())
            std::abort(); // refused, and yet read
        return;
    }
    const auto written = read.metadata.addedTo(jpeg);
    if (written.problem != BWPictureProblem::None)
        return;
    if (BWPictureMetadata::from(written.jpeg).metadata.measurements != read.metadata.measurements)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    check(bytes);
    if (size < 60'000)
        check(picture(bytes));
    return 0;
}
