// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QMimeData>
#include <QUrl>

/// Captures on the clipboard: files of an album, for file managers and as text, and a single picture, as the very JPEG that
/// it is and as PNG. Both are there from the beginning: to make one takes too long for the GUI thread. GUI thread.
class BWCopiedCaptures : public QMimeData {
    Q_OBJECT

public:
    /// A larger file goes to other programs as a file only.
    static constexpr qint64 largestPicture = 100 << 20;
    /// In pixels. There is no PNG of a larger one, which would take seconds and too much memory.
    static constexpr qint64 largestPng = 32'000'000;

    /// `jpeg` is of the only file, or of a picture without one; null if there is none, as `png`.
    explicit BWCopiedCaptures(const QList<QUrl> &files, QByteArray jpeg = {}, QByteArray png = {});

    /// Of that picture; null if there is none, or it is too large or damaged. Takes a while; any thread.
    static QByteArray pngOf(const QByteArray &jpeg);
    /// The bytes of a picture of an album; null for any other file. Waits for the disk; any thread.
    static QByteArray pictureOf(const QUrl &file);

    QStringList formats() const override;
    bool hasFormat(const QString &mimeType) const override;

protected:
    QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    const QByteArray m_jpeg;
    const QByteArray m_png;
};
