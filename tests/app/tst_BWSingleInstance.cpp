// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWSingleInstance.h"
#include "Model/Settings/BWSettingsLock.h"

#include <atomic>
#include <csignal>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Start = BWSingleInstance::Start;

/// Several starts on the same settings, each an object of its own; the later ones wait on threads.
class TestBWSingleInstance : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_dir.emplace(); }

    void secondBringsTheFirstForward()
    {
        BWSingleInstance first(settings());
        QCOMPARE(first.start(), Start::First);
        QByteArray tokens;
        LaterStart early(settings(), "early"); // before the first one can answer
        first.setBringForward([&](const QByteArray &token) {
            tokens += token + ' ';
            return true;
        });
        QCOMPARE(early.outcome(), Start::HandedOver);
        QCOMPARE(LaterStart(settings(), "late").outcome(), Start::HandedOver);
        QCOMPARE(tokens, "early late ");
        QCOMPARE(BWSingleInstance(settings() + u'2').start(), Start::First); // other settings, other instance
    }

    void strangerIsNotAnswered()
    {
        BWSingleInstance first(settings());
        bool asked = false;
        first.setBringForward([&](const QByteArray &) { return asked = true; });
        QByteArray note = BWSettingsLock(settings()).note();
        note.back() = note.endsWith('0') ? '1' : '0'; // the name is public, the secret is not known
        BWSettingsLock other(settings() + u'2');
        other.setNote(note);
        QCOMPARE(LaterStart(settings() + u'2', {}, std::chrono::milliseconds(200)).outcome(), Start::NoAnswer);
        QVERIFY(!note.isEmpty() && !asked);
    }

    void silentProgramTimesOut()
    {
        const BWSingleInstance first(settings());
        QCOMPARE(LaterStart(settings(), {}, std::chrono::milliseconds(200)).outcome(), Start::NoAnswer);
    }

    void startWaitsForEndingProgram()
    {
        auto first = std::make_optional<BWSingleInstance>(settings());
        bool asked = false;
        first->setBringForward([&](const QByteArray &) {
            asked = true;
            return false;
        });
        LaterStart second(settings(), "token");
        QTRY_VERIFY(asked);
        first.reset();
        QCOMPARE(second.outcome(), Start::First);
    }

    void killedProgramBlocksNothing()
    {
        std::array<int, 2> ready;
        QCOMPARE(::pipe(ready.data()), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const BWSingleInstance program(settings());
            QFile lock(settings() + u".lock"_s); // as QSettings leaves it when killed while it writes
            const bool isReady = lock.open(QIODevice::WriteOnly) && ::write(ready[1], "x", 1) == 1;
            pause();
            _exit(isReady ? 0 : 1);
        }
        char byte = 0;
        QCOMPARE(::read(ready[0], &byte, 1), 1);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        QCOMPARE(BWSingleInstance(settings()).start(), Start::First);
        QVERIFY2(!QFile::exists(settings() + u".lock"_s), "QSettings would wait for it");
    }

    /// Running twice is better than not at all.
    void startsWithoutALock()
    {
        QCOMPARE(BWSingleInstance(u"/proc/none/settings.conf"_s).start(), Start::First);
        QCOMPARE(::mkfifo(QFile::encodeName(settings() + u".use"_s).constData(), 0600), 0);
        const BWSingleInstance first(settings());
        QCOMPARE(BWSingleInstance(settings()).start(), Start::First);
    }

private:
    class LaterStart {
    public:
        LaterStart(const QString &settings, const QByteArray &token,
                   std::chrono::milliseconds patience = std::chrono::seconds(20))
            : m_thread([=, this] {
                  m_start = BWSingleInstance(settings, token, patience).start();
                  m_done = true;
              })
        {
        }
        ~LaterStart() { m_thread.join(); }

        /// Serves the first program's events meanwhile.
        Start outcome()
        {
            [[maybe_unused]] const bool done = QTest::qWaitFor([this] { return m_done.load(); }, 30'000);
            return m_start;
        }

    private:
        std::atomic<Start> m_start{};
        std::atomic<bool> m_done = false;
        std::thread m_thread;
    };

    QString settings() const { return m_dir->filePath(u"settings.conf"_s); }

    std::optional<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TestBWSingleInstance)
#include "tst_BWSingleInstance.moc"
