// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Thumbnails/BWThumbnailWorkers.h"

#include <mutex>
#include <QSemaphore>
#include <QTest>

using namespace Qt::StringLiterals;

/// On workers whose making of a thumbnail waits for the test, if the file is to wait.
class TestThumbnailWorkers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void requestsAreReplacedAndKeepTheirOrder()
    {
        start(1, true);
        m_workers->request(requests(u"slow a b c"_s));
        m_begun.acquire();
        m_workers->request(requests(u"d slow b"_s)); // "slow" is being made, "a" and "c" are not wanted any more
        m_mayGoOn.release();
        QTRY_COMPARE(log(), u"make slow, make d, make b, store slow, store d, store b"_s);
        QCOMPARE(m_notified.loadAcquire(), 1); // as nothing has been taken yet
        QTRY_COMPARE(taken(), u"slow d b"_s);

        m_notified = 0;
        m_workers->request(requests(u"e"_s));
        QTRY_COMPARE(m_notified.loadAcquire(), 1);
        m_workers->request(requests(u"e"_s)); // waits to be taken
        QTRY_COMPARE(taken(), u"slow d b e"_s);
        QTRY_VERIFY(m_workers->isIdle());
    }

    void hangingWorkersAreReplacedAndAbandoned()
    {
        start(1, false, std::chrono::milliseconds(0));
        m_workers->request(requests(u"slow a"_s));
        m_begun.acquire();
        QVERIFY(log().isEmpty());
        m_workers->request(requests(u"a b"_s));
        QTRY_COMPARE(log(), u"make a, make b"_s);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"1 files do not answer"_s));
        m_workers.reset();
        m_mayGoOn.release();
        m_ended.acquire(2); // the end of both threads, before this program's
        QCOMPARE(log(), u"make a, make b, make slow"_s);
    }

private:
    /// Reports that a worker has let go of everything.
    struct End {
        QSemaphore &ended;
        ~End() { ended.release(); }
    };

    void start(int threads, bool store = false, std::chrono::milliseconds patience = std::chrono::seconds(60))
    {
        m_workers.reset();
        m_ended.acquire(m_ended.available()); // of the threads before
        m_log.clear();
        m_taken.clear();
        m_notified = 0;
        BWThumbnailWorkers::Callbacks callbacks;
        callbacks.newMaker = [this, store] {
            return [this, store, end = std::make_shared<End>(m_ended)](const BWThumbnailRequest &request) {
                if (request.file.path() == u"slow"_s) {
                    m_begun.release();
                    m_mayGoOn.acquire();
                }
                note(u"make "_s, request);
                return BWThumbnailResult{request, {}, false, store};
            };
        };
        callbacks.store = [this](const BWThumbnailResult &result) { note(u"store "_s, result.request); };
        callbacks.resultsWaiting = [this] { ++m_notified; };
        m_workers = std::make_unique<BWThumbnailWorkers>(std::move(callbacks), threads, patience);
    }

    void note(const QString &what, const BWThumbnailRequest &request)
    {
        const std::lock_guard lock(m_mutex);
        m_log.append(what + request.file.path());
    }

    QString log()
    {
        const std::lock_guard lock(m_mutex);
        return m_log.join(u", "_s);
    }

    static QList<BWThumbnailRequest> requests(const QString &names)
    {
        QList<BWThumbnailRequest> requests;
        for (const QString &name : names.split(u' '))
            requests.append({QUrl(name)});
        return requests;
    }

    /// The names in all results so far.
    QString taken()
    {
        for (const BWThumbnailResult &result : m_workers->take())
            m_taken.append(result.request.file.path());
        return m_taken.join(u' ');
    }

    std::mutex m_mutex;
    QStringList m_log;
    QStringList m_taken;
    QAtomicInt m_notified;
    QSemaphore m_begun;
    QSemaphore m_mayGoOn;
    QSemaphore m_ended;
    std::unique_ptr<BWThumbnailWorkers> m_workers;
};

QTEST_GUILESS_MAIN(TestThumbnailWorkers)
#include "tst_BWThumbnailWorkers.moc"
