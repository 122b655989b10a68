#include "BWACUDriver/BWResolution.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestResolution : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parses_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<BWResolution>("expected");
        const BWResolution none;
        QTest::newRow("plain") << u"640x480"_s << BWResolution(640, 480);
        QTest::newRow("limit") << u"32768x32768"_s << BWResolution(32768, 32768);
        QTest::newRow("leading zeros") << u"00640x0480"_s << BWResolution(640, 480);
        for (const QString &text :
             {u""_s, u"x"_s, u"640"_s, u"640x"_s, u"x480"_s, u"640X480"_s, u"640x480x2"_s, u" 640x480"_s,
              u"640x480\n"_s, u"640 x 480"_s, u"-640x480"_s, u"+640x480"_s, u"0x480"_s, u"640x0"_s, u"32769x1"_s,
              u"99999999999x1"_s, u"6.4x4"_s, u"\u0661\u0662x480"_s})
            QTest::newRow(qPrintable(u"not \""_s + text + u'"')) << text << none;
    }

    void parses()
    {
        QFETCH(QString, text);
        QFETCH(BWResolution, expected);
        const std::optional<BWResolution> parsed = BWResolution::fromResolutionString(text);
        QCOMPARE(parsed.has_value(), expected.isValid());
        QCOMPARE(parsed.value_or(BWResolution()), expected);
        if (parsed)
            QCOMPARE(BWResolution::fromResolutionString(parsed->resolutionString()), parsed);
    }
};

QTEST_GUILESS_MAIN(TestResolution)
#include "tst_Resolution.moc"
