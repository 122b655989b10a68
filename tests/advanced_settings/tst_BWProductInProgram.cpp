#include "AppDelegate.h"
#include "BWManualClock.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "TestFolder.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/Settings/BWAdvancedSettingsWindowController.h"

#include <QAction>
#include <QComboBox>
#include <QTest>

using namespace Qt::StringLiterals;

/// What the whole program makes of the product that its camera is taken for.
class TestBWProductInProgram : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TMPDIR", m_home.path().toUtf8());
        const QString settings = m_home.path(u"settings.conf"_s);
        BWSettingsFile(settings).setString(u"bwp2x_product_for_camera"_s, u"{\"wired_high\":\"mx1\"}"_s);
        BWRepository::setOptions({settings, m_home.path(), {u"en"_s}, QString()});
        const BWRepository &repository = BWRepository::singleton();
        QVERIFY2(!repository.albumManager().isPrepared(), "no disk is waited for");
        QCOMPARE(repository.localizationManager().preferredLanguage(), u"en"_s);
        QVERIFY(!repository.localizationManager().strings().isEmpty()); // of the products
        auto backend = BWSimulatedBackend::create({{.pacing = BWSimulatedCameraOptions::Pacing::Manual}}, m_clock);
        AppDelegate::Options options;
        options.backends.push_back(std::move(backend));
        options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
        options.quit = [this] { m_quit = true; };
        options.clock = &m_clock;
        m_delegate = std::make_unique<AppDelegate>(std::move(options));
        m_delegate->applicationDidFinishLaunching();
        m_window = m_delegate->cameraWindow();
        m_advanced = m_window->findChild<BWAdvancedSettingsWindowController *>();
        QTRY_VERIFY(m_window->menu().record->isEnabled());
    }
    void cleanupTestCase()
    {
        m_delegate->applicationShouldTerminate();
        QTRY_VERIFY(m_quit);
        m_delegate.reset();
        QVERIFY(!BWRepository::singleton().appDelegate());
    }

    void isMarkedInTheMenu()
    {
        QStringList checked;
        const auto actions = m_window->findChildren<QAction *>();
        for (const QAction *action : actions) {
            if (action->isChecked() && action->data().isValid())
                checked << action->text();
        }
        QVERIFY2(checked.contains(u"Digital Dermatoscope DX10"_s), qPrintable(checked.join(u' ')));
    }

    void factoryValuesHaveTheirSizeAtOnce()
    {
        choose({1600, 1200});
        m_advanced->onRestoreDefaults();
        QTRY_COMPARE(size(), u"640x480 640x480"_s);
    }

private:
    void choose(BWResolution resolution)
    {
        QComboBox &menu = resolutions();
        menu.setCurrentText(resolution.resolutionString());
        Q_EMIT menu.textActivated(menu.currentText());
        QTRY_COMPARE(m_delegate->currentCamera()->defaultResolution(), resolution);
    }
    /// Of the camera, and what the bar shows.
    QString size() const
    {
        return m_delegate->currentCamera()->defaultResolution().resolutionString() + u' ' + resolutions().currentText();
    }
    QComboBox &resolutions() const
    {
        const auto menus = m_window->controlBar().findChildren<QComboBox *>();
        return **std::find_if(menus.begin(), menus.end(), [](auto *menu) { return menu->findText(u"640x480"_s) >= 0; });
    }

    const TestFolder m_home;
    BWManualClock m_clock;
    std::unique_ptr<AppDelegate> m_delegate;
    BWMainWindow *m_window = nullptr;
    BWAdvancedSettingsWindowController *m_advanced = nullptr;
    bool m_quit = false;
};

QTEST_MAIN(TestBWProductInProgram)
#include "tst_BWProductInProgram.moc"
