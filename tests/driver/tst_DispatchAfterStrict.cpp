#include "BWACUDriver/DispatchAfterStrict.h"

#include <atomic>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

using namespace std::chrono_literals;

class TestDispatchAfterStrict : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void runsOnceWhenDue()
    {
        BWManualClock clock;
        QObject queue;
        int runs = 0;
        // The handle is let go at once.
        DispatchAfterStrict::dispatchForQueue(
            &queue, [&runs] { ++runs; }, 1.5, clock);
        clock.advance(1499ms);
        QCOMPARE(runs, 0);
        clock.advance(1ms);
        QCOMPARE(runs, 1);
        clock.advance(10s);
        QCOMPARE(runs, 1);
    }

    void cancelHoldsOnlyBeforeTheStart()
    {
        BWManualClock clock;
        QObject queue;
        int runs = 0;
        const auto early = DispatchAfterStrict::dispatchForQueue(
            &queue, [&runs] { ++runs; }, 1, clock);
        DispatchAfterStrict::Handle own;
        own = DispatchAfterStrict::dispatchForQueue(
            &queue,
            [&] {
                own->cancel(); // must not destroy what runs
                ++runs;
            },
            2, clock);
        early->cancel();
        clock.advance(3s);
        QCOMPARE(runs, 1);
        own->cancel();
        QCOMPARE(runs, 1);
    }

    void cancelLetsGoOfTheBlock()
    {
        BWManualClock clock;
        QObject queue;
        auto captured = std::make_shared<int>(0);
        const auto handle = DispatchAfterStrict::dispatchForQueue(
            &queue, [captured] { ++*captured; }, 1, clock);
        handle->cancel();
        QCOMPARE(captured.use_count(), 1);
    }

    void queueThatIsGoneRunsNothing()
    {
        int runs = 0;
        BWManualClock clock;
        {
            QObject queue;
            DispatchAfterStrict::dispatchForQueue(
                &queue, [&runs] { ++runs; }, 0.1, clock);
            DispatchAfterStrict::dispatchForQueue(
                &queue, [&runs] { ++runs; }, 0.001);
            DispatchAfterStrict::dispatchForQueue(
                &queue, [&runs] { ++runs; }, 0);
        }
        clock.advance(1s);
        // A later timer of the same loop comes after those would have.
        bool later = false;
        DispatchAfterStrict::dispatchForQueue(
            this, [&later] { later = true; }, 0.02);
        QTRY_VERIFY(later);
        QCOMPARE(runs, 0);
    }

    void orderIsThatOfTime()
    {
        BWManualClock clock;
        QObject queue;
        QList<int> order;
        const auto note = [&](int number) { return [&order, number] { order.append(number); }; };
        clock.callAfter(2s, &queue, note(3));
        clock.callAfter(1s, &queue, [&] {
            order.append(1);
            clock.callAfter(500ms, &queue, note(2));
            clock.callAfter(5s, &queue, note(99));
        });
        clock.callAfter(2s, &queue, note(4));
        clock.advance(3s);
        QCOMPARE(order, (QList<int>{1, 2, 3, 4}));
        QCOMPARE(clock.now(), 3s);
    }

    void realClockIsNeverEarly_data()
    {
        QTest::addColumn<double>("delay");
        QTest::newRow("none") << 0.0;
        QTest::newRow("negative") << -1.0;
        QTest::newRow("some") << 0.03;
    }

    void realClockIsNeverEarly()
    {
        QFETCH(double, delay);
        // The queue lives in another thread than the call.
        QThread thread;
        QObject queue;
        queue.moveToThread(&thread);
        thread.start();
        std::atomic<bool> inThread = false;
        std::atomic<qint64> elapsed = -1;
        QElapsedTimer timer;
        timer.start();
        DispatchAfterStrict::dispatchForQueue(
            &queue,
            [&] {
                inThread = QThread::currentThread() == &thread;
                elapsed = timer.nsecsElapsed();
            },
            delay);
        QTRY_VERIFY(elapsed >= 0);
        thread.quit();
        thread.wait();
        QVERIFY(inThread);
        QVERIFY(double(elapsed) >= delay * 1e9);
    }
};

QTEST_GUILESS_MAIN(TestDispatchAfterStrict)
#include "tst_DispatchAfterStrict.moc"
