// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWLiveViewMeter.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestLiveViewMeter : public QObject {
    Q_OBJECT

    BWLiveViewMeter m_meter;
    BWLiveViewMeter::Time m_now{1h};

    /// Camera's rate, screen's rate, dropped, latency.
    QString figures() const
    {
        const BWLiveViewFigures figures = m_meter.figures(m_now);
        if (!figures.cameraRate && !figures.screenRate && !figures.dropped && !figures.latency)
            return u"nothing"_s;
        return u"%1 %2 %3 %4"_s.arg(qRound(*figures.cameraRate))
            .arg(qRound(*figures.screenRate))
            .arg(*figures.dropped)
            .arg(figures.latency ? figures.latency->count() / 1000 : -1);
    }

    /// After some more frames, of which every so many is shown, 20 ms later.
    QString after(int frames, std::chrono::milliseconds interval, int shownOf = 1)
    {
        for (int i = 1; i <= frames; ++i) {
            m_meter.addReceived(m_now += interval);
            i % shownOf == 0 ? m_meter.addShown(m_now - 20ms, m_now) : m_meter.addDropped();
        }
        return figures();
    }

private Q_SLOTS:
    void figuresOfTheLastSecond()
    {
        QCOMPARE(figures(), u"nothing"_s);
        QCOMPARE(after(1, 33ms), u"1 1 0 20"_s);
        QCOMPARE(after(300, 40ms), u"25 25 0 20"_s);
        m_now += 39ms;
        QCOMPARE(figures(), u"25 25 0 20"_s);
        m_now += 1s; // it stalls
        QCOMPARE(figures(), u"0 0 0 -1"_s);
        m_meter.addShown(m_now - 90ms, m_now); // one late picture
        QCOMPARE(figures(), u"0 1 0 90"_s);
        QCOMPARE(after(90, 10ms, 3), u"100 33 60 20"_s);
        m_meter.restart(m_now); // another camera
        QCOMPARE(figures(), u"nothing"_s);
        m_now += 1ms;
        QCOMPARE(after(5, 0ms), u"5 5 0 20"_s);
        QCOMPARE(after(9, 500ms), u"2 2 0 20"_s);
        QCOMPARE(after(5000, 1ms, 2), u"1000 500 2500 20"_s); // more than are kept
    }

    void latenciesOfTheLastPictures()
    {
        m_meter = {};
        QVERIFY(!m_meter.latencies());
        for (int i = 100; i > 0; --i)
            m_meter.addShown(m_now - std::chrono::milliseconds(i), m_now);
        m_meter.restart(m_now);
        QVERIFY(m_meter.latencies()->median == 50ms && m_meter.latencies()->percentile99 == 99ms);
        after(2000, 33ms); // the old ones are forgotten
        QVERIFY(m_meter.latencies()->percentile99 == 20ms);
    }
};

QTEST_GUILESS_MAIN(TestLiveViewMeter)
#include "tst_BWLiveViewMeter.moc"
