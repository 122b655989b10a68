#include "PictureProbe.h"
#include "simulated/picture/BWPictureSource.h"

#include <QTest>

namespace {

constexpr BWResolution size(320, 240);

using Measure = double (PictureProbe::*)() const;
using Control = double BWPictureControls::*;

} // namespace

class TestSpecimen : public QObject {
    Q_OBJECT

    std::unique_ptr<BWPictureSource> m_source;

    PictureProbe draw(const BWPictureControls &controls, uint64_t index = 0)
    {
        m_source->setControls(controls);
        return PictureProbe(*m_source, size, index);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_source = makePictureSource(QString());
        QVERIFY(m_source);
        m_source->setResolution(size);
    }

    void controlsAct_data()
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

    void controlsAct()
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

    void sameForEverybodyWhateverWasBefore()
    {
        const QByteArray before = draw({}, 5).bytes();
        const BWPictureControls everything{0.3, 0.2, -0.4, 0.1, 0.5, -0.2, 0.3, 0.4, 0.2, -0.1};
        QVERIFY(draw(everything, 5).bytes() != before);
        QCOMPARE(draw({}, 5).bytes(), before);
        const auto other = makePictureSource(QString());
        other->setResolution(BWResolution(640, 480));
        other->setResolution(size);
        QCOMPARE(PictureProbe(*other, size, 5).bytes(), before);
    }

    void driftsSmoothlyAlongAClosedPath()
    {
        const PictureProbe start = draw({}, 0);
        const double far = draw({}, 450).differenceTo(start);
        PictureProbe before = start;
        for (uint64_t index = 1; index <= 40; ++index) {
            const PictureProbe now = draw({}, index);
            const double step = now.differenceTo(before);
            QVERIFY2(step > 0 && step < far / 2, qPrintable(QStringLiteral("%1 %2").arg(step).arg(far)));
            before = now;
        }
        QCOMPARE(draw({}, 900).bytes(), start.bytes());
        QCOMPARE(draw({}, 900'000'000'000'000).bytes(), start.bytes()); // a camera that ran for long
    }

    void fillsEverySize()
    {
        for (const BWResolution resolution :
             {BWResolution(720, 480), BWResolution(1280, 1024), BWResolution(240, 640), BWResolution(34, 18)}) {
            const auto source = makePictureSource(QString());
            source->setResolution(resolution);
            for (const uint64_t index : {0, 180, 450, 720}) {
                const PictureProbe picture(*source, resolution, index);
                QVERIFY(!picture.bytes().isNull());
                QVERIFY(picture.meanLuma() > 90 && picture.meanLuma() < 200);
            }
            QCOMPARE(QImage::fromData(PictureProbe::jpeg(*source, 3), "JPEG").size(), resolution.dimensions());
        }
    }
};

QTEST_GUILESS_MAIN(TestSpecimen)
#include "tst_BWSpecimen.moc"
