// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/LiveView/BWFullScreenRules.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestBWFullScreenRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shown_data()
    {
        // steps: y and d move the pointer, d with a button pressed; numbers wait, in milliseconds
        const Rows<QString, QString> row;
        row("nothing but the picture", u""_s, u"pointer"_s);
        row("pointer at the top edge", u"y1"_s, u"bars pointer"_s);
        row("pointer where the bars would be", u"y40"_s, u"pointer"_s);
        row("picture dragged to the edge", u"d0"_s, u"pointer"_s);
        row("pointer stays in the bars", u"y0 y99 9000"_s, u"bars pointer"_s);
        row("pointer has just left", u"y0 y100 700"_s, u"bars pointer"_s);
        row("pointer left a moment ago", u"y0 y100 900"_s, u"pointer"_s);
        row("pointer comes back in time", u"y0 y100 700 y99 9000"_s, u"bars pointer"_s);
        row("pointer went to another screen", u"y0 out 900"_s, u"pointer"_s);
        row("keyboard in the bars", u"keyboard+ 9000"_s, u"bars"_s);
        row("keyboard has left them", u"keyboard+ 9000 keyboard- 900"_s, u""_s);
        row("keyboard left, pointer still there", u"y0 keyboard+ keyboard- 9000"_s, u"bars pointer"_s);
        row("menu open", u"call popup+ 9000"_s, u"bars"_s);
        row("menu closed", u"call popup+ 9000 popup- 900"_s, u""_s);
        row("pointer rests", u"y300 2900"_s, u"pointer"_s);
        row("pointer has rested", u"y300 1000 y301 3100"_s, u""_s);
        row("pointer moves again", u"y300 9000 y301"_s, u"pointer"_s);
        row("pointer beside a question", u"y300 active- 9000"_s, u"pointer"_s);
        row("question answered", u"y300 active- 9000 active+ 3100"_s, u""_s);
        row("in a window once more", u"y300 9000 end keyboard+ y0 9000"_s, u"pointer"_s);
    }
    void shown()
    {
        const auto [steps, shown] = Rows<QString, QString>::current();
        BWManualClock clock;
        bool bars = false, pointer = true, popup = false;
        BWFullScreenRules rules(
            {[&](bool now) { bars = now; }, [&](bool now) { pointer = now; }, [&] { return popup; }}, clock);
        rules.begin(100);
        for (const QString &step : steps.split(u' ', Qt::SkipEmptyParts)) {
            const bool on = step.endsWith(u'+');
            if (step.startsWith(u'y') || step.startsWith(u'd'))
                rules.pointerAt(step.mid(1).toInt(), step.startsWith(u'd'));
            else if (step == "out"_L1)
                rules.pointerAt({}, false);
            else if (step == "call"_L1)
                rules.callBars();
            else if (step == "end"_L1)
                rules.end();
            else if (step.startsWith("keyboard"_L1))
                rules.setKeyboardInBars(on);
            else if (step.startsWith("popup"_L1))
                popup = on;
            else if (step.startsWith("active"_L1))
                rules.setActive(on);
            else
                clock.advance(std::chrono::milliseconds(step.toInt()));
        }
        QCOMPARE(u"%1 %2"_s.arg(bars ? u"bars"_s : u""_s, pointer ? u"pointer"_s : u""_s).trimmed(), shown);
    }
};

QTEST_GUILESS_MAIN(TestBWFullScreenRules)
#include "tst_BWFullScreenRules.moc"
