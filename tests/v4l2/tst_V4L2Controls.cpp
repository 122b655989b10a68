// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/BWCameraControls.h"
#include "FakeCamera.h"

#include "BWACUDriver/BWCameraSetting.h"

#include <algorithm>
#include <cerrno>
#include <QTest>

using namespace Qt::StringLiterals;
using State = FakeKernel::State;

namespace {

BWVideoControl control(int identifier, uint32_t id, double min, double max, double value, double step = 1)
{
    return {{identifier, min, max, step, value, value}, id, {}};
}

/// A camera with both automatic modes and two that the program does not know, all of them on or off.
struct Camera : FakeCamera {
    explicit Camera(bool automatic)
        : FakeCamera({
            control(BWSettingWhiteBalance, V4L2_CID_WHITE_BALANCE_TEMPERATURE, 2800, 6500, 4600, 10),
            control(BWSettingAutoWhite, V4L2_CID_AUTO_WHITE_BALANCE, 0, 1, automatic),
            control(BWSettingExposureAbsolute, V4L2_CID_EXPOSURE_ABSOLUTE, 1, 5000, 157),
            {{BWSettingAutoExposure, 0, 1, 1, 1, double(automatic)}, V4L2_CID_EXPOSURE_AUTO, {{1, {}}, {3, {}}}},
            control(BWSettingGain, V4L2_CID_GAIN, 0, 100, 0),
            control(BWSettingBrightness, V4L2_CID_BRIGHTNESS, -64, 64, 0),
        })
    {
        kernel.change([automatic](State &state) {
            state.controls = {
                {V4L2_CID_AUTO_WHITE_BALANCE, {0, 1, automatic}},
                {V4L2_CID_WHITE_BALANCE_TEMPERATURE, {2800, 6500, 4600, {}, V4L2_CID_AUTO_WHITE_BALANCE, 0}},
                {V4L2_CID_EXPOSURE_AUTO, {0, 3, automatic ? 3 : 1, {1, 3}}},
                {V4L2_CID_EXPOSURE_ABSOLUTE, {1, 5000, 157, {}, V4L2_CID_EXPOSURE_AUTO, 1}},
                {V4L2_CID_AUTOGAIN, {0, 1, automatic}},
                {V4L2_CID_GAIN, {0, 100, 0, {}, V4L2_CID_AUTOGAIN, 0}},
                {V4L2_CID_BRIGHTNESS, {-64, 50, 0}},
            };
        });
    }

    int value(uint32_t id)
    {
        return kernel.change([id](State &state) { return state.controls.at(id).value; });
    }
    void set(uint32_t id, int value)
    {
        kernel.change([&](State &state) { state.controls.at(id).value = value; });
    }
};

} // namespace

class TestV4L2Controls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyOrderYieldsTheSameState()
    {
        // As the camera may come up; the last one is not streaming.
        for (const auto &[automatic, streaming] : {std::pair(true, true), {false, true}, {true, false}})
            tryEveryOrder(automatic, streaming);
    }

    void acceptedValueIsReturned()
    {
        Camera camera(false);
        camera.set(V4L2_CID_BRIGHTNESS, 11);
        QVERIFY(camera.device->startStreaming().isNone());
        QCOMPARE(std::exchange(camera.moved, {}), (std::map<int, double>{{BWSettingBrightness, 11}}));
        QCOMPARE(camera.device->setControl(BWSettingWhiteBalance, 3754.9), 3750.0);
        QCOMPARE(camera.device->setControl(BWSettingWhiteBalance, 1e9), 6500.0);
        QCOMPARE(camera.device->setControl(BWSettingBrightness, 64), 50.0);
        camera.kernel.fail(VIDIOC_S_EXT_CTRLS, {EBUSY});
        QCOMPARE(camera.device->setControl(BWSettingBrightness, 3), 50.0);

        // Another program has switched the mode on.
        camera.set(V4L2_CID_AUTO_WHITE_BALANCE, 1);
        QCOMPARE(camera.device->setControl(BWSettingWhiteBalance, 4000), 6500.0);
        QCOMPARE(camera.moved, (std::map<int, double>{{BWSettingAutoWhite, 1}}));
    }

    void automaticValuesAreReadUntilThatFails()
    {
        Camera camera(true);
        std::map<int, double> moved;
        BWVideoControls controls({control(BWSettingWhiteBalance, V4L2_CID_WHITE_BALANCE_TEMPERATURE, 2800, 6500, 4600),
                                  control(BWSettingAutoWhite, V4L2_CID_AUTO_WHITE_BALANCE, 0, 1, 1),
                                  control(BWSettingBrightness, V4L2_CID_BRIGHTNESS, -64, 64, 0)},
                                 u"camera"_s);
        controls.setMoved([&](int identifier, double value) { moved[identifier] = value; });
        const BWKernelFile node(camera.kernel, "/dev/video");
        camera.set(V4L2_CID_WHITE_BALANCE_TEMPERATURE, 5000);
        camera.set(V4L2_CID_BRIGHTNESS, 9);
        controls.readMoved(node);
        QCOMPARE(moved, (std::map<int, double>{{BWSettingWhiteBalance, 5000}}));
        camera.kernel.fail(VIDIOC_G_EXT_CTRLS, {EIO, ERANGE});
        controls.readMoved(node);
        controls.readMoved(node);
        camera.kernel.change([](State &state) { QCOMPARE(state.faults[VIDIOC_G_EXT_CTRLS].size(), 1u); });
    }

private:
    static void tryEveryOrder(bool automatic, bool streaming)
    {
        std::vector<std::pair<int, double>> product{{BWSettingWhiteBalance, 3750},
                                                    {BWSettingAutoWhite, 0},
                                                    {BWSettingGain, 7},
                                                    {BWSettingAutoExposure, 1},
                                                    {BWSettingExposureAbsolute, 625}};
        std::sort(product.begin(), product.end());
        do {
            Camera camera(automatic);
            if (streaming)
                QVERIFY(camera.device->startStreaming().isNone());
            BWCameraControls controls(camera.device->controls());
            camera.device->setEvents({}, [&](int identifier, double value) { controls.noteValue(identifier, value); });
            for (const auto &[identifier, value] : product)
                controls.apply(*camera.device, identifier, value);
            if (streaming)
                camera.take();
            for (const auto &[identifier, value] : product) {
                if (identifier != BWSettingExposureAbsolute) // the mode changes it now
                    QCOMPARE(controls.setting(identifier)->value(), value);
            }
            QCOMPARE(camera.value(V4L2_CID_AUTO_WHITE_BALANCE), 0);
            QCOMPARE(camera.value(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 3750);
            QCOMPARE(camera.value(V4L2_CID_GAIN), 7);
            QCOMPARE(camera.value(V4L2_CID_EXPOSURE_AUTO), 3);
            camera.set(V4L2_CID_EXPOSURE_ABSOLUTE, 99);
            controls.apply(*camera.device, BWSettingAutoExposure, 0);
            QCOMPARE(camera.value(V4L2_CID_EXPOSURE_AUTO), 1);
            if (streaming)
                camera.take();
            QCOMPARE(camera.value(V4L2_CID_EXPOSURE_ABSOLUTE), 625);
            QCOMPARE(controls.setting(BWSettingExposureAbsolute)->value(), 625.0);
        } while (std::next_permutation(product.begin(), product.end()));
    }
};

QTEST_GUILESS_MAIN(TestV4L2Controls)
#include "tst_V4L2Controls.moc"
