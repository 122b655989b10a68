#include "BWACUDriver/DispatchAfterStrict.h"
#include "BWManualClock.h"

#include <atomic>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

using namespace std::chrono_literals;

class TestDispatchAfterStrict : public QObject {
    Q_OBJECT

    BWManualClock m_clock;

    DispatchAfterStrict::Handle after(double seconds, std::function<void()> block)
    {
        return DispatchAfterStrict::dispatchForQueue(this, std::move(block), seconds, m_clock);
    }

private Q_SLOTS:
    void cancelHoldsOnlyBeforeTheStart()
    {
        const auto runs = std::make_shared<int>(0);
        const auto early = after(1, [runs] { *runs += 100; });
        early->cancel();
        QVERIFY2(runs.use_count() == 1, "a cancelled block holds on to nothing");
        DispatchAfterStrict::Handle own;
        own = after(2, [&] {
            own->cancel(); // must not destroy what runs
            ++*runs;
        });
        m_clock.advance(3s);
        own->cancel();
        QCOMPARE(*runs, 1);
    }

    void queueThatIsGoneRunsNothing()
    {
        int runs = 0;
        const auto block = [&runs] { ++runs; };
        {
            QObject queue;
            DispatchAfterStrict::dispatchForQueue(&queue, block, 0.1, m_clock);
            DispatchAfterStrict::dispatchForQueue(&queue, block, 0.001);
            DispatchAfterStrict::dispatchForQueue(&queue, block, 0);
        }
        m_clock.advance(1s);
        // A later timer of the same loop comes after those would have.
        bool later = false;
        const auto note = [&later] { later = true; };
        DispatchAfterStrict::dispatchForQueue(this, note, 0.02);
        QTRY_VERIFY(later);
        QCOMPARE(runs, 0);
    }

    void realClockIsNeverEarly()
    {
        // The queue lives in another thread than the call.
        QThread thread;
        QObject queue;
        queue.moveToThread(&thread);
        thread.start();
        for (const double delay : {0.0, -1.0, 0.03}) {
            std::atomic<bool> inThread = false;
            std::atomic<qint64> elapsed = -1;
            QElapsedTimer timer;
            timer.start();
            const auto block = [&] {
                inThread = QThread::currentThread() == &thread;
                elapsed = timer.nsecsElapsed();
            };
            DispatchAfterStrict::dispatchForQueue(&queue, block, delay);
            QTRY_VERIFY(elapsed >= 0);
            QVERIFY(inThread);
            QVERIFY(double(elapsed) >= delay * 1e9);
        }
        thread.quit();
        thread.wait();
    }
};

QTEST_GUILESS_MAIN(TestDispatchAfterStrict)
#include "tst_DispatchAfterStrict.moc"
