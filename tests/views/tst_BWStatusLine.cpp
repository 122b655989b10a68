// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Rows.h"
#include "Views/MainWindow/BWStatusLine.h"

#include <QImage>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QImage painted(BWStatusPill &pill)
{
    QImage image(pill.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    pill.render(&image, {}, {}, {});
    return image;
}

} // namespace

class TestBWStatusLine : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fades_data()
    {
        const Rows<QString, QString> row; // numbers wait, in milliseconds; what has faded is in brackets
        row("new", u"calm 4900"_s, u"calm"_s);
        row("read", u"calm 5100"_s, u"(calm)"_s);
        row("the same again is nothing new", u"calm 4900 calm 200"_s, u"(calm)"_s);
        row("a problem stays", u"calm problem 60000"_s, u"problem"_s);
        row("solved just now", u"problem 60000 calm 4900"_s, u"calm"_s);
        row("solved", u"problem 60000 calm 5100"_s, u"(calm)"_s);
        row("recording", u"calm 9000 record+ 60000"_s, u"calm"_s);
        row("recorded", u"calm record+ 60000 record- 5100"_s, u"(calm)"_s);
        row("in progress", u"calm 9000 copy+ 60000"_s, u"copy"_s);
        row("no longer", u"calm copy+ 60000 copy- 5100"_s, u"(calm)"_s);
        row("a series", u"calm 9000 series+ 60000"_s, u"series"_s);
        row("and a problem", u"series+ problem 60000"_s, u"problem\nseries"_s);
        row("copying during it", u"series+ copy+"_s, u"copy"_s);
        row("no longer a series", u"calm series+ 60000 series- 5100"_s, u"(calm)"_s);
        row("news", u"calm 9000 news 2400"_s, u"news"_s);
        row("and it fades again", u"calm 9000 news 2600"_s, u"(calm)"_s);
        row("and it stays though the line would fade", u"calm 3000 news 2400"_s, u"news"_s);
        row("and it was not read yet", u"calm 1000 news 2600"_s, u"calm"_s);
        row("pointer near", u"calm 9000 near 4900"_s, u"calm"_s);
        row("pointer rests", u"calm 9000 near 5100"_s, u"(calm)"_s);
        row("news of a recording", u"calm record+ 9000 news 2600"_s, u"calm"_s);
        row("pointer elsewhere", u"calm 9000 far"_s, u"(calm)"_s);
    }
    void fades()
    {
        const auto [steps, shown] = Rows<QString, QString>::current();
        BWManualClock clock;
        QWidget window;
        BWStatusPill pill(&window);
        BWStatusLine line(pill, clock);
        pill.placeIn({0, 0, 800, 600});
        for (const QString &step : steps.split(u' ')) {
            if (step == "calm"_L1)
                line.setText(step);
            else if (step == "problem"_L1)
                line.setText(step, BWStatusLine::Kind::Lasting);
            else if (step == "news"_L1)
                line.showForAMoment(step);
            else if (step.startsWith("record"_L1))
                line.setRecording(step.endsWith(u'+'));
            else if (step.startsWith("copy"_L1))
                line.setProgress(step.endsWith(u'+') ? u"copy"_s : QString());
            else if (step.startsWith("series"_L1))
                line.setSeries(step.endsWith(u'+') ? u"series"_s : QString());
            else if (step == "near"_L1 || step == "far"_L1)
                pill.pointerAt(pill.geometry().center() - QPoint(0, step == "far"_L1 ? 200 : 30));
            else
                clock.advance(std::chrono::milliseconds(step.toInt()));
            painted(pill); // which it may keep for the next time
            QVERIFY(!pill.isHidden()); // a screen reader would speak it when it comes back
        }
        QCOMPARE(pill.accessibleName(), pill.text());
        QCOMPARE(pill.isFaded() ? u'(' + pill.text() + u')' : pill.text(), shown);
        BWStatusPill other(&window); // which has never shown anything else
        other.placeIn({0, 0, 800, 600});
        other.setText(pill.text());
        QTRY_COMPARE(pill.geometry(), other.geometry());
        QImage seen = painted(other);
        if (pill.isFaded())
            seen.fill(Qt::transparent);
        QTRY_COMPARE(painted(pill), seen);
    }
};

QTEST_MAIN(TestBWStatusLine)
#include "tst_BWStatusLine.moc"
