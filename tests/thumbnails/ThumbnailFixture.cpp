// SPDX-License-Identifier: GPL-3.0-or-later
#include "ThumbnailFixture.h"

#include <cstdlib>
#include <fcntl.h>
#include <QBuffer>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

const QDateTime ThumbnailFixture::longAgo(QDate(2024, 6, 7), QTime(8, 9, 10));

ThumbnailFixture::ThumbnailFixture() : m_album(BWFilePath::native(m_dir.folder(u"album"_s)))
{
    ::chmod(QFile::encodeName(m_dir.path()).constData(), 0755);
    m_options.sharedFolder = QFile::encodeName(m_dir.path(u"home/cache/thumbnails"_s));
    m_options.threads = 2;
    restart();
}

QUrl ThumbnailFixture::url(const QByteArray &name) const
{
    return BWFilePath::url(path(name));
}

QUrl ThumbnailFixture::file(const QByteArray &name, const QByteArray &content, bool isNew) const
{
    TestFolder::write(url(name), content);
    if (!isNew)
        setModified(name, longAgo);
    return url(name);
}

void ThumbnailFixture::setModified(const QByteArray &name, const QDateTime &time) const
{
    const timespec spec{time.toSecsSinceEpoch(), 123456789};
    const timespec times[]{spec, spec};
    ::utimensat(AT_FDCWD, path(name).constData(), times, 0);
}

void ThumbnailFixture::restart()
{
    m_reported.clear();
    m_thumbnails.reset();
    m_thumbnails = std::make_unique<BWThumbnails>([this](const QList<QUrl> &files) { m_reported += files; }, m_options);
}

void ThumbnailFixture::make(const QList<QUrl> &files, int pixels)
{
    m_thumbnails->request(files, pixels);
    if (!QTest::qWaitFor([this] { return m_thumbnails->isIdle(); }, 60'000))
        qFatal("The thumbnails do not become ready");
}

QString ThumbnailFixture::make(const QUrl &file, int pixels)
{
    make(QList{file}, pixels);
    return shown(file);
}

QString ThumbnailFixture::shown(const QUrl &file) const
{
    const std::optional<BWThumbnail> thumbnail = m_thumbnails->thumbnail(file);
    if (!thumbnail)
        return u"missing"_s;
    if (thumbnail->kind == BWThumbnail::Kind::Impossible)
        return u"impossible"_s;
    return nameOf(thumbnail->image.pixel(thumbnail->image.rect().center()));
}

QByteArray ThumbnailFixture::jpeg(QColor colour, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QBuffer buffer;
    image.save(&buffer, "jpg", 90);
    return buffer.data();
}

QByteArray ThumbnailFixture::withOrientation(const QByteArray &jpeg, int orientation)
{
    const QByteArray exif = QByteArray::fromHex("457869660000" // Exif
                                                "49492a0008000000" // little-endian TIFF, directory at 8
                                                "0100" // one entry
                                                "1201"
                                                "0300"
                                                "01000000") // orientation, short, one
        + char(orientation) + QByteArray(7, '\0');
    return jpeg.left(2) + "\xff\xe1" + '\0' + char(exif.size() + 2) + exif + jpeg.mid(2);
}

QString ThumbnailFixture::nameOf(QRgb colour)
{
    for (const QString &name : {u"red"_s, u"lime"_s, u"blue"_s, u"white"_s, u"black"_s, u"yellow"_s}) {
        const QColor known(name);
        const int distance = std::abs(known.red() - qRed(colour)) + std::abs(known.green() - qGreen(colour))
            + std::abs(known.blue() - qBlue(colour));
        if (distance < 30)
            return name;
    }
    return QColor(colour).name();
}

bool ThumbnailFixture::run(const QString &program, const QStringList &arguments, QByteArray *output)
{
    QProcess process;
    process.start(program, arguments);
    const bool succeeded = process.waitForFinished(60'000) && process.exitCode() == 0;
    if (!succeeded)
        qInfo() << program << arguments << process.errorString() << process.readAllStandardError();
    if (output)
        *output = process.readAllStandardOutput();
    return succeeded;
}
