#include "Rows.h"

#include "Model/LiveView/BWLiveViewMeter.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// Some frames of a camera, one interval apart. Every so many one is shown, 20 ms later, and the others are dropped.
struct Stretch {
    int frames;
    std::chrono::milliseconds interval;
    int shownOf = 1;
};

class TestLiveViewMeter : public QObject {
    Q_OBJECT

    /// Camera's rate, screen's rate, dropped, latency.
    QString figures() const
    {
        const BWLiveViewFigures figures = m_meter->figures(m_now);
        const auto number = [](const auto &value) { return value ? QString::number(*value, 'f', 0) : u"-"_s; };
        return QStringList{number(figures.cameraRate), number(figures.screenRate),
                           number(figures.dropped ? std::optional<double>(*figures.dropped) : std::nullopt),
                           number(figures.latency ? std::optional(figures.latency->count() / 1e3) : std::nullopt)}
            .join(u' ');
    }

    void run(const Stretch &stretch)
    {
        for (int i = 1; i <= stretch.frames; ++i) {
            m_now += stretch.interval;
            m_meter->addReceived(m_now);
            if (i % stretch.shownOf == 0)
                m_meter->addShown(m_now - 20ms, m_now);
            else
                m_meter->addDropped();
        }
    }

    std::unique_ptr<BWLiveViewMeter> m_meter;
    BWLiveViewMeter::Time m_now{1h};

private Q_SLOTS:
    void init() { m_meter = std::make_unique<BWLiveViewMeter>(); }

    void figuresOfTheLastSecond_data()
    {
        const Rows<QList<Stretch>, std::chrono::milliseconds, QString> row; // how long after the last frame
        row("nothing yet", {}, 0ms, u"- - - -"_s);
        row("one frame", {{1, 33ms}}, 0ms, u"1 1 0 20"_s);
        row("between two frames", {{300, 40ms}}, 39ms, u"25 25 0 20"_s);
        row("every third on the screen", {{90, 10ms, 3}}, 0ms, u"100 33 60 20"_s);
        row("slow camera", {{9, 500ms}}, 0ms, u"2 2 0 20"_s);
        row("more frames than are kept", {{5000, 1ms, 2}}, 0ms, u"1000 500 2500 20"_s);
        row("stalled", {{60, 40ms, 2}}, 1000ms, u"0 0 30 -"_s);
        row("back after a stall", {{60, 40ms, 2}, {1, 60s}, {20, 20ms}}, 0ms, u"50 50 30 20"_s);
        row("same time", {{5, 0ms}}, 0ms, u"5 5 0 20"_s);
    }
    void figuresOfTheLastSecond()
    {
        const auto [stretches, pause, expected] = Rows<QList<Stretch>, std::chrono::milliseconds, QString>::current();
        for (const Stretch &stretch : stretches)
            run(stretch);
        m_now += pause;
        QCOMPARE(figures(), expected);
        m_meter->restart(m_now); // nothing of the old camera is said of the next one
        QCOMPARE(figures(), u"- - - -"_s);
        run({2, 100ms});
        QCOMPARE(figures(), u"10 10 0 20"_s);
    }

    void latenciesOfTheWholeRun()
    {
        QVERIFY(!m_meter->latencies());
        for (int i = 100; i > 0; --i)
            m_meter->addShown(m_now - std::chrono::milliseconds(i), m_now);
        m_meter->restart(m_now);
        QVERIFY(m_meter->latencies()->median == 50ms && m_meter->latencies()->percentile99 == 99ms);
        run({2000, 33ms}); // the old ones are forgotten
        QVERIFY(m_meter->latencies()->percentile99 == 20ms);
    }
};

QTEST_GUILESS_MAIN(TestLiveViewMeter)
#include "tst_BWLiveViewMeter.moc"
