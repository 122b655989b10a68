#pragma once

#include "simulated/BWPictureSource.h"

#include <memory>
#include <QString>

/// What a simulated camera looks at: the photo, the folder of photos or the movie at `path`, or the drawn specimen if
/// `path` is empty. Null, with the reason in `error` if that is given, where the path cannot be used.
std::unique_ptr<BWPictureSource> makePictureSource(const QString &path, QString *error = nullptr);
