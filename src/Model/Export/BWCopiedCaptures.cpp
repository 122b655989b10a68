// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWCopiedCaptures.h"

#include "Model/Export/BWExportSource.h"
#include "Utils/BWFilePath.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString jpegType = u"image/jpeg"_s;
const QString pngType = u"image/png"_s;
// Qt would offer it to other programs in every format it can write, so it is not among the formats that are listed.
const QString qtImageType = u"application/x-qt-image"_s;

} // namespace

BWCopiedCaptures::BWCopiedCaptures(const QList<QUrl> &files, QByteArray jpeg) : m_jpeg(std::move(jpeg))
{
    if (files.isEmpty())
        return;
    setUrls(files);
    QStringList paths;
    QByteArray forFileManagers = "copy";
    for (const QUrl &file : files) {
        paths.append(QFile::decodeName(BWFilePath::native(file)));
        forFileManagers += '\n' + file.toEncoded();
    }
    setText(paths.join(u'\n'));
    setData(u"x-special/gnome-copied-files"_s, forFileManagers);
}

QByteArray BWCopiedCaptures::pictureOf(const QUrl &file)
{
    if (!BWFilePath::native(file).endsWith(".jpg"))
        return {};
    const auto source = BWExportSource::open(file);
    if (!source || source->size() > largestPicture)
        return {};
    QByteArray bytes(source->size(), Qt::Uninitialized);
    return source->readAt(0, bytes.data(), bytes.size()) ? bytes : QByteArray();
}

QStringList BWCopiedCaptures::formats() const
{
    QStringList formats = QMimeData::formats();
    if (!m_jpeg.isNull())
        formats += {jpegType, pngType};
    return formats;
}

bool BWCopiedCaptures::hasFormat(const QString &mimeType) const
{
    return QMimeData::hasFormat(mimeType)
        || (!m_jpeg.isNull() && (mimeType == jpegType || mimeType == pngType || mimeType == qtImageType));
}

QVariant BWCopiedCaptures::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (m_jpeg.isNull())
        return QMimeData::retrieveData(mimeType, type);
    if (mimeType == jpegType)
        return m_jpeg;
    if (mimeType == qtImageType)
        return image();
    if (mimeType != pngType)
        return QMimeData::retrieveData(mimeType, type);
    if (m_png.isNull()) {
        // The program stands still meanwhile, and noise does not become smaller with more effort.
        constexpr int quickly = 20; // of 100, which is the first of the library's nine steps
        QBuffer buffer(&m_png);
        QImageWriter writer(&buffer, "png");
        writer.setCompression(quickly);
        writer.write(image());
        m_image = {};
    }
    return m_png;
}

const QImage &BWCopiedCaptures::image() const
{
    if (m_image.isNull()) {
        QByteArray jpeg = m_jpeg;
        QBuffer buffer(&jpeg);
        QImageReader reader(&buffer, "jpeg");
        reader.setAutoTransform(true);
        m_image = reader.read();
    }
    return m_image;
}
