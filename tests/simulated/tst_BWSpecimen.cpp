#include "PictureProbe.h"
#include "simulated/picture/BWPictureSource.h"

#include <QTest>

namespace {

constexpr BWResolution size(320, 240);

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

    void everyControlActsBothWays()
    {
        using C = BWPictureControls;
        const PictureProbe neutral = draw({});
        for (const Control control : {&C::hue, &C::contrast, &C::saturation, &C::brightness, &C::sharpness, &C::gamma,
                                      &C::whiteBalance, &C::gain, &C::backlight, &C::exposure}) {
            const bool brightens =
                control == &C::brightness || control == &C::gamma || control == &C::gain || control == &C::exposure;
            for (const double setting : {-0.5, 0.5}) {
                BWPictureControls controls;
                controls.*control = setting;
                const PictureProbe changed = draw(controls);
                const double difference = changed.differenceTo(neutral);
                QVERIFY2(difference > 1, qPrintable(QString::number(difference)));
                QVERIFY(!brightens || (changed.meanLuma() - neutral.meanLuma()) * setting > 5);
            }
        }
        QCOMPARE(draw({}).bytes(), neutral.bytes());
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
