// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>

/// Movies as ffmpeg's tools make and see them.
namespace MovieProbe {

/// Runs ffmpeg; whether it succeeded.
bool ffmpeg(const QStringList &arguments);
/// The first video stream, its packets listed and its frames counted.
QJsonObject probe(const QString &file);
/// The number of frames that can be read.
int framesIn(const QString &file);
/// The stored pictures, in order.
QList<QByteArray> storedPictures(const QString &file);

} // namespace MovieProbe
