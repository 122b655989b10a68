#include "../Rows.h"
#include "../views/WidgetSearch.h"
#include "AttachedCameras.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Settings/BWSettingsForm.h"
#include "Views/Settings/BWSettingsWindowController.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using Type = AttachedCameras::Type;

namespace {

/// A real settings file that also tells in which order it is written.
class RecordingDefaults : public BWSettingsFile {
public:
    RecordingDefaults(const QString &path, QStringList &log) : BWSettingsFile(path), m_log(log) { }

    void setString(const QString &key, const QString &value) override
    {
        if (string(key) != value && !key.startsWith("bwp2x_frame_"_L1))
            m_log << key + u'=' + value;
        BWSettingsFile::setString(key, value);
    }

private:
    QStringList &m_log;
};

} // namespace

/// The settings window on a real store with simulated cameras, used by keyboard.
class TestBWSettingsWindow : public QObject,
                             private BWSettingsWindowControllerDelegate,
                             private BWConfigManagerListener {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_defaults = std::make_unique<RecordingDefaults>(m_folder->filePath(u"settings.conf"_s), m_log);
        m_config = std::make_unique<BWConfigManager>(*m_defaults);
        m_config->setFirstTime(false); // writes all
        m_cameraWindow = std::make_unique<QWidget>();
        m_cameraWindow->setGeometry(100, 50, 500, 300);
        m_cameraWindow->show();
        m_window = new BWSettingsWindowController(*m_config, *m_defaults, {*this, [this] { m_log << u"advanced"_s; }},
                                                  m_cameraWindow.get());
        m_form = m_window->findChild<BWSettingsForm *>();
        m_window->localizeWithManager(m_texts);
        m_config->addListener(m_window);
        m_config->addListener(this);
        m_log.clear();
    }
    void cleanup()
    {
        m_config->removeListener(this);
        m_current.reset();
        m_cameraWindow.reset();
        m_config.reset();
    }

    void controls_data()
    {
        // keys: after Alt and a letter
        const Rows<QList<int>, QStringList> row;
        const int down = Qt::Key_Down;
        row("second camera", QList<int>{'C', down}, QStringList{u"camera High Resolution Microscope (2)"_s});
        row("product", QList<int>{'P', down},
            QStringList{u"bwp2x_product_for_camera={\"wired_high\":\"mx50_40\"}"_s, u"told"_s});
        row("button saves video", QList<int>{'B', down}, QStringList{u"bwp2x_video_button=yes"_s, u"told"_s});
        row("click takes none", QList<int>{'I', down}, QStringList{u"bwp2x_snapshot_click=no"_s, u"told"_s});
        row("layout is forgotten, and remembered", QList<int>{'R', down, Qt::Key_Up},
            QStringList{u"bwp2x_remember_layout=no"_s, u"told"_s, u"bwp2x_remember_layout=yes"_s, u"told"_s});
        row("restore layout", QList<int>{'S'}, QStringList{u"told to reset"_s});
        row("advanced", QList<int>{'V'}, QStringList{u"advanced"_s});
    }
    void controls()
    {
        auto [keys, effects] = Rows<QList<int>, QStringList>::current();
        const AttachedCameras cameras({Type::High, Type::High});
        use(cameras, cameras[0]);
        activate();
        QTest::keyClick(m_window, static_cast<Qt::Key>(keys.takeFirst()), Qt::AltModifier);
        for (const int key : keys)
            QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
        QTRY_COMPARE(m_log, effects); // a button is released a moment later
    }

    void camerasOfTheSameName()
    {
        AttachedCameras cameras({Type::High, Type::Regular, Type::High, Type::High});
        use(cameras, cameras[2]);
        const QComboBox &popUp = *m_form->cameraTypes;
        QCOMPARE(titles(popUp),
                 u"High Resolution Microscope|Regular Microscope|High Resolution Microscope (2)|"
                 "High Resolution Microscope (3)"_s);
        QCOMPARE(popUp.currentText(), u"High Resolution Microscope (2)"_s);
        QWheelEvent turn({9, 9}, popUp.mapToGlobal(QPointF(9, 9)), {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_form->cameraTypes, &turn); // nobody wants to end a recording by that
        QVERIFY(m_picked.expired());
        QCOMPARE(popUp.currentIndex(), 2);
        const std::weak_ptr<BWCamera> last = cameras[3];
        pick(*m_form->cameraTypes, 3);
        QCOMPARE(m_picked.lock(), last.lock());

        activate();
        m_form->cameraTypes->showPopup();
        m_picked.reset();
        cameras.unplug(3);
        QVERIFY(last.expired());
        pick(*m_form->cameraTypes, 3); // the list is still the old one
        QVERIFY(m_picked.expired());
        m_window->updateCameras(cameras.list(), m_current);
        QVERIFY(!QApplication::activePopupWidget()); // nothing moves under the hand
        QCOMPARE(popUp.count(), 3);
        QCOMPARE(popUp.currentText(), u"High Resolution Microscope (2)"_s);

        m_current.reset();
        m_window->updateCameras(cameras.list(), nullptr); // between two cameras
        QCOMPARE(popUp.currentIndex(), -1);
        QVERIFY(popUp.placeholderText() != u"No camera detected"_s);
        m_window->updateCameras({}, nullptr);
        QCOMPARE(popUp.placeholderText(), u"No camera detected"_s);
        QVERIFY(!popUp.isEnabled() && !m_form->cameraProducts->isEnabled());
        QCOMPARE(m_form->cameraProducts->count(), 0);
    }

    void products_data()
    {
        // before: chosen when the camera comes; after: chosen by others later
        const Rows<QString, QString, QString, QString> row;
        row("default", QString(), u"dx10"_s, QString(), u"dx10"_s);
        row("chosen", u"mx61"_s, u"mx61"_s, u"mx63"_s, u"mx63"_s);
        row("no longer made", u"mx1"_s, u"dx10"_s, u"mx61"_s, u"mx61"_s);
        row("of another type", u"mx61"_s, u"mx61"_s, u"dx12"_s, u"dx10"_s);
    }
    void products()
    {
        const auto [before, shown, after, then] = Rows<QString, QString, QString, QString>::current();
        const auto name = [this](const QString &identifier) {
            return identifier.isNull() ? QString() : m_config->productByIdentifier(identifier)->name();
        };
        if (!before.isNull())
            m_config->setCurrentProductIdentifier(before, u"wired_high"_s);
        const AttachedCameras cameras({Type::High});
        use(cameras, cameras[0]);
        const QComboBox &popUp = *m_form->cameraProducts;
        QCOMPARE(popUp.count(), m_config->productsByCameraIdentifier(u"wired_high"_s).size());
        QCOMPARE(popUp.currentText(), name(shown));
        if (after.isNull())
            m_config->setRememberLayout(true);
        else
            m_config->setCurrentProductIdentifier(after, u"wired_high"_s);
        QCOMPARE(popUp.currentText(), name(shown)); // not before all have been told
        QCoreApplication::processEvents();
        QCOMPARE(popUp.currentText(), name(then));
    }

    void optionsFollowTheStore()
    {
        const auto shown = [this] {
            return QStringList{m_form->videoHardware->currentText(), m_form->snapshotOnClick->currentText(),
                               m_form->rememberLayout->currentText()}
                .join(u'|');
        };
        QCOMPARE(shown(), u"Photo|Yes|Yes"_s);
        m_config->setSaveVideoOnHardwareButton(true);
        m_config->setSaveSnapshotOnClick(false);
        m_config->setRememberLayout(false);
        QCOMPARE(shown(), u"Photo|Yes|Yes"_s);
        QCoreApplication::processEvents();
        QCOMPARE(shown(), u"Video|No|No"_s);
    }

private:
    void changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera) override
    {
        QCOMPARE(&sender, m_window);
        m_log << u"camera "_s + m_form->cameraTypes->currentText();
        m_picked = camera;
    }
    void configManagerUpdatedSettings(BWConfigManager &config) override
    {
        m_log << (config.mustResetLayout() ? u"told to reset"_s : u"told"_s);
    }

    void use(const AttachedCameras &cameras, const BWCameraPtr &current)
    {
        m_current = current;
        m_window->updateCameras(cameras.list(), current);
        m_log.clear();
    }
    void activate() const
    {
        m_window->show();
        m_window->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), m_window); // a window counts as active with its parent
    }
    static void pick(QComboBox &popUp, int index)
    {
        popUp.setCurrentIndex(index);
        Q_EMIT popUp.activated(index);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_log;
    std::unique_ptr<RecordingDefaults> m_defaults;
    std::unique_ptr<BWConfigManager> m_config;
    std::unique_ptr<QWidget> m_cameraWindow;
    BWSettingsWindowController *m_window = nullptr; // of the camera window
    BWSettingsForm *m_form = nullptr;
    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWCameraPtr m_current;
    std::weak_ptr<BWCamera> m_picked;
};

QTEST_MAIN(TestBWSettingsWindow)
#include "tst_BWSettingsWindow.moc"
