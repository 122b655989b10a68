// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QUrl>

/// What another program prints, which must be there and succeed.
inline QByteArray output(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() > 1)
        qFatal("%s: %s", qPrintable(program), process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

/// All that exiftool knows of a picture, by group and name.
inline QJsonObject tagsOf(const QUrl &file)
{
    const QStringList options{QStringLiteral("-m"),          QStringLiteral("-a"), QStringLiteral("-n"),
                              QStringLiteral("-G1"),         QStringLiteral("-j"), QStringLiteral("-struct"),
                              QStringLiteral("--System:all")};
    return QJsonDocument::fromJson(output(QStringLiteral("exiftool"), options + QStringList(file.toLocalFile())))[0]
        .toObject();
}
