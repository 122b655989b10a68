#pragma once

#include <QString>

/// Why a camera could not be started.
struct BWStartProblem {
    enum class Kind {
        None, ///< it was started
        InUse, ///< another program holds the camera
        NoBandwidth, ///< the bus cannot carry the stream beside what it carries already
        NoPermission, ///< the user may not open the device node
        NoDriver, ///< the kernel has no driver for it
        Gone, ///< it is not attached any more
        Failed, ///< anything else; the device has logged why
    };

    Kind kind = Kind::None;
    QString holder{}; ///< InUse: name of the program that holds it; null if that cannot be seen

    bool isNone() const { return kind == Kind::None; }

    friend bool operator==(const BWStartProblem &, const BWStartProblem &) = default;
};
