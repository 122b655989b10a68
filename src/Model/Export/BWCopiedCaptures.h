// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QMimeData>
#include <QUrl>

/// Captures on the clipboard: files of an album, for file managers and as text, and a single picture, as the very JPEG that
/// it is. Another form of it is made when a program asks for that, and kept for the next one. GUI thread.
class BWCopiedCaptures : public QMimeData {
    Q_OBJECT

public:
    /// A larger file goes to other programs as a file only.
    static constexpr qint64 largestPicture = 100 << 20;

    /// `jpeg` is of the only file, or of a picture without one; null if there is none.
    explicit BWCopiedCaptures(const QList<QUrl> &files, QByteArray jpeg = {});

    /// The bytes of a picture of an album; null for any other file. Waits for the disk; any thread.
    static QByteArray pictureOf(const QUrl &file);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override;

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    const QImage &image() const;

    const QByteArray m_jpeg;
    mutable QImage m_image;
    mutable QByteArray m_png;
};
