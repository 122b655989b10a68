// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "Views/Utils/BWFlashActionViewController.h"

#include <memory>
#include <QCoreApplication>
#include <QPaintEvent>
#include <QProxyStyle>
#include <QTest>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using Action = BWFlashActionViewController::Action;

namespace {

/// Like a desktop with animations switched off.
class StyleWithoutAnimations : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

/// The live image below.
class Picture : public QWidget {
public:
    using QWidget::QWidget;
    QRegion painted;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *event) override { painted += event->region(), ++paints; }
};

} // namespace

class TestBWFlash : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_picture = new Picture(m_window.get());
        m_window->resize(800, 500);
        m_picture->resize(m_window->size());
        m_flash = std::make_unique<BWFlashActionViewController>(*m_window, inset, m_texts, m_clock);
        m_window->show();
    }
    void cleanup() { m_flash.reset(); }

    void opacity_data()
    {
        // between: milliseconds from one action to the next; time: milliseconds after the last one
        const Rows<QList<Action>, int, int, double> row;
        const QList<Action> saved{Action::SnapshotSaved};
        const QList<Action> recording{Action::RecordingStarted};
        row("once: begins unseen", saved, 0, 0, 0.0);
        row("once: peak", saved, 0, 500, 1.0);
        row("once: falls", saved, 0, 900, 0.2);
        row("once: over", saved, 0, 1000, 0.0);
        row("repeated: a minute later", recording, 0, 60'400, 0.8);
        row("a second snapshot starts over", saved + saved, 300, 100, 0.2);
        row("a recording takes over", saved + recording, 300, 1500, 1.0);
        row("a snapshot takes over", recording + saved, 300, 1500, 0.0);
        row("stopped at the peak", recording + QList{Action::RecordingStopped}, 500, 0, 0.0);
        row("and again", recording + QList{Action::RecordingStopped} + saved, 300, 500, 1.0);
    }
    void opacity()
    {
        const auto [actions, between, time, opacity] = Rows<QList<Action>, int, int, double>::current();
        for (qsizetype i = 0; i < actions.size(); ++i) {
            m_clock.advance(std::chrono::milliseconds(i ? between : 0));
            act(actions[i]);
        }
        m_clock.advance(std::chrono::milliseconds(time));
        QVERIFY2(qAbs(m_flash->opacity() - opacity) < 1e-9, qPrintable(QString::number(m_flash->opacity())));
        const bool over =
            actions.last() == Action::RecordingStopped || (actions.last() == Action::SnapshotSaved && time >= 1000);
        QCOMPARE(m_flash->isHidden(), over);
    }

    void withoutAnimations()
    {
        StyleWithoutAnimations style;
        m_flash->setStyle(&style);
        act(Action::SnapshotSaved);
        QCOMPARE(m_flash->opacity(), 1.0);
        m_clock.advance(999ms);
        QCOMPARE(m_flash->opacity(), 1.0);
        m_clock.advance(1ms);
        QVERIFY(m_flash->isHidden());
    }

    void onlyTheCaptionBlinks()
    {
        act(Action::RecordingStarted);
        m_flash->setDetails(u"1:05 · 34 MB"_s);
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QCoreApplication::processEvents();
        m_picture->painted = {};
        m_clock.advance(500ms);
        QTRY_VERIFY(!m_picture->painted.isEmpty());
        const QRect blinking = m_picture->painted.boundingRect();
        m_flash->setDetails(u"1:06 · 35 MB"_s);
        QTRY_VERIFY(m_picture->painted.boundingRect() != blinking);
        const QRect pill = m_picture->painted.boundingRect();
        QVERIFY2(pill.top() > inset && pill.bottom() < m_picture->height() / 2, "hides more than it must");
        QVERIFY2(pill.contains(blinking) && blinking.right() < pill.right() - 60, "the details blink, too");
        QCOMPARE(m_flash->pos(), QPoint(0, 0));
        QCOMPARE(m_window->childAt(pill.center()), m_picture); // clicks go through
    }

    void fadesWithTheFramesOfALiveImage()
    {
        act(Action::RecordingStarted);
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        for (const bool live : {true, false}) {
            m_picture->paints = 0;
            for (int i = 0; i < 30; ++i) {
                m_clock.advance(34ms);
                QCoreApplication::processEvents();
                if (live)
                    m_picture->repaint();
            }
            QVERIFY2(live ? m_picture->paints <= 32 : m_picture->paints >= 25, live ? "in between" : "too seldom");
        }
    }

private:
    static constexpr int inset = 84;

    void act(Action action)
    {
        std::thread([this, action] { m_flash->setAction(action); }).join();
        QCoreApplication::processEvents();
    }

    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWManualClock m_clock;
    std::unique_ptr<QWidget> m_window;
    Picture *m_picture = nullptr;
    std::unique_ptr<BWFlashActionViewController> m_flash;
};

QTEST_MAIN(TestBWFlash)
#include "tst_BWFlash.moc"
