#pragma once

#include <QString>

/// Copies the video stream of the movie at `from`, packet by packet, into a plain QuickTime movie at `to`, which gets
/// the index that players need to know its length and to jump. False, with the reason in `error`, where it failed;
/// there may be half a file at `to` then.
bool remuxToPlainMov(const QString &from, const QString &to, QString &error);
