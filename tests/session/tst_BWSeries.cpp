// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/Capture/BWSeries.h"
#include "Model/Capture/BWSeriesFile.h"
#include "Model/Capture/BWSeriesTexts.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "TestFolder.h"

#include <QTest>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using End = BWSeriesPlan::End;
using State = BWSeries::State;
using Reason = BWSeries::Reason;

namespace {

/// A clock of the kernel's that the test has moved, and by how many seconds; for its own thread.
thread_local std::pair<clockid_t, time_t> moved;

/// A series under a clock of its own, with a camera and a disk that do what a script says. It notes the seconds at which
/// pictures are requested, and the gaps: "0 10 gap:2/30".
class Bench {
public:
    void play(const QString &script)
    {
        for (const QString &word : script.split(u' ', Qt::SkipEmptyParts)) {
            if (word == "camera-"_L1 || word == "camera+"_L1 || word == "other"_L1)
                camera = word == "camera-"_L1 ? nullptr
                    : word == "other"_L1      ? static_cast<const void *>(&asleep)
                                              : &clock;
            else if (word == "stall"_L1 || word == "work"_L1)
                answers = word == "work"_L1;
            else if (word == "taken"_L1)
                series.taken(request);
            else if (word == "dropped"_L1)
                series.notTaken(request);
            else if (word == "slow"_L1 || word == "quick"_L1)
                saves = word == "quick"_L1;
            else if (word == "saved"_L1)
                series.saved();
            else if (word == "stop"_L1)
                series.end(Reason::Stopped);
            else if (word.startsWith("asleep:"_L1))
                asleep += std::chrono::milliseconds(word.mid(7).toInt());
            else
                clock.advance(std::chrono::seconds(word.toInt()));
        }
    }
    void take(unsigned number)
    {
        request = number;
        log << QString::number(std::chrono::duration<double>(now()).count());
        if (answers)
            series.taken(number);
        if (answers && saves)
            series.saved();
    }
    BWSeries::Time now() const { return clock.now() + asleep; }
    QString outcome() const
    {
        return u"%1 %2 %3"_s.arg(series.savedCount()).arg(series.missedCount()).arg(static_cast<int>(series.state()));
    }

    BWManualClock clock;
    BWSeries::Time asleep{};
    const void *camera = &clock;
    bool answers = true;
    bool saves = true;
    unsigned request = 0;
    QStringList log;
    BWSeries series{{[this] { return camera; }, [this](unsigned number) { take(number); }, [this] { return now(); }},
                    clock};
};

BWSeriesPlan every10s(End end, qint64 number = 3, std::chrono::seconds duration = 25s, std::chrono::seconds delay = 0s)
{
    return {10s, delay, end, number, duration};
}

} // namespace

/// In place of the C library's, for all that is in this process.
extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    if (clock == moved.first)
        time->tv_sec += moved.second;
    return static_cast<int>(result);
}

class TestSeries : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void takesWhatIsDue_data()
    {
        const Rows<BWSeriesPlan, QString, QString, QString, State> row;
        const auto add = [&](const char *name, const BWSeriesPlan &plan, const char *script, const char *log,
                             const char *counts, State state) {
            row(name, plan, QString::fromLatin1(script), QString::fromLatin1(log), QString::fromLatin1(counts), state);
        };
        const BWSeriesPlan three = every10s(End::Number);
        const BWSeriesPlan endless = every10s(End::UntilStopped);
        add("a number", three, "60", "0 10 20", "3 0", State::Ended);
        add("after a delay", every10s(End::Number, 3, 25s, 5s), "4 56", "5 15 25", "3 0", State::Ended);
        add("self-timer", every10s(End::Number, 1, 1s, 5s), "4", "", "0 0", State::Waiting);
        add("and it goes off", every10s(End::Number, 1, 1s, 5s), "60", "5", "1 0", State::Ended);
        add("a duration", every10s(End::Duration), "60", "0 10 20", "3 0", State::Ended);
        add("a duration to the second", every10s(End::Duration, 1, 20s), "60", "0 10 20", "3 0", State::Ended);
        add("stopped", endless, "35 stop 60", "0 10 20 30", "4 0", State::Ended);
        add("asleep", endless, "15 asleep:100000 10", "0 10 120 gap:10/110", "3 10", State::Running);
        add("asleep when one is due, not for long", endless, "9 asleep:1500 12", "0 11.5 20", "3 0", State::Running);
        add("asleep, too late for it", endless, "9 asleep:2500 12", "0 20 gap:1/20", "2 1", State::Running);
        add("camera pulled", endless, "15 camera- 30", "0 10", "2 3", State::WaitingForCamera);
        add("camera is back", endless, "15 camera- 30 camera+ 10", "0 10 50 gap:3/40", "3 3", State::Running);
        add("pictures, not places", three, "5 camera- 20 camera+ 60", "0 30 gap:2/30 40", "3 2", State::Ended);
        add("over while the camera is away", every10s(End::Duration), "5 camera- 60", "0", "1 2", State::Ended);
        add("camera stalls", endless, "5 stall 37", "0 10", "1 3", State::WaitingForCamera);
        add("late picture, no burst", endless, "5 stall 37 taken saved work 10", "0 10 gap:3/42 50", "3 3",
            State::Running);
        add("a stalled camera does not hold up the end", every10s(End::Duration), "15 stall 60", "0 10 20", "2 1",
            State::Ended);
        add("but the last of a number is waited for", three, "15 stall 60", "0 10 20", "2 0", State::WaitingForCamera);
        add("request dropped", endless, "5 stall 5 dropped work 10", "0 10 20 gap:1/20", "2 1", State::Running);
        add("camera that hangs, and another", endless, "5 stall 6 other work 10", "0 10 20 gap:1/20", "2 1",
            State::Running);
        add("slow disk", endless, "slow 100", "0 10 20 30 40 50 60 70 80", "1 2", State::WaitingForDisk);
        add("and it goes on", endless, "slow 100 saved quick 11", "0 10 20 30 40 50 60 70 80 110 gap:2/30", "3 2",
            State::Running);
        add("the last ones are on their way", three, "slow 60", "0 10 20", "1 0", State::Running);
    }
    void takesWhatIsDue()
    {
        const auto [plan, script, log, counts, state] = Rows<BWSeriesPlan, QString, QString, QString, State>::current();
        Bench bench;
        connect(&bench.series, &BWSeries::gapEnded, &bench.series,
                [&](const BWSeries::Gap &gap) { bench.log << u"gap:%1/%2"_s.arg(gap.missed).arg(gap.length.count()); });
        bench.series.start(plan);
        bench.play(script);
        QCOMPARE(bench.log.join(u' '), log);
        QCOMPARE(bench.outcome(), u"%1 %2"_s.arg(counts).arg(static_cast<int>(state)));
        QCOMPARE(bench.series.isRunning(), state != State::Ended);
    }

    void pillSaysHowFarItIs()
    {
        BWLocalizationManager texts(QString(), {u"en"_s});
        Bench bench;
        bench.series.start(every10s(End::Number, 3, 25s, 5s));
        QCOMPARE(BWSeriesTexts::progress(bench.series, texts), u"Series: starts in 0:05"_s);
        bench.play(u"8"_s);
        QCOMPARE(BWSeriesTexts::progress(bench.series, texts), u"Series: 1 of 3, next in 0:07"_s);
    }

    /// How many of which were saved and missed when the program ended, and how long ago the first was due.
    void goesOnAfterAnEarlierRun_data()
    {
        const Rows<qint64, qint64, BWSeries::Time, QString, qint64> row;
        row("the gap counts", 3, 0, 65s, u"5 15"_s, 4);
        row("just now", 3, 1, 35s, u"5 15"_s, 1);
        row("before the first", 0, 0, -5s, u"5 15"_s, 0);
        row("somebody has set the clock back", 3, 0, -24h, u"10 20"_s, 0);
    }
    void goesOnAfterAnEarlierRun()
    {
        const auto [saved, missed, sinceFirst, log, missedThen] =
            Rows<qint64, qint64, BWSeries::Time, QString, qint64>::current();
        Bench bench;
        bench.series.resume(every10s(End::UntilStopped), saved, missed, sinceFirst);
        bench.play(u"20"_s);
        QCOMPARE(bench.log.join(u' '), log);
        QCOMPARE(bench.series.savedCount(), saved + 2);
        QCOMPARE(bench.series.missedCount(), missedThen);
    }

    void clocksAreMoved()
    {
        BWManualClock timers;
        BWSeries series({[&] { return &timers; }, [](unsigned) {}}, timers);
        series.start({1h, 0s, End::UntilStopped, 1, 1s});
        const auto missedAfter = [&](clockid_t clock, time_t seconds) {
            moved = {clock, seconds};
            timers.advance(2s); // it looks each second
            moved = {};
            return series.missedCount();
        };
        QCOMPARE(missedAfter(CLOCK_REALTIME, 86'400), 0); // set by the user
        QCOMPARE(missedAfter(CLOCK_REALTIME, -86'400), 0);
        QCOMPARE(missedAfter(CLOCK_BOOTTIME, 5400), 1); // the computer slept
    }

    void aDayHasNoDrift()
    {
        Bench bench;
        bench.series.start({1s, 0s, End::UntilStopped, 1, 1s});
        for (int i = 0; i < 100; ++i)
            bench.play(u"864 asleep:3"_s); // timers come late
        QCOMPARE(bench.series.savedCount(), 86'400 + 1);
        QCOMPARE(bench.series.missedCount(), 0);
        QVERIFY(*bench.series.untilNext() <= 1s);
    }

    void recordIsKept_data()
    {
        const Rows<QByteArray, bool> row;
        const auto with = [](const QByteArray &member, const QByteArray &value) {
            QByteArray json = R"({"plan":{"interval":10,"delay":0,"end":"number","number":1,"duration":1},)"
                              R"("album":"file:///a","first":"2024-06-07T10:00:00Z","saved":1,"missed":0})";
            const qsizetype begin = json.indexOf('"' + member + "\":") + member.size() + 3;
            return json.replace(begin, json.indexOf(',', begin) - begin, value);
        };
        row("whole", "", true);
        row("cut off", "{\"plan\":{\"interval\":10", false);
        row("empty", " ", false);
        row("no interval", with("interval", "0"), false);
        row("more pictures than time", with("saved", "9223372036854775807"), false);
        row("begun in antiquity", with("first", "\"0001-01-01T00:00:00Z\""), false);
    }
    void recordIsKept()
    {
        const auto [damage, isKept] = Rows<QByteArray, bool>::current();
        const TestFolder folder;
        const QString path = folder.path(u"settings/series.json"_s);
        const BWSeriesRecord record{
            every10s(End::Duration), folder.url(u"a\xff b"_s), QDateTime::currentDateTimeUtc(), 7, 2, {}};
        {
            BWSeriesFile file(path), second(path);
            QVERIFY(file.claim());
            QVERIFY(!second.claim()); // another program
            second.store({});
            for (qint64 saved = 0; saved <= 7; ++saved)
                file.store({record.plan, record.album, record.first, saved, record.missed, {}});
        }
        if (!damage.isEmpty())
            TestFolder::write(folder.url(u"settings/series.json"_s), damage);
        BWSeriesFile file(path);
        const std::optional<BWSeriesRecord> read = file.read();
        QCOMPARE(read.has_value(), isKept);
        if (read) {
            QCOMPARE(read->plan, record.plan);
            QCOMPARE(read->album, record.album);
            QCOMPARE(read->first, record.first);
            QCOMPARE(read->saved, 7);
            QVERIFY(!read->isOver(record.first.addSecs(24)));
            QVERIFY(read->isOver(record.first.addSecs(25)));
        }
        QVERIFY(file.claim());
        file.remove();
        QTRY_VERIFY(!QFile::exists(path));
    }

    void filesAreTold_data()
    {
        const Rows<QString, QString> row; // added, others of the album
        row("others between", u"d_image_001.jpg|d_image_003.jpg"_s, u"d_image_002.jpg|d_image_03.jpg|d.jpg"_s);
        row("another day", u"d_image_998.jpg|e_image_001.jpg"_s, u"d_image_999.jpg|e_image_002.jpg"_s);
        row("many", u"d_image_999.jpg|d_image_1000.jpg"_s, u"d_image_1001.jpg|d_video_1000.mov"_s);
        row("a number that was free again", u"d_image_007.jpg|d_image_002.jpg"_s, u"d_image_003.jpg"_s);
    }
    void filesAreTold()
    {
        const auto [added, others] = Rows<QString, QString>::current();
        BWSeriesFiles files;
        QList<QUrl> album;
        for (const QString &name : (added + u'|' + others).split(u'|')) {
            album << QUrl(u"file:///a/"_s + name);
            if (album.size() <= added.split(u'|').size())
                files.add(album.constLast());
        }
        QJsonArray json = files.toJson();
        json.append(QJsonArray{u"d_image_"_s, 900, -1}); // of a damaged file
        QCOMPARE(TestFolder::names(BWSeriesFiles::fromJson(json).among(album)), added);
    }
};

QTEST_GUILESS_MAIN(TestSeries)
#include "tst_BWSeries.moc"
