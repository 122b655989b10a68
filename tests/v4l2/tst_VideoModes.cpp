// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeKernel.h"

#include "v4l2/device/BWVideoAbilities.h"
#include "v4l2/device/BWVideoFormat.h"
#include "v4l2/device/BWVideoModes.h"

#include <cerrno>
#include <QTest>

using namespace Qt::StringLiterals;
using State = FakeKernel::State;

namespace {

BWVideoMode mode(uint32_t fourcc, BWResolution size, double rate)
{
    return {fourcc, BWVideoFormat::pixelFormat(fourcc), size, rate, {}};
}

} // namespace

class TestVideoModes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void choice()
    {
        const BWResolution size(640, 480);
        const std::pair<std::vector<BWVideoMode>, QString> rows[] = {
            {{mode(V4L2_PIX_FMT_YUYV, size, 5), mode(V4L2_PIX_FMT_MJPEG, size, 30)},
             u"MJPEG 640x480 at 30/s; YUYV gives 5/s"_s},
            {{mode(V4L2_PIX_FMT_MJPEG, size, 30), mode(V4L2_PIX_FMT_UYVY, size, 29.97)}, u"UYVY 640x480 at 30/s"_s},
            {{mode(V4L2_PIX_FMT_JPEG, size, 0), mode(V4L2_PIX_FMT_BGR24, size, 0), mode(V4L2_PIX_FMT_NV12, size, 0),
              mode(V4L2_PIX_FMT_YUYV, size, 0)},
             u"YUYV 640x480 at an unknown rate"_s},
            {{mode(V4L2_PIX_FMT_YUYV, size, 0), mode(V4L2_PIX_FMT_MJPEG, size, 1)},
             u"MJPEG 640x480 at 1/s; YUYV gives an unknown rate"_s},
            {{mode(V4L2_PIX_FMT_GREY, size, 60), mode(V4L2_PIX_FMT_YUYV, size, 2)},
             u"YUYV 640x480 at 2/s; GREY gives 60/s"_s},
            {{mode(V4L2_PIX_FMT_GREY, size, 60), mode(V4L2_PIX_FMT_SBGGR8, size, 90)}, u"GREY 640x480 at 60/s"_s},
            {{mode(V4L2_PIX_FMT_YUYV, {2592, 1944}, 2), mode(V4L2_PIX_FMT_YUYV, {352, 288}, 7.5)},
             u"YUYV 352x288 at 7.5/s"_s},
            {{mode(V4L2_PIX_FMT_YUYV, {480, 640}, 30), mode(V4L2_PIX_FMT_YUYV, size, 15)}, u"YUYV 640x480 at 15/s"_s},
            {{mode(V4L2_PIX_FMT_SBGGR8, size, 30)}, {}},
        };
        for (const auto &[modes, reason] : rows) {
            BWVideoAbilities abilities;
            abilities.modes = modes;
            const BWVideoModeChoice choice(abilities, size);
            QCOMPARE(choice.candidates().empty() ? QString() : choice.reason(0), reason);
        }
    }

    void planes()
    {
        // pixel format, stride, the least that a frame has; its planes as offset:stride:size
        const std::tuple<uint32_t, uint32_t, std::size_t, QString> rows[] = {
            {V4L2_PIX_FMT_YUYV, 16, 28, u"0:16:28"_s}, // padded; the last row need not be
            {V4L2_PIX_FMT_NV12, 8, 22, u"0:8:16 16:8:6"_s}, {V4L2_PIX_FMT_YUV420, 8, 23, u"0:8:16 16:4:4 20:4:3"_s},
            {V4L2_PIX_FMT_RGB24, 0, 36, u"0:18:36"_s}, // an unknown stride
            {V4L2_PIX_FMT_MJPEG, 0, 1, u"0:0:1"_s},
        };
        for (const auto &[fourcc, stride, least, expected] : rows) {
            v4l2_pix_format description{};
            description.width = 6;
            description.height = 2;
            description.pixelformat = fourcc;
            description.bytesperline = stride;
            const BWVideoFormat format(description);
            QVERIFY(format.fits(least));
            QCOMPARE(format.fits(least - 1), fourcc == V4L2_PIX_FMT_MJPEG);
            const std::array<uint8_t, 99> memory{};
            QStringList planes;
            for (const BWPlane &plane : format.frame(memory.data(), least).planes) {
                if (plane.data)
                    planes += u"%1:%2:%3"_s.arg(plane.data - memory.data()).arg(plane.stride).arg(plane.size);
            }
            QCOMPARE(planes.join(u' '), expected);
        }
    }

    void colours()
    {
        // pixel format, colour space, encoding, quantization; what that makes
        const std::tuple<uint32_t, uint32_t, uint32_t, uint32_t, BWColorMatrix, BWColorRange> rows[] = {
            {V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_DEFAULT, 0, 0, BWColorMatrix::BT601, BWColorRange::Limited},
            {V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_SRGB, 0, 0, BWColorMatrix::BT601, BWColorRange::Limited},
            {V4L2_PIX_FMT_YUYV, V4L2_COLORSPACE_JPEG, 0, 0, BWColorMatrix::BT601, BWColorRange::Full},
            {V4L2_PIX_FMT_NV12, V4L2_COLORSPACE_REC709, 0, 0, BWColorMatrix::BT709, BWColorRange::Limited},
            {V4L2_PIX_FMT_NV12, V4L2_COLORSPACE_REC709, V4L2_YCBCR_ENC_601, V4L2_QUANTIZATION_FULL_RANGE,
             BWColorMatrix::BT601, BWColorRange::Full},
            {V4L2_PIX_FMT_RGB24, V4L2_COLORSPACE_SRGB, 0, 0, BWColorMatrix::BT601, BWColorRange::Full},
            {V4L2_PIX_FMT_MJPEG, V4L2_COLORSPACE_REC709, V4L2_YCBCR_ENC_709, V4L2_QUANTIZATION_LIM_RANGE,
             BWColorMatrix::BT601, BWColorRange::Full},
        };
        for (const auto &[fourcc, space, encoding, quantization, matrix, range] : rows) {
            v4l2_pix_format description{};
            description.pixelformat = fourcc;
            description.colorspace = space;
            description.ycbcr_enc = encoding;
            description.quantization = quantization;
            const BWFrameInfo frame = BWVideoFormat(description).frame(nullptr, 0);
            QVERIFY(frame.matrix == matrix && frame.range == range);
        }
    }

    void exposureModes()
    {
        // the menu, and its automatic mode; -1: it cannot be switched
        const std::pair<std::vector<BWVideoMenuEntry>, int> rows[] = {
            {{{0, {}}, {1, {}}, {2, {}}, {3, {}}}, 3},
            {{{0, {}}, {1, {}}}, 0},
            {{{1, {}}, {2, {}}}, 2},
            {{{1, {}}}, -1},
            {{{0, {}}, {3, {}}}, -1},
        };
        for (const auto &[entries, automatic] : rows) {
            const BWExposureMenu menu(entries);
            QCOMPARE(menu.isSwitchable(), automatic >= 0);
            if (automatic >= 0)
                QVERIFY(menu.toDevice(0) == 1 && menu.toDevice(1) == automatic && menu.toProgram(automatic) == 1);
        }
    }

    void unlistedSizesAreTried()
    {
        FakeKernel kernel;
        kernel.change([](State &state) {
            state.answers[VIDIOC_ENUM_FMT] = [](void *argument) {
                auto &format = *static_cast<v4l2_fmtdesc *>(argument);
                format.pixelformat = V4L2_PIX_FMT_YUYV;
                return format.index == 0 ? 0 : -EINVAL;
            };
            state.answers[VIDIOC_TRY_FMT] = [](void *argument) {
                auto &format = static_cast<v4l2_format *>(argument)->fmt.pix;
                format.width = std::min(format.width, 720u);
                format.height = std::min(format.height, 576u);
                return 0;
            };
        });
        int error = 0;
        const auto abilities = BWVideoAbilities::read(kernel, "/dev/video", error);
        QVERIFY(abilities && abilities->captures);
        QCOMPARE(abilities->resolutions(), (std::vector<BWResolution>{{640, 480}, {720, 480}, {720, 576}}));
        kernel.change([](State &state) { state.faults[FakeKernel::opening] = {EACCES}; });
        QVERIFY(!BWVideoAbilities::read(kernel, "/dev/video", error) && error == EACCES);
    }
};

QTEST_GUILESS_MAIN(TestVideoModes)
#include "tst_VideoModes.moc"
