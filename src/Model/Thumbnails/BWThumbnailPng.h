#pragma once

#include <QByteArray>
#include <QImage>
#include <QMap>

/// PNG images as the desktop's thumbnail cache wants them: with texts that say what they stand for.
namespace BWThumbnailPng {

using Texts = QMap<QByteArray, QByteArray>; ///< Latin-1, by keyword

/// Without transparency; quick rather than small. The texts stand uncompressed in front of the picture, where every
/// reader finds them. Empty for a null image.
QByteArray encode(const QImage &image, const Texts &texts);

/// The texts, without decoding the picture; compressed ones are left out. Empty for what is no PNG image.
Texts texts(const QByteArray &png);

/// A null image if it is damaged or larger than any thumbnail is.
QImage decode(const QByteArray &png);

} // namespace BWThumbnailPng
