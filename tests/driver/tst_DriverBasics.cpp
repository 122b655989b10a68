// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWDiskSpace.h"
#include "BWACUDriver/BWResolution.h"
#include "BWACUDriver/DispatchAfterStrict.h"
#include "BWManualClock.h"

#include <atomic>
#include <QElapsedTimer>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestDriverBasics : public QObject {
    Q_OBJECT

    BWManualClock m_clock;

private Q_SLOTS:
    void cancelWorksOnlyBeforeTheStart()
    {
        const auto runs = std::make_shared<int>(0);
        const auto early = DispatchAfterStrict::dispatchForQueue(
            this, [runs] { *runs += 100; }, 1, m_clock);
        early->cancel();
        QVERIFY2(runs.use_count() == 1, "a cancelled block holds on to nothing");
        DispatchAfterStrict::Handle own;
        const auto once = [&] {
            own->cancel(); // must not destroy what runs
            ++*runs;
        };
        own = DispatchAfterStrict::dispatchForQueue(this, once, 2, m_clock);
        m_clock.advance(3s);
        own->cancel();
        QCOMPARE(*runs, 1);
    }

    void destroyedQueueRunsNothing()
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

    void diskWithoutSizeIsNotFull()
    {
        QVERIFY(!BWDiskSpace::isNearlyFull("/proc")); // has no blocks at all
        QVERIFY(BWDiskSpace::isNearlyFull("/", uint64_t(1) << 60));
    }

    void resolutionsAreParsedStrictly()
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

QTEST_GUILESS_MAIN(TestDriverBasics)
#include "tst_DriverBasics.moc"
