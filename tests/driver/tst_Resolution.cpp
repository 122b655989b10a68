#include "BWACUDriver/BWResolution.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestResolution : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parsesWholeTextsOnly()
    {
        for (const QString &text : {u"640x480"_s, u"00640x0480"_s})
            QCOMPARE(BWResolution::fromResolutionString(text), BWResolution(640, 480));
        const BWResolution largest(32768, 32768);
        QCOMPARE(BWResolution::fromResolutionString(largest.resolutionString()), largest);
        for (const QString &text :
             {u""_s, u"640"_s, u"640x"_s, u"x480"_s, u"640X480"_s, u"640x480x2"_s, u"640x480\n"_s, u"+640x480"_s,
              u"0x480"_s, u"32769x1"_s, u"99999999999x1"_s, u"6.4x4"_s, u"\u0661\u0662x480"_s})
            QVERIFY2(!BWResolution::fromResolutionString(text), qPrintable(text));
    }
};

QTEST_GUILESS_MAIN(TestResolution)
#include "tst_Resolution.moc"
