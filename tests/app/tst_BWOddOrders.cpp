// SPDX-License-Identifier: GPL-3.0-or-later
#include "ActiveWindow.h"
#include "AppDelegate.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Rows.h"
#include "TestFolder.h"
#include "Utils/BWUIUtils.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWComparisonStrip.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWFrozenMark.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringLayer.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWPictureCaption.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "WidgetSearch.h"

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {
constexpr int patience = 20000; // milliseconds; the computer may be busy
}

/// The real program with a simulated camera and two albums, used in orders that nobody plans. Each row is a run of it, which
/// ends in whatever state has come out.
class TestBWOddOrders : public QObject, private BWAlertPresenter {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TMPDIR", m_home.path().toUtf8());
        BWRepository::setOptions({m_home.path(u"settings.conf"_s), m_home.path(), {u"en"_s}, QString()});
        BWRepository::singleton().configManager().setCurrentProductIdentifier(u"mx50_40"_s, u"wired_high"_s);
        BWUIUtils::setAlertPresenter(this);
    }
    void cleanupTestCase() { BWUIUtils::setAlertPresenter(nullptr); }

    void orders_data()
    {
        // Keys and events, and behind = what shows then: the main picture, and whether there is a (c)omparison,
        // a (r)ecording, (n)o camera, an (e)mpty view, a (f)ull screen; behind : what was measured, once results are shown.
        const Rows<QString> row;
        row("size, frozen", u"Ctrl+F=frozen size=frozen Ctrl+F=live"_s);
        row("size, compared", u"Ctrl+B=live-c size=live-c Ctrl+B=live"_s);
        row("size, looking back", u"F7=album size=album Esc=live"_s);
        row("recording, frozen", u"Ctrl+F=frozen Ctrl+Shift+S=frozen-r Ctrl+Shift+S=frozen Ctrl+F=live"_s);
        row("recording, compared", u"Ctrl+Shift+S=live-r Ctrl+B=live-cr Ctrl+Shift+S=live-c"_s);
        row("recording goes on", u"Ctrl+F=frozen Ctrl+Shift+S=frozen-r Ctrl+B=frozen-cr F7=album-r"_s);
        row("recording, looking back", u"F7=album Ctrl+Shift+S=live-r F7=album-r Ctrl+Shift+S=live"_s);
        row("camera, frozen", u"Ctrl+F=frozen unplug=frozen-n plug=frozen Ctrl+F=live"_s);
        row("camera, unfrozen without", u"Ctrl+F=frozen unplug=frozen-n Ctrl+F=live-ne plug=live"_s);
        row("camera, compared", u"Ctrl+B=live-c unplug=live-cne plug=live-c"_s);
        row("camera, both", u"Ctrl+F=frozen Ctrl+B=frozen-c unplug=frozen-cn plug=frozen-c Ctrl+F=live-c"_s);
        row("camera, looking back", u"F7=album unplug=album-n Esc=live-ne plug=live"_s);
        row("camera, recording", u"Ctrl+Shift+S=live-r Ctrl+F=frozen-r unplug=frozen-n plug=frozen Ctrl+F=live"_s);
        row("camera stays away", u"Ctrl+B=live-c Ctrl+F=frozen-c unplug=frozen-cn"_s);
        row("camera delivers nothing", u"once=live Ctrl+F=frozen Ctrl+F=live-e once=live"_s);
        row("other album, looking back", u"F7=album switch=live F7=album"_s);
        row("other album, compared", u"Ctrl+B=live-c switch=live-c Right=live-c F7=album"_s);
        row("album gone, looking back", u"switch=live F7=album drop=live"_s);
        row("album gone, compared", u"switch=live Ctrl+B=live-c drop=live-c Left=live-c"_s);
        row("reference in the Trash", u"Ctrl+B=live-c trash=live-c Right=live-c Esc=live"_s);
        row("one after the other", u"F7=album Ctrl+F=frozen Ctrl+B=frozen-c F7=album Ctrl+F=frozen"_s);
        row("full screen", u"F11=live-f Ctrl+B=live-cf Ctrl+F=frozen-cf Esc=frozen-f Esc=frozen"_s);
        row("twice: freeze", u"Ctrl+F Ctrl+F=live Ctrl+F Ctrl+F Ctrl+F=frozen"_s);
        row("twice: compare, link", u"Ctrl+B Ctrl+B=live Ctrl+B=live-c Ctrl+K Ctrl+K=live-c"_s);
        row("twice: last capture", u"F7 F7=album Esc Esc=live"_s);
        row("twice: step", u"F7=album Right Right Left=album F7=album"_s);
        row("twice: Trash", u"F7=album Del Del=album Ctrl+Z Ctrl+Z=album"_s);
        row("twice: record", u"Ctrl+Shift+S Ctrl+Shift+S=live Ctrl+S Ctrl+S=live"_s);
        row("twice: full screen", u"F11 F11=live F11=live-f F7=album-f Esc=live-f Esc=live"_s);
        row("measuring: each its own",
            u"results dx10=live640 line=live640:0.141mm mx61=live640:10.0px Ctrl+F=frozen640:10.0px F7=album3 "
            "line=album3:10.0px line=album3:10.0px,10.0px Right=album2 line=album2:10.0px Left=album3:10.0px,10.0px "
            "Ctrl+Z=album3:10.0px Right=album2:10.0px Ctrl+Z=album2 Left=album3:10.0px Ctrl+Y=album3:10.0px,10.0px "
            "dx10=album3:10.0px,10.0px Esc=live640:0.141mm Ctrl+Z=live640 Ctrl+F=frozen640 Ctrl+Y=frozen640:0.141mm"_s);
        row("measuring: size",
            u"results dx10=live640 line=live640:0.141mm size=live1280 line=live1280:0.070mm F7=album3 small=album3 "
            "Esc=live640:0.141mm Ctrl+Z=live640 size=live1280:0.070mm small=live640"_s);
        row("measuring: camera", u"results dx10=live640 line=live640:0.141mm unplug=live-ne plug=live640:0.141mm"_s);
        row("measuring: looking back without",
            u"results F7=album3 line=album3:10.0px unplug=album-n3:10.0px Esc=live-ne Ctrl+Z plug dx10=live640 "
            "F7=album3:10.0px"_s);
        row("measuring: closed",
            u"results dx10=live640 line=live640:0.141mm Ctrl+M Ctrl+Z=live640 Ctrl+Y F7=album3 line=album3:10.0px "
            "Ctrl+M Right=album2 Ctrl+M Left=album3:10.0px Esc=live640:0.141mm"_s);
    }
    void orders()
    {
        const auto [steps] = Rows<QString>::current();
        using Pacing = BWSimulatedCameraOptions::Pacing;
        begin(steps.startsWith("once"_L1) ? Pacing::Manual : Pacing::RealTime);
        for (const QString &step : steps.split(u' ')) {
            take(step.section(u'=', 0, 0));
            const QString expected = step.section(u'=', 1);
            if (!expected.isEmpty() && !QTest::qWaitFor([&] { return state() == expected; }, patience))
                QCOMPARE(step.section(u'=', 0, 0) + u'=' + state(), step);
        }
        const QString &said = m_window->currentCameraLabel().text();
        QTRY_VERIFY2_WITH_TIMEOUT(said.startsWith(expectedStatus()), qPrintable(said), patience); // after other news
        m_delegate->applicationShouldTerminate();
        QTRY_VERIFY_WITH_TIMEOUT(m_hasQuit, patience);
        m_delegate.reset();
    }

private:
    QString inHome(const QString &album, int number) const
    {
        return m_home.path(u"BrimwellPro/%1/20990101_image_00%2.jpg"_s.arg(album).arg(number));
    }

    void begin(BWSimulatedCameraOptions::Pacing pacing)
    {
        for (int i = 1; i <= 6; ++i) {
            const QString album = i <= 3 ? u"Default Album"_s : u"Other"_s;
            m_home.folder(u"BrimwellPro/"_s + album);
            QImage image(320, 240, QImage::Format_RGB32);
            image.fill(QColor(40 * i, 90, 120));
            QVERIFY(image.save(inHome(album, i)));
        }
        auto backend = BWSimulatedBackend::create({{.type = BWSimulatedCameraOptions::Type::High, .pacing = pacing}});
        m_camera = backend->cameras().first();
        AppDelegate::Options options;
        options.backends.push_back(std::move(backend));
        options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
        options.openUrl = [](const QUrl &) { return false; };
        m_delegate.reset(); // after a row that has failed
        m_hasQuit = false;
        options.quit = [this] { m_hasQuit = true; };
        m_delegate = std::make_unique<AppDelegate>(std::move(options));
        m_delegate->applicationDidFinishLaunching();
        BWAlbumManager &albums = BWRepository::singleton().albumManager();
        albums.waitUntilPrepared();
        albums.addAlbumFromPath(m_home.url(u"BrimwellPro/Other"_s)); // unless it is listed
        albums.setSelectedIndex(0);
        const QString first = pacing == BWSimulatedCameraOptions::Pacing::Manual ? u"live-e"_s : u"live"_s;
        QTRY_VERIFY_WITH_TIMEOUT((m_window = m_delegate->cameraWindow()) && state() == first, patience);
        QTRY_VERIFY_WITH_TIMEOUT(m_window->menu().lastCapture->isEnabled(), patience);
        activateAtOnce(m_window);
    }

    void take(const QString &step)
    {
        BWAlbumManager &albums = BWRepository::singleton().albumManager();
        if (step == "unplug"_L1)
            m_camera->unplug();
        else if (step == "plug"_L1)
            m_camera->plugIn();
        else if (step == "once"_L1)
            m_camera->pushFrames(1);
        else if (step == "drop"_L1)
            albums.removeCurrentAlbum();
        else if (step == "trash"_L1)
            albums.removeFile(QUrl::fromLocalFile(inHome(u"Default Album"_s, 3)), BWMediaType::Image);
        else if (step == "size"_L1 || step == "small"_L1)
            Q_EMIT m_window->controlBar().resolutionPicked(step == "size"_L1 ? u"1280x1024"_s : u"640x480"_s);
        else if (step == "results"_L1)
            m_window->menu().measuring->results->trigger();
        else if (step == "line"_L1)
            measureLine();
        else if (BWConfigManager &config = BWRepository::singleton().configManager(); config.productByIdentifier(step))
            config.setCurrentProductIdentifier(step, u"wired_high"_s);
        else if (step != "switch"_L1)
            QTest::keySequence(&m_window->centeringClipView(), QKeySequence::fromString(step));
        if (step == "switch"_L1) {
            albums.setSelectedIndex(1);
            QTRY_VERIFY(buttonNamed(m_window->controlBar(), u"Last capture: 20990101_image_006.jpg"_s));
        }
    }

    /// Of ten pixels.
    void measureLine() const
    {
        m_window->menu().measuring->tools()[1]->trigger();
        auto *layer = m_window->findChild<BWMeasuringLayer *>();
        for (const auto &[key, modifiers] : {std::pair(Qt::Key_Space, Qt::NoModifier),
                                             {Qt::Key_Down, Qt::ShiftModifier},
                                             {Qt::Key_Space, Qt::NoModifier}})
            QTest::keyClick(layer, key, modifiers);
    }

    /// Once there is a window of results: which picture shows, and the lengths in that window.
    QString measured() const
    {
        const auto *panel = m_window->findChild<BWMeasurementResultsPanel *>();
        if (!panel)
            return {};
        const auto *caption = m_window->findChild<BWPictureCaption *>();
        const int width = m_window->centeringClipView().mainFrame().size().width(); // a new size has no picture yet
        const bool isAlbum = caption && !caption->isHidden();
        if (!isAlbum && width <= 0)
            return {};
        const auto *rows = panel->findChild<QTreeWidget *>();
        QStringList all;
        for (int i = 0; !rows->isHidden() && i < rows->topLevelItemCount(); ++i) {
            if (!rows->topLevelItem(i)->text(0).contains(u':')) // a mean
                all << rows->topLevelItem(i)->text(2).remove(QChar::Nbsp);
        }
        return (isAlbum ? caption->text().section(u'.', 0, 0).right(1) : QString::number(width))
            + (all.isEmpty() ? QString() : u':' + all.join(u','));
    }

    QString state() const
    {
        const auto shows = [](const QWidget *widget) { return widget && !widget->isHidden(); };
        const BWCameraPtr camera = m_delegate->currentCamera();
        const QString main = shows(m_window->findChild<BWPictureCaption *>()) ? u"album"_s
            : shows(m_window->findChild<BWFrozenMark *>())                    ? u"frozen"_s
                                                                              : u"live"_s;
        QString more;
        for (const auto &[letter, is] :
             {std::pair(u'c', shows(&m_window->comparisonStrip())), std::pair(u'r', camera && camera->recording()),
              std::pair(u'n', !camera), std::pair(u'e', !m_window->centeringClipView().pictureToViewport()),
              std::pair(u'f', m_window->isFullScreen())})
            more += is ? QString(QChar(letter)) : QString();
        return (more.isEmpty() ? main : main + u'-' + more) + measured();
    }

    QString expectedStatus() const
    {
        static const QRegularExpression measuring(u"[0-9]+(:.*)?$"_s);
        const QString shown = state().remove(measuring);
        const QString main = shown.section(u'-', 0, 0);
        const QString more = shown.section(u'-', 1);
        return more.contains(u'n') ? u"No camera detected"_s
            : main == "album"_L1   ? u"Picture from the album."_s
            : more.contains(u'c')  ? u"Comparison with a picture"_s
            : main == "frozen"_L1  ? u"Frozen: snapshots save this picture. Ctrl+F"_s
                                   : u"Live streaming with: Digital "_s;
    }

    void presentOK(const QString &, const QString &) override { }
    bool presentOKCancel(const QString &, const QString &) override { return true; }
    bool presentChoice(const QString &, const QString &, const QString &, const QString &) override { return true; }

    const TestFolder m_home;
    std::shared_ptr<BWSimulatedCamera> m_camera;
    std::unique_ptr<AppDelegate> m_delegate;
    BWMainWindow *m_window = nullptr;
    bool m_hasQuit = false;
};

QTEST_MAIN(TestBWOddOrders)
#include "tst_BWOddOrders.moc"
