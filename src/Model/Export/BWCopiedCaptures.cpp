// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Export/BWCopiedCaptures.h"

#include "Model/Export/BWExportSource.h"
#include "Utils/BWFilePath.h"

#include <limits>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString jpegType = u"image/jpeg"_s;
const QString pngType = u"image/png"_s;
// Qt would offer it to other programs in every format it can write, so it is not among the formats that are listed.
const QString qtImageType = u"application/x-qt-image"_s;

QImage imageOf(QByteArray jpeg, qint64 mostPixels)
{
    QBuffer buffer(&jpeg);
    QImageReader reader(&buffer, "jpeg");
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    return qint64{size.width()} * size.height() <= mostPixels ? reader.read() : QImage();
}

} // namespace

BWCopiedCaptures::BWCopiedCaptures(const QList<QUrl> &files, QByteArray jpeg, QByteArray png)
    : m_jpeg(std::move(jpeg)), m_png(std::move(png))
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

QByteArray BWCopiedCaptures::pngOf(const QByteArray &jpeg)
{
    const QImage image = jpeg.isNull() ? QImage() : imageOf(jpeg, largestPng);
    if (image.isNull())
        return {};
    constexpr int quickly = 20; // of 100, which is the first of the library's nine steps: noise becomes no smaller
    QByteArray png;
    QBuffer buffer(&png);
    QImageWriter writer(&buffer, "png");
    writer.setCompression(quickly);
    return writer.write(image) ? png : QByteArray();
}

QStringList BWCopiedCaptures::formats() const
{
    QStringList formats = QMimeData::formats();
    if (!m_jpeg.isNull())
        formats += jpegType;
    if (!m_png.isNull())
        formats += pngType;
    return formats;
}

bool BWCopiedCaptures::hasFormat(const QString &mimeType) const
{
    return formats().contains(mimeType) || (!m_jpeg.isNull() && mimeType == qtImageType);
}

QVariant BWCopiedCaptures::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (!m_jpeg.isNull() && mimeType == jpegType)
        return m_jpeg;
    if (!m_png.isNull() && mimeType == pngType)
        return m_png;
    if (!m_jpeg.isNull() && mimeType == qtImageType)
        return imageOf(m_jpeg, std::numeric_limits<qint64>::max());
    return QMimeData::retrieveData(mimeType, type);
}
