// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWMovie.h"
#include "Model/Session/BWQuitting.h"
#include "Rows.h"
#include "SessionBench.h"

using namespace std::chrono_literals;
using Quit = BWQuitting::State;

class TestQuitting : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void asksAndWaits_data()
    {
        const Rows<QString, QString, Quit> rows;
        const auto row = [&rows](const char *name, const char *script, const char *steps, Quit state) {
            rows(name, QString::fromLatin1(script), QString::fromLatin1(steps), state);
        };
        row("in order, and once more", "quit stopped added quit signal", "stop finish end", Quit::Ended);
        row("saving, called off, and once more", "saving cancel quit ok quit", "ask ask stop", Quit::StoppingCamera);
        row("saving, session ends", "saving signal", "stop", Quit::StoppingCamera);
        row("session ends during the question", "saving cancel during:signal quit stopped added", "ask stop finish end",
            Quit::Ended);
        row("quit during the question", "saving cancel during:quit quit", "ask", Quit::Running);
        row("in a hurry, camera", "quit quit signal", "stop", Quit::StoppingCamera);
        row("camera hangs", "quit 4s 1s stopped added", "stop finish end", Quit::Ended);
        row("camera stops late", "quit 5s stopped", "stop finish", Quit::FinishingCaptures);
        row("movie takes its time", "movie quit 60s stopped", "stop finish", Quit::FinishingCaptures);
        row("movie is done, camera hangs", "movie quit 60s done 1s", "stop finish", Quit::FinishingCaptures);
        row("movie never ends", "movie quit 119s 1s", "stop finish", Quit::FinishingCaptures);
        row("in a hurry, movie", "movie quit ok quit", "stop offer leave end", Quit::Ended);
        row("in a hurry, captures", "quit stopped cancel quit ok quit", "stop finish offer offer leave end",
            Quit::Ended);
        row("in a hurry, twice at once", "quit stopped during:quit cancel quit", "stop finish offer",
            Quit::FinishingCaptures);
        row("captures arrive during the offer", "quit stopped during:added ok quit", "stop finish offer end",
            Quit::Ended);
        row("the album's disk hangs", "quit stopped 599s 1s", "stop finish leave end", Quit::Ended);
    }

    void asksAndWaits()
    {
        const auto [script, steps, state] = Rows<QString, QString, Quit>::current();
        QStringList taken;
        bool saving = false;
        bool movie = false;
        bool answer = false;
        QString during;
        std::function<void()> stopped;
        std::function<void()> added;
        std::function<void(const QString &)> play;
        const auto question = [&](const QString &step) {
            taken << step;
            if (!during.isNull())
                play(std::exchange(during, {}));
            return answer;
        };
        BWManualClock clock;
        BWQuitting quitting({.isSaving = [&] { return saving; },
                             .mayStopSaving = [&] { return question(u"ask"_s); },
                             .stopCamera =
                                 [&](std::function<void()> done) {
                                     taken << u"stop"_s;
                                     stopped = std::move(done);
                                 },
                             .completesMovie = [&] { return movie; },
                             .finishCaptures =
                                 [&](std::function<void()> done) {
                                     taken << u"finish"_s;
                                     added = std::move(done);
                                 },
                             .mayLeaveCaptures = [&] { return question(u"offer"_s); },
                             .leaveCaptures = [&] { taken << u"leave"_s; },
                             .end = [&] { taken << u"end"_s; }},
                            clock);
        play = [&](const QString &word) {
            if (word == u"quit"_s)
                quitting.quit();
            else if (word == u"signal"_s)
                quitting.quitWithoutQuestion();
            else if (word == u"stopped"_s)
                stopped();
            else if (word == u"added"_s)
                added();
            else if (word == u"saving"_s)
                saving = true;
            else if (word == u"movie"_s || word == u"done"_s)
                movie = word == u"movie"_s;
            else if (word == u"ok"_s || word == u"cancel"_s)
                answer = word == u"ok"_s;
            else if (word.startsWith(u"during:"_s))
                during = word.section(u':', 1);
            else
                clock.advance(std::chrono::seconds(word.chopped(1).toInt()));
        };
        for (const QString &word : script.split(u' '))
            play(word);
        QCOMPARE(taken.join(u' '), steps);
        QCOMPARE(quitting.state(), state);
    }

    void endsInEveryStateOfTheSession_data()
    {
        const Rows<State, QString> row;
        row("waiting", State::Waiting, QString());
        row("no camera", State::NoCamera, QString());
        row("starting, and asking", State::Starting, QString());
        row("starting, which hangs", State::Starting, u"start"_s);
        row("streaming", State::Streaming, QString());
        row("streaming, which hangs", State::Streaming, u"frame"_s);
        row("streaming, the stop hangs", State::Streaming, u"stop"_s);
        row("switching", State::Switching, QString());
        row("switching, the stop hangs", State::Switching, u"stop"_s);
        row("stopping", State::Stopping, QString());
        row("stopping, which hangs", State::Stopping, u"stop"_s);
    }

    void endsInEveryStateOfTheSession()
    {
        const auto [state, hangs] = Rows<State, QString>::current();
        const bool attached = state != State::Waiting && state != State::NoCamera;
        const bool inUse = state == State::Starting && hangs.isNull();
        Bench bench({cameraOf(Type::High, attached), cameraOf(Type::Wireless, attached)});
        const auto hold = [&](const QString &call) {
            if (hangs == call)
                bench.notes[0]->holdUp(call);
        };
        bench.hands[0]->setInUse(inUse);
        hold(u"start"_s);
        if (attached)
            QTRY_VERIFY(bench.ui.cameras.size() == 2);
        if (inUse)
            QTRY_VERIFY(bench.ui.answer);
        else if (attached && hangs != u"start"_s)
            QTRY_COMPARE(bench.session->state(), State::Streaming);

        const QString movie = bench.folder.filePath(u"a.mov"_s);
        const bool records = state == State::Streaming;
        if (records) {
            bench.session->currentCamera()->startRecording(movie);
            QTRY_VERIFY((bench.hands[0]->pushFrames(1), bench.session->currentCamera()->recordingStatus().frames > 0));
        }
        hold(u"frame"_s);
        hold(u"stop"_s);
        if (state == State::NoCamera)
            bench.clock.advance(2s);
        else if (state == State::Switching)
            bench.session->changeCurrentCamera(bench.manager.cameras().at(1));
        else if (state == State::Stopping)
            bench.session->cameraRemoved(bench.session->currentCamera()->detectedCamera());
        QCOMPARE(bench.session->state(), state);
        if (!hangs.isNull() && hangs != u"stop"_s)
            QTRY_VERIFY(bench.notes[0]->isBusy());

        const BWCameraPtr camera = bench.session->currentCamera();
        bool ended = false;
        BWQuitting quitting({.isSaving = [] { return false; },
                             .mayStopSaving = [] { return false; },
                             .stopCamera = [&](auto done) { bench.session->stopForQuit(std::move(done)); },
                             .completesMovie = [&] { return camera && camera->recording(); },
                             .finishCaptures = [](const auto &done) { done(); },
                             .mayLeaveCaptures = [] { return false; },
                             .leaveCaptures = [] {},
                             .end = [&] { ended = true; }},
                            bench.clock);
        quitting.quit();
        if (hangs.isNull()) {
            QTRY_VERIFY(ended);
            QVERIFY(!camera || !camera->started());
        } else {
            bench.clock.advance(4999ms);
            QTest::qWait(1); // handles what was posted
            QVERIFY(!ended);
            QTRY_VERIFY(!camera->recording()); // its movie does not wait for the device
            bench.clock.advance(1ms);
            QVERIFY(ended);
        }
        if (records)
            QCOMPARE(completeMovie(movie), BWMovieCompletion::Plain);
        for (const auto &hand : bench.hands) {
            hand->unplug();
            hand->plugIn();
        }
        QTest::qWait(1);
        QCOMPARE(bench.session->state(), State::Quitting);
    }
};

QTEST_GUILESS_MAIN(TestQuitting)
#include "tst_BWQuitting.moc"
