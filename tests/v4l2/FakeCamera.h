// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FakeKernel.h"

#include "v4l2/device/BWV4L2Device.h"

/// A device on the fake kernel, which has 640x480 as MJPEG at 30 and as YUYV at 15 frames per second.
struct FakeCamera {
    explicit FakeCamera(std::vector<BWVideoControl> controls = {})
    {
        BWVideoAbilities abilities;
        abilities.bus = QStringLiteral("usb-1");
        abilities.modes = {
            {V4L2_PIX_FMT_MJPEG, BWPixelFormat::MJPEG, {640, 480}, 30, {1, 30}},
            {V4L2_PIX_FMT_YUYV, BWPixelFormat::YUYV, {640, 480}, 15, {1, 15}},
        };
        abilities.norms = {V4L2_STD_NTSC, V4L2_STD_PAL, std::nullopt};
        abilities.controls = std::move(controls);
        BWVideoNode node;
        node.path = "/dev/video";
        device = std::make_unique<BWV4L2Device>(
            node, abilities, false, [] { return QByteArray(); }, kernel);
        device->setEvents([] {}, [this](int identifier, double value) { moved[identifier] = value; });
    }

    /// Waits for one frame that is there, or for nothing at all.
    BWCaptureDevice::WaitResult take(std::chrono::milliseconds timeout = std::chrono::milliseconds(0))
    {
        frame = {};
        return device->waitFrame(timeout, frame);
    }

    FakeKernel kernel;
    std::map<int, double> moved;
    std::unique_ptr<BWV4L2Device> device;
    BWFrame frame;
};
