// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWPictureExport.h"

#include "Model/Export/BWPartFile.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <cerrno>
#include <QBuffer>
#include <QImageWriter>

using namespace Qt::StringLiterals;

namespace {

constexpr int copyQuality = 95; // of a JPEG

/// Takes the encoder's bytes until somebody cancels.
class Bytes final : public QBuffer {
public:
    explicit Bytes(const BWExportWatch &watch) : m_watch(watch) { }

protected:
    qint64 writeData(const char *data, qint64 size) override
    {
        return m_watch.isCancelled() ? -1 : QBuffer::writeData(data, size);
    }

private:
    const BWExportWatch &m_watch;
};

QByteArray encoded(const QImage &picture, bool isPng, const BWPictureMetadata &metadata, const BWExportWatch &watch)
{
    Bytes bytes(watch);
    bytes.open(QIODevice::WriteOnly);
    QImageWriter writer(&bytes, isPng ? "png" : "jpeg");
    if (!isPng)
        writer.setQuality(copyQuality);
    if (picture.isNull() || !writer.write(picture))
        return {};
    if (isPng || metadata.calibration.isNull())
        return bytes.data();
    const BWPictureMetadata::Written written = metadata.addedTo(bytes.data());
    if (written.problem == BWPictureProblem::None)
        return written.jpeg;
    qCWarning(bwModel).noquote() << "A copy goes without its scale, as" << written.detail;
    return bytes.data();
}

} // namespace

BWExportResult BWPictureExport::write(const QImage &picture, const QUrl &target, BWExportWatch &watch,
                                      const BWPictureMetadata &metadata)
{
    const bool isPng = target.path().endsWith(u".png"_s, Qt::CaseInsensitive);
    const QByteArray all = encoded(picture, isPng, metadata, watch);
    if (watch.isCancelled())
        return BWExportResult::cancelled();
    if (all.isNull())
        return BWExportResult::targetFailed(target, ENOMEM);
    BWPartFile part(target);
    constexpr qint64 step = 4 << 20; // a disk may be slow
    if (!part.create())
        return BWExportResult::targetFailed(target, errno);
    watch.begin(all.size());
    for (qint64 done = 0; done < all.size(); done += step) {
        if (watch.isCancelled())
            return BWExportResult::cancelled();
        const qint64 size = std::min<qint64>(step, all.size() - done);
        if (!part.writeAt(done, all.constData() + done, size))
            return BWExportResult::targetFailed(target, errno);
        watch.add(size);
    }
    if (watch.isCancelled())
        return BWExportResult::cancelled();
    if (!part.complete())
        return BWExportResult::targetFailed(target, errno);
    return BWExportResult::done(target);
}
