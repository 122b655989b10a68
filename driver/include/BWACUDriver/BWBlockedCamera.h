#pragma once

#include "BWACUDriver/BWStartProblem.h"

#include <QString>

/// An attached device that might be a camera of the program's, had it not been out of reach since it was attached.
struct BWBlockedCamera {
    QString name; ///< of its entry in the table, or as the device calls itself, or at least its USB numbers
    BWStartProblem problem; ///< never Kind::None

    friend bool operator==(const BWBlockedCamera &, const BWBlockedCamera &) = default;
};
