// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Thumbnails/BWThumbnails.h"
#include "TestFolder.h"

#include <QColor>
#include <QDateTime>

/// A throw-away album and cache, and one reader of thumbnails after the other.
class ThumbnailFixture {
public:
    explicit ThumbnailFixture();

    QByteArray path(const QByteArray &name) const { return m_album + '/' + name; }
    QUrl url(const QByteArray &name) const;
    const QByteArray &cache() const { return m_options.sharedFolder; }

    /// Makes a file that has not changed for long, or a new one.
    QUrl file(const QByteArray &name, const QByteArray &content, bool isNew = false) const;
    void setModified(const QByteArray &name, const QDateTime &time) const;
    static const QDateTime longAgo;

    BWThumbnails::Options &options() { return m_options; }
    /// Another start of the program.
    void restart();
    BWThumbnails &thumbnails() { return *m_thumbnails; }
    /// Requests these files, and waits until everything is made, reported and stored.
    void make(const QList<QUrl> &files, int pixels = 256);
    /// Makes one and returns the colour of its middle ("red"), or "impossible", or "missing".
    QString make(const QUrl &file, int pixels = 256);
    QString shown(const QUrl &file) const;

    /// What has been reported since the last start.
    const QList<QUrl> &reported() const { return m_reported; }

    static QByteArray jpeg(QColor colour, QSize size = {400, 300});
    /// The image with an Exif segment that says how to turn it.
    static QByteArray withOrientation(const QByteArray &jpeg, int orientation);
    /// The name of the colour that this one is about.
    static QString nameOf(QRgb colour);
    static bool run(const QString &program, const QStringList &arguments, QByteArray *output = nullptr);

private:
    TestFolder m_dir;
    QByteArray m_album;
    BWThumbnails::Options m_options;
    QList<QUrl> m_reported;
    std::unique_ptr<BWThumbnails> m_thumbnails;
};
