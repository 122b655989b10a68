#include "PictureProbe.h"
#include "simulated/picture/BWMakePictureSource.h"

#include <QTest>

namespace {

constexpr BWResolution size(320, 240);

using Measure = double (PictureProbe::*)() const;
using Control = double BWPictureControls::*;

} // namespace

class TestSpecimen : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void controlsAct_data();
    void controlsAct();
    void coloursFadeAndBurnOut();
    void neutralControlsBringThePictureBack();
    void noiseIsNewInEveryPicture();
    void driftsSmoothlyAlongAClosedPath();
    void vignetteStandsStill();
    void jpegShowsTheSamePicture();
    void sameForEverybody();
    void fillsEverySize_data();
    void fillsEverySize();

private:
    PictureProbe draw(const BWPictureControls &controls, uint64_t index = 0)
    {
        m_source->setControls(controls);
        return PictureProbe(*m_source, size, index);
    }

    std::unique_ptr<BWPictureSource> m_source;
};

void TestSpecimen::initTestCase()
{
    m_source = makePictureSource(QString());
    QVERIFY(m_source);
    m_source->setResolution(size);
}

void TestSpecimen::controlsAct_data()
{
    QTest::addColumn<Control>("control");
    QTest::addColumn<Measure>("measure");
    QTest::addColumn<double>("atLeast"); // change from -0.5 to 0 and from 0 to 0.5, relative to the neutral value

    using C = BWPictureControls;
    using P = PictureProbe;
    QTest::newRow("hue turns the colours") << &C::hue << &P::hue << 0.2;
    QTest::newRow("contrast spreads") << &C::contrast << &P::spread << 0.25;
    QTest::newRow("saturation") << &C::saturation << &P::colourfulness << 0.4;
    QTest::newRow("brightness") << &C::brightness << &P::meanLuma << 0.15;
    QTest::newRow("sharpness") << &C::sharpness << &P::edges << 0.2;
    QTest::newRow("gamma lifts the middle") << &C::gamma << &P::meanLuma << 0.1;
    QTest::newRow("white balance warms") << &C::whiteBalance << &P::warmth << 0.3;
    QTest::newRow("gain brightens") << &C::gain << &P::meanLuma << 0.15;
    QTest::newRow("backlight lifts the shadows") << &C::backlight << &P::shadows << 0.03;
    QTest::newRow("exposure brightens") << &C::exposure << &P::meanLuma << 0.15;
}

void TestSpecimen::controlsAct()
{
    QFETCH(Control, control);
    QFETCH(Measure, measure);
    QFETCH(double, atLeast);
    const auto value = [&](double setting) {
        BWPictureControls controls;
        controls.*control = setting;
        return (draw(controls).*measure)();
    };
    const double neutral = value(0);
    const double less = value(-0.5);
    const double more = value(0.5);
    const double enough = std::abs(neutral) * atLeast;
    const QString values = QStringLiteral("%1 %2 %3").arg(less).arg(neutral).arg(more);
    QVERIFY2(less < neutral - enough, qPrintable(values));
    QVERIFY2(more > neutral + enough, qPrintable(values));
    QVERIFY2(value(-1) < less && value(1) > more, qPrintable(values));
}

void TestSpecimen::coloursFadeAndBurnOut()
{
    QVERIFY(draw({.saturation = -1}).colourfulness() < 1.5);
    const PictureProbe burnt = draw({.exposure = 1});
    QVERIFY(burnt.meanLumaOf({140, 200, 40, 30}) > 220);
    QVERIFY(burnt.colourfulness() < draw({}).colourfulness());
}

void TestSpecimen::neutralControlsBringThePictureBack()
{
    const QByteArray before = draw({}).bytes();
    const BWPictureControls everything{0.3, 0.2, -0.4, 0.1, 0.5, -0.2, 0.3, 0.4, 0.2, -0.1};
    QVERIFY(draw(everything).bytes() != before);
    QCOMPARE(draw({}).bytes(), before);
}

void TestSpecimen::noiseIsNewInEveryPicture()
{
    constexpr uint64_t period = 900; // the specimen is where it was
    const BWPictureControls gain{.gain = 0.8};
    const PictureProbe one = draw(gain, 0);
    QCOMPARE(draw(gain, 0).bytes(), one.bytes());
    QVERIFY(draw(gain, period).differenceTo(one) > 3);
    QCOMPARE(draw({}, period).bytes(), draw({}, 0).bytes());
}

void TestSpecimen::driftsSmoothlyAlongAClosedPath()
{
    const PictureProbe start = draw({}, 0);
    double previousStep = 0;
    double longest = 0;
    PictureProbe before = start;
    for (uint64_t index = 1; index <= 40; ++index) {
        const PictureProbe now = draw({}, index);
        const double step = now.differenceTo(before);
        QVERIFY2(step > 0, "the picture stood still");
        previousStep = step;
        longest = std::max(longest, step);
        before = now;
    }
    QVERIFY(previousStep > 0);
    const double far = draw({}, 450).differenceTo(start);
    QVERIFY2(longest < far / 2, qPrintable(QStringLiteral("%1 %2").arg(longest).arg(far)));
    QCOMPARE(draw({}, 900).bytes(), start.bytes());
    QCOMPARE(draw({}, 900'000'000'000'000).bytes(), start.bytes()); // a camera that ran for long
}

void TestSpecimen::vignetteStandsStill()
{
    for (const uint64_t index : {0, 225, 450, 675}) {
        const PictureProbe picture = draw({.sharpness = -1}, index);
        const double top = picture.meanLumaOf({size.width() / 2 - 40, 4, 80, 12});
        for (const QRect corner : {QRect(0, 0, 14, 14), QRect(size.width() - 14, size.height() - 14, 14, 14)}) {
            const double dark = picture.meanLumaOf(corner);
            QVERIFY2(dark < 0.85 * top, qPrintable(QStringLiteral("%1 %2 %3").arg(index).arg(dark).arg(top)));
        }
    }
}

void TestSpecimen::jpegShowsTheSamePicture()
{
    for (const BWPictureControls &controls : {BWPictureControls{}, BWPictureControls{.exposure = -0.5}}) {
        const PictureProbe raw = draw(controls, 17);
        const QImage image = PictureProbe::jpeg(*m_source, 17);
        QCOMPARE(image.size(), size.dimensions());
        double difference = 0;
        int count = 0;
        for (int y = 0; y < size.height(); y += 3) {
            for (int x = 0; x < size.width(); x += 3, ++count) {
                const QColor a = raw.colourAt(x, y);
                const QColor b = image.pixelColor(x, y);
                difference +=
                    std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
            }
        }
        QVERIFY2(difference / count / 3 < 4, qPrintable(QString::number(difference / count / 3)));
    }
}

void TestSpecimen::sameForEverybody()
{
    const auto other = makePictureSource(QString());
    other->setResolution(BWResolution(640, 480));
    other->setResolution(size);
    QCOMPARE(PictureProbe(*other, size, 5).bytes(), draw({}, 5).bytes());
    QVERIFY(!other->frameRate());
    QVERIFY(!other->nativeFormat());
}

void TestSpecimen::fillsEverySize_data()
{
    QTest::addColumn<BWResolution>("resolution");
    for (const BWResolution resolution : {BWResolution(640, 480), BWResolution(720, 480), BWResolution(1280, 720),
                                          BWResolution(1280, 1024), BWResolution(240, 640), BWResolution(34, 18)})
        QTest::addRow("%dx%d", resolution.width(), resolution.height()) << resolution;
}

void TestSpecimen::fillsEverySize()
{
    QFETCH(BWResolution, resolution);
    const auto source = makePictureSource(QString());
    source->setResolution(resolution);
    for (const uint64_t index : {0, 180, 450, 720}) {
        const PictureProbe picture(*source, resolution, index);
        QVERIFY(!picture.bytes().isNull());
        QVERIFY(picture.meanLuma() > 90 && picture.meanLuma() < 200);
    }
    QCOMPARE(PictureProbe::jpeg(*source, 3).size(), resolution.dimensions());
}

QTEST_GUILESS_MAIN(TestSpecimen)
#include "tst_BWSpecimen.moc"
