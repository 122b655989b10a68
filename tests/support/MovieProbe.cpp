// SPDX-License-Identifier: GPL-3.0-or-later
#include "MovieProbe.h"

#include <optional>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

/// The standard output; nothing, and a line in the test's log, if the program failed.
std::optional<QByteArray> run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, QStringList{u"-v"_s, u"error"_s} + arguments);
    constexpr int patience = 60'000; // ms
    if (process.waitForFinished(patience) && process.exitCode() == 0)
        return process.readAllStandardOutput();
    qInfo() << program << arguments << process.errorString() << process.readAllStandardError();
    return {};
}

} // namespace

bool MovieProbe::ffmpeg(const QStringList &arguments)
{
    return run(u"ffmpeg"_s, QStringList{u"-y"_s} + arguments).has_value();
}

QJsonObject MovieProbe::probe(const QString &file)
{
    const QStringList arguments = u"-count_frames -show_streams -show_packets -show_format -of json"_s.split(u' ');
    const QJsonObject all =
        QJsonDocument::fromJson(run(u"ffprobe"_s, arguments + QStringList{file}).value_or(QByteArray())).object();
    QJsonObject stream = all[u"streams"_s].toArray().first().toObject();
    stream[u"packets"_s] = all[u"packets"_s];
    stream[u"format"_s] = all[u"format"_s];
    return stream;
}

int MovieProbe::framesIn(const QString &file)
{
    return probe(file)[u"nb_read_frames"_s].toString().toInt();
}

QList<QByteArray> MovieProbe::storedPictures(const QString &file)
{
    const QTemporaryDir folder;
    ffmpeg({u"-i"_s, file, u"-c"_s, u"copy"_s, u"-f"_s, u"image2"_s, folder.filePath(u"%05d.jpg"_s)});
    QList<QByteArray> pictures;
    for (const QString &name : QDir(folder.path()).entryList(QDir::Files, QDir::Name)) {
        QFile picture(folder.filePath(name));
        if (picture.open(QIODevice::ReadOnly))
            pictures << picture.readAll();
    }
    return pictures;
}
