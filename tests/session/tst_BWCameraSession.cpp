// SPDX-License-Identifier: GPL-3.0-or-later
#include "SessionBench.h"

using Answer = BWCameraSession::StartAnswer;

class TestCameraSession : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bringsACameraUpInOrder()
    {
        Bench bench({cameraOf(Type::Wireless)});
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QString received;
        QTRY_VERIFY(
            (received += bench.notes[0]->take() + u' ').simplified().startsWith(u"norm 1 size 640x480 start 0=63"_s));
        QCOMPARE(bench.ui.calls, QStringList({u"starting"_s, u"statusChanged"_s, u"started"_s, u"productUnknown"_s}));
        QVERIFY(bench.session->currentCamera()->started());
        // The time for the state without a camera passes: nothing comes of it.
        bench.clock.advance(std::chrono::seconds(5));
        QCOMPARE(bench.session->state(), State::Streaming);
    }

    void asksForTheProductUntilItIsKnown()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless)});
        const auto switchTo = [&](int index) {
            bench.ui.calls.clear();
            bench.session->changeCurrentCamera(bench.manager.cameras().at(index));
            QCOMPARE(bench.session->state(), State::Switching);
            QTRY_COMPARE(bench.session->state(), State::Streaming);
        };
        QTRY_VERIFY(bench.ui.calls.contains(u"productUnknown"_s)); // and the user does not answer
        QTRY_COMPARE(bench.manager.cameras().size(), 2);
        QCOMPARE(bench.product.currentProduct()->identifier(), u"dx10"_s); // the type's default meanwhile
        switchTo(1);
        switchTo(0);
        QVERIFY(bench.ui.calls.contains(u"productUnknown"_s));
        bench.session->answerProduct(u"mx61"_s);
        QCOMPARE(bench.product.currentProduct()->identifier(), u"mx61"_s);
        switchTo(1);
        switchTo(0);
        QVERIFY(!bench.ui.calls.contains(u"productUnknown"_s));
    }

    void noCamera()
    {
        Bench bench({cameraOf(Type::High, false)});
        bench.clock.advance(std::chrono::milliseconds(1499));
        QCOMPARE(bench.session->state(), State::Waiting);
        bench.clock.advance(std::chrono::milliseconds(1));
        QCOMPARE(bench.session->state(), State::NoCamera);
        QCOMPARE(bench.ui.calls, QStringList({u"statusChanged"_s, u"noCamera"_s}));

        bench.hands[0]->plugIn();
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        bench.ui.calls.clear();
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.session->state(), State::Waiting);
        QVERIFY(!bench.session->currentCamera());
        QVERIFY(bench.ui.calls.contains(u"cameraGone"_s));
        bench.clock.advance(std::chrono::milliseconds(1500));
        QCOMPARE(bench.session->state(), State::NoCamera);
        QCOMPARE(bench.ui.calls.last(), u"noCamera any more"_s); // a camera has been there before
        bench.session->quitWithoutCamera(); // and cancelled
        QCOMPARE(bench.ui.calls.mid(bench.ui.calls.size() - 2),
                 QStringList({u"quitRequested"_s, u"noCamera any more"_s}));
        bench.hands[0]->plugIn();
        QTRY_COMPARE(bench.session->state(), State::Streaming);
    }

    void severalCameras()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless), cameraOf(Type::Ultra)});
        QTRY_COMPARE(bench.ui.cameras.size(), 3);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.ui.prepared, 3);
        QCOMPARE(bench.currentType(), u"wired_high"_s);
        bench.session->changeCurrentCamera(bench.session->currentCamera());
        QCOMPARE(bench.session->state(), State::Streaming); // the running one again: nothing
        for (const int index : {1, 0}) // there and back in a hurry
            bench.session->changeCurrentCamera(bench.manager.cameras().at(index));
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.currentType(), u"wired_high"_s);

        // A camera that is not current goes away: only the list changes.
        bench.hands[1]->unplug();
        QTRY_COMPARE(bench.ui.cameras.size(), 2);
        QCOMPARE(bench.session->state(), State::Streaming);
        // The current one goes away: the first of the others takes over at once.
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.currentType(), u"wired_ultra"_s);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.ui.cameras.size(), 1);
        // Those that come back take their old places.
        for (const int index : {1, 0}) {
            bench.hands[index]->plugIn();
            QTRY_COMPARE(bench.ui.cameras.size(), 3 - index);
        }
        QStringList types;
        for (const BWCameraPtr &camera : bench.ui.cameras)
            types << camera->identifierForProducts();
        QCOMPARE(types, QStringList({u"wired_high"_s, u"wireless"_s, u"wired_ultra"_s}));
        QCOMPARE(bench.currentType(), u"wired_ultra"_s);
    }

    void chosenCameraGoesAwayWhileSwitching()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless)});
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QTRY_COMPARE(bench.manager.cameras().size(), 2);
        bench.session->changeCurrentCamera(bench.manager.cameras().at(1));
        bench.hands[1]->unplug();
        bench.hands[0]->unplug();
        QTRY_VERIFY(!bench.session->currentCamera() && bench.session->state() == State::Waiting);
        bench.hands[0]->plugIn();
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.currentType(), u"wired_high"_s);
    }

    void cameraInUse()
    {
        Bench bench({cameraOf(Type::High)});
        const BWStartProblem held{BWStartProblem::Kind::InUse, u"guvcview"_s};
        bench.hands[0]->setStartProblem(held);
        QTRY_VERIFY(bench.ui.answer);
        QCOMPARE(bench.session->state(), State::Starting);
        QCOMPARE(bench.ui.question.problem, held);
        QCOMPARE(bench.session->problem(), held); // for the status line
        QVERIFY(!bench.ui.question.smaller && !bench.ui.question.other); // which would not help
        for (int i = 0; i < 3; ++i) {
            std::exchange(bench.ui.answer, {})(Answer::TryAgain);
            QTRY_VERIFY(bench.ui.answer);
        }
        bench.hands[0]->setStartProblem({});
        const auto answer = bench.ui.answer;
        answer(Answer::TryAgain);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        answer(Answer::TryAgain); // an old answer
        QCOMPARE(bench.session->state(), State::Streaming);
    }

    void busyCameraIsLeftForAnother()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless), cameraOf(Type::Ultra, false)});
        bench.hands[0]->setInUse(true);
        bench.hands[1]->setInUse(true);
        QTRY_VERIFY(bench.ui.answer && bench.ui.question.other); // there when the first one fails, or coming then
        QCOMPARE(bench.ui.question.other, bench.manager.cameras().at(1));
        bench.hands[1]->unplug();
        QTRY_VERIFY(!bench.ui.question.other);
        bench.hands[1]->plugIn();
        QTRY_VERIFY(bench.ui.question.other);
        bench.hands[2]->plugIn();
        QTRY_COMPARE(bench.manager.cameras().size(), 3);
        for (const QString &type : {u"wireless"_s, u"wired_ultra"_s}) { // the second is busy, too
            QTRY_VERIFY(bench.ui.answer);
            std::exchange(bench.ui.answer, {})(Answer::UseOther);
            QTRY_COMPARE(bench.currentType(), type);
        }
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        bench.session->changeCurrentCamera(bench.manager.cameras().at(0));
        QTRY_VERIFY(bench.ui.answer);
        bench.session->changeCurrentCamera(bench.manager.cameras().at(2)); // in the settings, which it does not block
        QVERIFY(!bench.ui.answer);
        QTRY_COMPARE(bench.session->state(), State::Streaming);
    }

    void cameraHangsWhileStarting()
    {
        Bench bench({cameraOf(Type::High), cameraOf(Type::Wireless)});
        bench.notes[0]->holdUp(u"start"_s);
        QTRY_VERIFY(bench.notes[0]->isBusy());
        QTRY_COMPARE(bench.manager.cameras().size(), 2);
        QVERIFY(!bench.ui.answer);
        bench.clock.advance(std::chrono::seconds(10));
        QVERIFY(bench.ui.answer);
        QCOMPARE(bench.session->problem().kind, BWStartProblem::Kind::Failed);
        bench.notes[0]->letGo(); // it was only very slow
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QVERIFY(!bench.ui.answer && bench.session->problem().isNone());

        const BWCameraPtr camera = bench.session->currentCamera();
        std::atomic<bool> endIsReported = false;
        camera->setOnCameraRecording(
            [&](BWCamera &, bool recording, const BWRecordingStatus &) { endIsReported = !recording; });
        camera->startRecording(bench.folder.filePath(u"a.mov"_s));
        QTRY_VERIFY((bench.hands[0]->pushFrames(1), camera->recordingStatus().frames > 0));
        bench.notes[0]->holdUp(u"frame"_s); // and now it hangs in the middle of a recording
        QTRY_VERIFY((bench.hands[0]->pushFrames(1), bench.notes[0]->isBusy()));
        bench.session->changeCurrentCamera(bench.manager.cameras().at(1));
        bench.clock.advance(std::chrono::seconds(5));
        QTRY_VERIFY(endIsReported && !camera->recording());
        bench.clock.advance(std::chrono::milliseconds(4999));
        QCOMPARE(bench.session->state(), State::Switching);
        bench.clock.advance(std::chrono::milliseconds(1));
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.currentType(), u"wireless"_s);
        bench.notes[0]->letGo(); // its late end has no effect
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.manager.cameras().size(), 1);
        QCOMPARE(bench.session->state(), State::Streaming);
    }

    void quitAndCancelLeavesTheQuestionStanding()
    {
        Bench bench({cameraOf(Type::High)});
        bench.hands[0]->setInUse(true);
        QTRY_VERIFY(bench.ui.answer);
        std::exchange(bench.ui.answer, {})(Answer::Quit);
        QCOMPARE(bench.ui.calls.last(), u"quitRequested"_s);
        QVERIFY(bench.ui.answer); // asked again
        bench.ui.quit = [&] { bench.session->stopForQuit([] {}); };
        std::exchange(bench.ui.answer, {})(Answer::Quit);
        QVERIFY(!bench.ui.answer);
        QCOMPARE(bench.session->state(), State::Quitting);
    }

    void tooLittleBandwidth()
    {
        Bench bench({cameraOf(Type::High)});
        bench.hands[0]->setStartProblem({BWStartProblem::Kind::NoBandwidth});
        QTRY_COMPARE(bench.session->state(), State::Streaming); // the smallest size
        bench.product.currentProduct()->setCurrentResolution({1600, 1200});
        bench.hands[0]->unplug();
        QTRY_VERIFY(!bench.session->currentCamera());
        bench.hands[0]->plugIn();
        for (const BWResolution offered : {BWResolution(1280, 1024), BWResolution(640, 480)}) {
            QTRY_VERIFY(bench.ui.answer);
            QCOMPARE(bench.ui.question.smaller, std::optional(offered));
            std::exchange(bench.ui.answer, {})(Answer::UseSmaller);
        }
        QTRY_COMPARE(bench.session->state(), State::Streaming);
        QCOMPARE(bench.product.currentProduct()->currentResolution(), BWResolution(640, 480));
        QVERIFY(bench.session->problem().isNone());

        bench.ui.calls.clear();
        bench.product.changeResolution({1280, 1024});
        QTRY_COMPARE(bench.session->problem().kind, BWStartProblem::Kind::NoBandwidth);
        QCOMPARE(bench.ui.calls.count(u"statusChanged"_s), 1);
        QCOMPARE(bench.session->state(), State::Streaming);
        bench.product.changeResolution({640, 480});
        QTRY_VERIFY(bench.session->problem().isNone());
        QCOMPARE(bench.ui.calls.count(u"statusChanged"_s), 2);
    }

    void goneCameraIsTriedAgain()
    {
        Bench bench({cameraOf(Type::High, false)});
        const auto starts = [&bench] { return bench.ui.calls.count(u"starting"_s); };
        bench.hands[0]->setStartProblem({BWStartProblem::Kind::Gone});
        bench.hands[0]->plugIn();
        QTRY_COMPARE((bench.clock.advance(std::chrono::seconds(1)), starts()), 2);
        QVERIFY(!bench.ui.answer); // no question
        bench.hands[0]->unplug();
        QTRY_COMPARE(bench.session->state(), State::Waiting);
        bench.hands[0]->plugIn();
        // It stays attached this time, so in the end the user is asked.
        QTRY_VERIFY((bench.clock.advance(std::chrono::seconds(1)), bench.ui.answer));
        QCOMPARE(starts(), 6);
    }
};

QTEST_GUILESS_MAIN(TestCameraSession)
#include "tst_BWCameraSession.moc"
