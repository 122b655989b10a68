// SPDX-License-Identifier: GPL-3.0-or-later
#include "AttachedCameras.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "Views/Settings/BWSettingsForm.h"
#include "Views/Settings/BWSettingsWindowController.h"
#include "WidgetSearch.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using Type = AttachedCameras::Type;

/// The settings window on a real store with simulated cameras, used by keyboard.
class TestBWSettingsWindow : public QObject, private BWSettingsWindowControllerDelegate {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_defaults = std::make_unique<BWSettingsFile>(m_folder->filePath(u"settings.conf"_s));
        m_config = std::make_unique<BWConfigManager>(*m_defaults);
        m_cameraWindow = std::make_unique<QWidget>();
        m_cameraWindow->setGeometry(100, 50, 500, 300);
        m_cameraWindow->show();
        m_window = new BWSettingsWindowController(*m_config, *m_defaults, {*this, [this] { m_opened = true; }},
                                                  m_cameraWindow.get());
        m_form = m_window->findChild<BWSettingsForm *>();
        m_window->localizeWithManager(m_texts);
        m_config->addListener(m_window);
    }
    void cleanup()
    {
        m_current.reset();
        m_cameraWindow.reset();
        m_config.reset();
    }

    void controls_data()
    {
        // keys: after Alt and a letter
        const Rows<QList<int>, QString> row;
        const int down = Qt::Key_Down;
        row("product", QList<int>{'P', down}, u"mx50_40 photo click layout"_s);
        row("button saves video", QList<int>{'B', down}, u"video click layout"_s);
        row("click takes none", QList<int>{'I', down}, u"photo layout"_s);
        row("captures are listed", QList<int>{'F', Qt::Key_Up}, u"photo click recent layout"_s);
        row("layout is forgotten", QList<int>{'R', down}, u"photo click"_s);
        row("advanced", QList<int>{'V'}, u"photo click layout advanced"_s);
    }
    void controls()
    {
        auto [keys, effect] = Rows<QList<int>, QString>::current();
        m_opened = false;
        const AttachedCameras cameras({Type::High});
        use(cameras, cameras[0]);
        activate();
        QTest::keyClick(m_window, static_cast<Qt::Key>(keys.takeFirst()), Qt::AltModifier);
        for (const int key : keys)
            QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
        const auto chosen = [this] {
            QStringList words{m_config->currentProductIdentifierForCameraIdentifier(u"wired_high"_s),
                              m_config->saveVideoOnHardwareButton() ? u"video"_s : u"photo"_s,
                              m_config->saveSnapshotOnClick() ? u"click"_s : QString(),
                              m_config->showInRecentFiles() ? u"recent"_s : QString(),
                              m_config->rememberLayout() ? u"layout"_s : QString(),
                              m_opened ? u"advanced"_s : QString()};
            words.removeAll(QString());
            return words.join(u' ');
        };
        QTRY_COMPARE(chosen(), effect); // a button is released a moment later
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
        QApplication::sendEvent(m_form->cameraTypes, &turn); // turning the wheel must not end a recording
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
        QVERIFY(!QApplication::activePopupWidget()); // nothing moves under the pointer
        QCOMPARE(popUp.count(), 3);
        QCOMPARE(popUp.currentText(), u"High Resolution Microscope (2)"_s);

        m_current.reset();
        m_window->updateCameras(cameras.list(), nullptr); // between two cameras
        QCOMPARE(popUp.currentIndex(), -1);
        QVERIFY(popUp.placeholderText() != u"No camera detected"_s);
        m_window->updateCameras({}, nullptr);
        QCOMPARE(popUp.placeholderText(), u"No camera detected"_s);
        QVERIFY(!popUp.isEnabled() && !m_form->cameraProducts->isEnabled());
    }

    void controlsFollowTheStore()
    {
        const AttachedCameras cameras({Type::High});
        use(cameras, cameras[0]);
        const auto shown = [this] {
            return QStringList{m_form->cameraProducts->currentText(), m_form->videoHardware->currentText(),
                               m_form->snapshotOnClick->currentText(), m_form->rememberLayout->currentText()}
                .join(u'|');
        };
        QCOMPARE(m_form->cameraProducts->count(), m_config->productsByCameraIdentifier(u"wired_high"_s).size());
        const QString before = u"Digital Dermatoscope DX10|Photo|Yes|Yes"_s;
        QCOMPARE(shown(), before);
        m_config->setCurrentProductIdentifier(u"mx63"_s, u"wired_high"_s);
        m_config->setSaveVideoOnHardwareButton(true);
        m_config->setSaveSnapshotOnClick(false);
        m_config->setRememberLayout(false);
        QCOMPARE(shown(), before); // not before all listeners were notified
        QCoreApplication::processEvents();
        QCOMPARE(shown(), u"Digital U/V Polarizing Microscope MX63|Video|No|No"_s);
    }

private:
    void changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera) override
    {
        QCOMPARE(&sender, m_window);
        m_picked = camera;
    }
    void use(const AttachedCameras &cameras, const BWCameraPtr &current)
    {
        m_current = current;
        m_window->updateCameras(cameras.list(), current);
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
    bool m_opened = false; // the advanced settings
    std::unique_ptr<BWSettingsFile> m_defaults;
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
