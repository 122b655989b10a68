// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraBackend.h"
#include "BWACUDriver/BWCameraStatus.h"
#include "BWACUDriver/BWClock.h"
#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/BWResolution.h"

#include <chrono>
#include <memory>
#include <optional>
#include <QList>
#include <QString>

/// What one simulated camera is like.
struct BWSimulatedCameraOptions {
    enum class Type { DX20, Regular, High, Ultra, Wireless };
    enum class Pacing {
        RealTime, ///< frames come at the camera's frame rate
        Manual, ///< a frame comes when BWSimulatedCamera::pushFrames() is called
    };

    Type type = Type::High;
    QString path{}; ///< photo, folder of photos or movie shown in place of the drawn specimen; empty for the specimen
    Pacing pacing = Pacing::RealTime;
    double pendingSeconds = 0; ///< how long a plugged-in camera is being prepared before it is found
    bool pluggedIn = true; ///< attached before detection starts
    std::optional<BWPixelFormat> pixelFormat{}; ///< YUYV or MJPEG; by default whichever is faster at the size in use

    /// The type with that command-line name (dx20, regular, high, ultra, wireless); nothing for another text.
    static std::optional<Type> typeFromName(const QString &name);
    static QStringList typeNames();
};

/// The hand that holds a simulated camera: plugs it in, unplugs it, presses its button and makes it misbehave.
/// All operations may be called on any thread at any time; unless noted, they have no effect on a camera that is not
/// plugged in.
class BWSimulatedCamera {
public:
    virtual ~BWSimulatedCamera() = default;

    virtual const BWSimulatedCameraOptions &options() const = 0;
    /// Name for the person at the screen, e.g. "High Resolution Microscope 1".
    virtual QString title() const = 0;

    virtual bool isPluggedIn() const = 0;
    virtual void plugIn() = 0; ///< starts the pending phase, or the camera is found at once
    virtual void unplug() = 0; ///< at any moment, streaming included

    virtual void pressButton() = 0;

    /// Starts fail for that reason until it is reset to Kind::None. A bus without bandwidth (NoBandwidth) still carries the
    /// camera's smallest size. Kept over unplugging.
    virtual void setStartProblem(const BWStartProblem &problem) = 0;
    virtual BWStartProblem startProblem() const = 0;
    /// As if it were held by a program whose name cannot be seen, or by none.
    void setInUse(bool inUse) { setStartProblem({inUse ? BWStartProblem::Kind::InUse : BWStartProblem::Kind::None}); }

    virtual void stall() = 0; ///< delivers nothing until the stream is restarted
    virtual void tearNextFrames(int count) = 0; ///< MJPEG: bytes in the middle are damaged
    virtual void truncateNextFrames(int count) = 0; ///< MJPEG: the second half is missing
    virtual void loseNextFrames(int count) = 0; ///< the sequence has a gap

    /// Manual pacing: lets the camera capture that many more frames. Never waits.
    virtual void pushFrames(int count) = 0;
};

/// Simulated cameras as a backend like any other.
class BWSimulatedBackend : public BWCameraBackend {
public:
    /// `clock` times the pending phase. The handles stay valid after the backend is gone.
    static std::unique_ptr<BWSimulatedBackend> create(const QList<BWSimulatedCameraOptions> &cameras,
                                                      BWClock &clock = BWClock::system());

    virtual QList<std::shared_ptr<BWSimulatedCamera>> cameras() const = 0;
};
