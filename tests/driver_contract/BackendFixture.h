#pragma once

#include "BWACUDriver/BWCameraBackend.h"

#include <memory>

/// One camera of a backend and the hand that holds it, as the contract suite needs them.
class BackendFixture {
public:
    virtual ~BackendFixture() = default;

    /// Shown in the names of the tests.
    virtual QString name() const = 0;

    /// Its type; a device's own description may differ from that in what it can do.
    virtual BWCameraDescriptionPtr description() const = 0;

    /// A new backend; the camera is attached to it or not.
    virtual std::unique_ptr<BWCameraBackend> makeBackend(bool attached) = 0;

    virtual void plugIn() = 0;
    virtual void unplug() = 0;
    virtual bool hasButton() const { return true; }
    virtual void pressButton() = 0;

    /// As if another program held the camera.
    virtual void setInUse(bool inUse) = 0;

    /// Whether the camera captures a frame only when one is pushed, so that frames can be counted. Otherwise it
    /// captures at its own rate.
    virtual bool isPushed() const { return true; }
    /// The streaming camera captures that many frames.
    virtual void pushFrames(int count) = 0;

    /// More frames than the camera has buffers for.
    virtual int moreThanAllBuffers() const = 0;
};
