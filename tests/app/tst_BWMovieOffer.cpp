// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWMovieOffer.h"
#include "BWManualClock.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWOfferStrip.h"
#include "Views/MainWindow/BWStatusLine.h"

#include <QDialog>
#include <QTest>

using namespace Qt::StringLiterals;
using Reason = BWSeries::Reason;

class TestBWMovieOffer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isMadeForSeveralPictures_data()
    {
        const Rows<qint64, Reason, bool> row;
        row("self-timer", 1, Reason::Done, false);
        row("stopped", 2, Reason::Stopped, true);
        row("disk full", 3, Reason::DiskFull, true);
        row("album gone", 3, Reason::AlbumGone, false);
    }
    void isMadeForSeveralPictures()
    {
        const auto [saved, reason, isMade] = Rows<qint64, Reason, bool>::current();
        BWLocalizationManager texts(QString(), {u"en"_s});
        BWLiveRenderer renderer;
        BWMainWindow window(renderer);
        window.localizeWithManager(texts);
        BWManualClock clock;
        BWStatusLine statusLine(window.currentCameraLabel(), clock);
        BWMovieOffer offer({window, statusLine, texts, [] { return BWSeriesFiles(); }, {}});
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        const auto album = std::make_shared<BWAlbum>(QUrl(u"file:///nowhere"_s));
        const BWSeriesResult result{{}, reason, saved, 0, album, {}};
        BWCenteringClipView &view = window.centeringClipView();
        const BWOfferStrip &strip = window.offerStrip();
        QDialog question(&window);
        question.open();
        offer.seriesEnded(result);
        QVERIFY(!strip.isVisible()); // before the question is answered
        question.close();
        QCOMPARE(strip.isVisible(), isMade);
        if (!isMade)
            return;
        QTest::keyClick(&view, Qt::Key_Tab);
        QTest::keyClick(window.focusWidget(), Qt::Key_Space);
        QVERIFY(!strip.isVisible() && window.focusWidget() == &view);
        QTRY_COMPARE(window.currentCameraLabel().text(),
                     u"The pictures of the series are not in the album any more."_s);
        offer.seriesEnded(result);
        QTest::keyClick(&view, Qt::Key_Escape);
        QVERIFY(!strip.isVisible());
        offer.seriesEnded(result);
        offer.seriesBegan();
        QVERIFY(!strip.isVisible());
    }
};

QTEST_MAIN(TestBWMovieOffer)
#include "tst_BWMovieOffer.moc"
