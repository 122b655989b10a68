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
        const struct {
            std::vector<BWVideoMode> modes;
            QString reason;
        } rows[] = {
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
        for (const auto &row : rows) {
            BWVideoAbilities abilities;
            abilities.modes = row.modes;
            const BWVideoModeChoice choice(abilities, size);
            QCOMPARE(choice.candidates().empty() ? QString() : choice.reason(0), row.reason);
        }
    }

    void planes()
    {
        const struct {
            uint32_t fourcc, stride;
            QList<int> offsets, strides;
            int least;
        } rows[] = {
            {V4L2_PIX_FMT_YUYV, 16, {0}, {16}, 16 + 12}, // padded; the last row need not be
            {V4L2_PIX_FMT_NV12, 8, {0, 16}, {8, 8}, 16 + 6},
            {V4L2_PIX_FMT_YUV420, 8, {0, 16, 20}, {8, 4, 4}, 20 + 3},
            {V4L2_PIX_FMT_RGB24, 0, {0}, {18}, 36}, // an unknown stride
            {V4L2_PIX_FMT_MJPEG, 0, {0}, {0}, 1},
        };
        for (const auto &row : rows) {
            v4l2_pix_format description{};
            description.width = 6;
            description.height = 2;
            description.pixelformat = row.fourcc;
            description.bytesperline = row.stride;
            const BWVideoFormat format(description);
            const std::array<uint8_t, 99> memory{};
            const BWFrameInfo frame = format.frame(memory.data(), std::size_t(row.least));
            QVERIFY(format.fits(std::size_t(row.least)));
            QCOMPARE(format.fits(std::size_t(row.least - 1)), row.fourcc == V4L2_PIX_FMT_MJPEG);
            for (qsizetype i = 0; i < row.offsets.size(); ++i) {
                const BWPlane &plane = frame.planes[std::size_t(i)];
                const int end = i + 1 < row.offsets.size() ? row.offsets[i + 1] : row.least;
                QCOMPARE(plane.data, memory.data() + row.offsets[i]);
                QCOMPARE(plane.stride, row.strides[i]);
                QCOMPARE(plane.size, std::size_t(end - row.offsets[i]));
            }
        }
    }

    void colours()
    {
        const struct {
            uint32_t fourcc, space, encoding, quantization;
            BWColorMatrix matrix;
            BWColorRange range;
        } rows[] = {
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
        for (const auto &row : rows) {
            v4l2_pix_format description{};
            description.pixelformat = row.fourcc;
            description.colorspace = row.space;
            description.ycbcr_enc = row.encoding;
            description.quantization = row.quantization;
            const BWFrameInfo frame = BWVideoFormat(description).frame(nullptr, 0);
            QCOMPARE(frame.matrix, row.matrix);
            QCOMPARE(frame.range, row.range);
        }
    }

    void exposureModes()
    {
        const struct {
            std::vector<BWVideoMenuEntry> menu;
            int automatic; // -1: it cannot be switched
        } rows[] = {
            {{{0, {}}, {1, {}}, {2, {}}, {3, {}}}, 3},
            {{{0, {}}, {1, {}}}, 0},
            {{{1, {}}, {2, {}}}, 2},
            {{{1, {}}}, -1},
            {{{0, {}}, {3, {}}}, -1},
        };
        for (const auto &row : rows) {
            const BWExposureMenu menu(row.menu);
            QCOMPARE(menu.isSwitchable(), row.automatic >= 0);
            if (row.automatic >= 0)
                QVERIFY(menu.toDevice(0) == 1 && menu.toDevice(1) == row.automatic
                        && menu.toProgram(row.automatic) == 1);
        }
    }

    void sizesThatAreNotEnumeratedAreTried()
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
