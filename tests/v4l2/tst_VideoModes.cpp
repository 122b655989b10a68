#include "FakeKernel.h"

#include "v4l2/BWExposureMenu.h"
#include "v4l2/BWVideoFormat.h"
#include "v4l2/BWVideoModeChoice.h"

#include <cerrno>
#include <QTest>

using namespace Qt::StringLiterals;
using State = FakeKernel::State;

Q_DECLARE_METATYPE(v4l2_pix_format)

namespace {

BWVideoMode mode(uint32_t fourcc, BWResolution size, double rate)
{
    return {fourcc, BWVideoFormat::pixelFormat(fourcc), size, rate, {}};
}

} // namespace

class TestVideoModes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void choice_data()
    {
        QTest::addColumn<std::vector<BWVideoMode>>("modes");
        QTest::addColumn<QString>("reason");
        const BWResolution size(640, 480);
        const BWResolution large(2592, 1944);
        const auto row = [](const char *name, const std::vector<BWVideoMode> &modes, const QString &reason) {
            QTest::newRow(name) << modes << reason;
        };
        row("raw is slow", {mode(V4L2_PIX_FMT_YUYV, size, 5), mode(V4L2_PIX_FMT_MJPEG, size, 30)},
            u"MJPEG 640x480 at 30/s; YUYV gives 5/s"_s);
        row("nearly the same rate", {mode(V4L2_PIX_FMT_MJPEG, size, 30), mode(V4L2_PIX_FMT_UYVY, size, 30000 / 1001.)},
            u"UYVY 640x480 at 30/s"_s);
        row("order of equals",
            {mode(V4L2_PIX_FMT_JPEG, size, 0), mode(V4L2_PIX_FMT_BGR24, size, 0), mode(V4L2_PIX_FMT_RGB24, size, 0),
             mode(V4L2_PIX_FMT_YUV420, size, 0), mode(V4L2_PIX_FMT_NV12, size, 0), mode(V4L2_PIX_FMT_YUYV, size, 0)},
            u"YUYV 640x480 at an unknown rate"_s);
        row("unknown is slowest", {mode(V4L2_PIX_FMT_YUYV, size, 0), mode(V4L2_PIX_FMT_MJPEG, size, 1)},
            u"MJPEG 640x480 at 1/s; YUYV gives an unknown rate"_s);
        row("colour before grey", {mode(V4L2_PIX_FMT_GREY, size, 60), mode(V4L2_PIX_FMT_YUYV, size, 2)},
            u"YUYV 640x480 at 2/s; GREY gives 60/s"_s);
        row("grey alone", {mode(V4L2_PIX_FMT_GREY, size, 60), mode(V4L2_PIX_FMT_SBGGR8, size, 90)},
            u"GREY 640x480 at 60/s"_s);
        row("nearest size", {mode(V4L2_PIX_FMT_YUYV, large, 2), mode(V4L2_PIX_FMT_YUYV, {352, 288}, 30)},
            u"YUYV 352x288 at 30/s"_s);
        row("the same area turned", {mode(V4L2_PIX_FMT_YUYV, {480, 640}, 30), mode(V4L2_PIX_FMT_YUYV, size, 30)},
            u"YUYV 640x480 at 30/s"_s);
        row("nothing to show", {mode(V4L2_PIX_FMT_SBGGR8, size, 30)}, {});
    }

    void choice()
    {
        QFETCH(std::vector<BWVideoMode>, modes);
        QFETCH(QString, reason);
        BWVideoAbilities abilities;
        abilities.modes = modes;
        const BWVideoModeChoice choice(abilities, {640, 480});
        QCOMPARE(choice.candidates().empty() ? QString() : choice.reason(0), reason);
    }

    void planes_data()
    {
        QTest::addColumn<uint32_t>("fourcc");
        QTest::addColumn<uint32_t>("stride");
        QTest::addColumn<QList<int>>("offsets");
        QTest::addColumn<QList<int>>("strides");
        QTest::addColumn<int>("least");
        QTest::newRow("YUYV, padded") << V4L2_PIX_FMT_YUYV << 16u << QList{0} << QList{16} << 16 + 12;
        QTest::newRow("NV12") << V4L2_PIX_FMT_NV12 << 8u << QList{0, 16} << QList{8, 8} << 16 + 6;
        QTest::newRow("YU12") << V4L2_PIX_FMT_YUV420 << 8u << QList{0, 16, 20} << QList{8, 4, 4} << 20 + 3;
        QTest::newRow("RGB24, stride not told") << V4L2_PIX_FMT_RGB24 << 0u << QList{0} << QList{18} << 36;
        QTest::newRow("MJPEG") << V4L2_PIX_FMT_MJPEG << 0u << QList{0} << QList{0} << 1;
    }

    void planes()
    {
        QFETCH(uint32_t, fourcc);
        QFETCH(uint32_t, stride);
        QFETCH(QList<int>, offsets);
        QFETCH(QList<int>, strides);
        QFETCH(int, least);
        v4l2_pix_format description{};
        description.width = 6;
        description.height = 2;
        description.pixelformat = fourcc;
        description.bytesperline = stride;
        const BWVideoFormat format(description);
        const std::array<uint8_t, 99> memory{};
        const BWFrameInfo frame = format.frame(memory.data(), std::size_t(least));
        QVERIFY(format.fits(std::size_t(least)));
        QCOMPARE(format.fits(std::size_t(least - 1)), fourcc == V4L2_PIX_FMT_MJPEG);
        for (qsizetype i = 0; i < 3; ++i) {
            const BWPlane &plane = frame.planes[std::size_t(i)];
            QCOMPARE(plane.data, i < offsets.size() ? memory.data() + offsets[i] : nullptr);
            QCOMPARE(plane.stride, i < strides.size() ? strides[i] : 0);
            if (plane.data)
                QCOMPARE(plane.size, std::size_t((i + 1 < offsets.size() ? offsets[i + 1] : least) - offsets[i]));
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
            state.answers[VIDIOC_ENUMSTD] = [](void *argument) {
                auto &standard = *static_cast<v4l2_standard *>(argument);
                constexpr std::array<v4l2_std_id, 3> standards{V4L2_STD_NTSC, V4L2_STD_PAL, V4L2_STD_PAL_BG};
                if (standard.index >= standards.size())
                    return -EINVAL;
                standard.id = standards[standard.index];
                return 0;
            };
            state.answers[VIDIOC_G_STD] = [](void *argument) {
                *static_cast<v4l2_std_id *>(argument) = V4L2_STD_PAL_BG;
                return 0;
            };
        });
        int error = 0;
        const auto abilities = BWVideoAbilities::read(kernel, "/dev/video", error);
        QVERIFY(abilities && abilities->captures);
        QCOMPARE(abilities->resolutions(), (std::vector<BWResolution>{{640, 480}, {720, 480}, {720, 576}}));
        QVERIFY(abilities->norms[0] == V4L2_STD_NTSC && abilities->norms[1] == V4L2_STD_PAL && !abilities->norms[2]);
        const BWControlInfo &norm = abilities->controls.at(0).info;
        QVERIFY(norm.min == 0 && norm.max == 1 && norm.value == 1);
        kernel.change([](State &state) { state.faults[FakeKernel::opening] = {EACCES}; });
        QVERIFY(!BWVideoAbilities::read(kernel, "/dev/video", error) && error == EACCES);
    }
};

QTEST_GUILESS_MAIN(TestVideoModes)
#include "tst_VideoModes.moc"
