// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "NotingCamera.h"
#include "Rows.h"
#include "Views/Settings/BWAdvancedSettingsWindowController.h"
#include "Views/Settings/BWSettingViewController.h"
#include "WidgetSearch.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Type = NotingCamera::Type;

namespace {

/// The window on one camera after the other, and what a person does in it.
struct Bench : ProductBench {
    explicit Bench(const NotingCamera &first)
    {
        window.localizeWithManager(texts);
        start(first);
    }

    void start(const NotingCamera &started) { window.setCurrentCamera(started.camera); }
    template <typename Widget>
    Widget *part(int setting) const
    {
        return window.controllerForSetting(setting)->findChild<Widget *>();
    }
    void choose(int setting, int index) const
    {
        part<QComboBox>(setting)->setCurrentIndex(index);
        Q_EMIT part<QComboBox>(setting)->activated(index);
    }
    void type(int setting, const QString &text) const
    {
        auto *field = part<QSpinBox>(setting);
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }

    /// How its widgets show that an automatic mode controls it.
    QString signsOfHold(int setting) const
    {
        QStringList signs;
        const auto labels = window.controllerForSetting(setting)->findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->isVisible() && label->text() == "automatic"_L1)
                signs << u"hint"_s;
        }
        if (part<QSpinBox>(setting)->palette().color(QPalette::Text) != window.palette().color(QPalette::Text))
            signs << u"dimmed"_s;
        if (part<QSlider>(setting)->toolTip().contains("Automatic white balance"_L1))
            signs << u"reason"_s;
        return signs.join(u' ');
    }

    BWLocalizationManager texts{QString::fromUtf8(BW_LOCALIZATION_FILE), {u"en"_s}};
    QWidget cameraWindow;
    BWManualClock clock;
    BWAdvancedSettingsWindowController window{product, defaults, &cameraWindow, clock};
};

} // namespace

class TestBWAdvancedSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void changes_data()
    {
        const Rows<Type, int, QString, QString, double> row;
        row("slider", Type::Ultra, BWSettingBrightness, u"slide 20"_s, u"3=20"_s, 20);
        row("number", Type::Ultra, BWSettingBrightness, u"type -7"_s, u"3=-7"_s, -7);
        row("too large a number", Type::Ultra, BWSettingBrightness, u"type 999"_s, u"3=64"_s, 64);
        row("much too large a number", Type::Ultra, BWSettingBrightness, u"type 99999999999"_s, u"3=64"_s, 64);
        row("too small a number", Type::Ultra, BWSettingGamma, u"type -5"_s, u"5=40"_s, 40);
        row("automatic off", Type::Ultra, BWSettingAutoWhite, u"choose 1"_s, u"8=0 7=4600"_s, 0);
        row("automatic on", Type::Regular, BWSettingAutoWhite, u"choose 0"_s, u"8=1"_s, 1);
        row("a step of the slider", Type::Ultra, BWSettingWhiteBalance, u"right"_s, u"7=4610"_s, 4610);
        row("a step of the number", Type::Ultra, BWSettingWhiteBalance, u"up"_s, u"7=4610"_s, 4610);
        row("video norm", Type::Wireless, BWSettingVideoNorm, u"choose 0"_s, u"norm 0"_s, 0);
        row("video norm without a bridge chip", Type::Wireless, BWSettingVideoNorm, u"choose 0 unbridged"_s, u""_s, 0);
    }
    void changes()
    {
        const auto [type, setting, how, received, kept] = Rows<Type, int, QString, QString, double>::current();
        const NotingCamera camera(type, !how.endsWith(u"unbridged"_s));
        const Bench bench(camera);
        camera.received();
        const QString value = how.section(u' ', 1, 1);
        if (how.startsWith(u"slide"_s))
            bench.part<QSlider>(setting)->setValue(value.toInt());
        else if (how.startsWith(u"type"_s))
            bench.type(setting, value);
        else if (how == u"right"_s)
            QTest::keyClick(bench.part<QSlider>(setting), Qt::Key_Right);
        else if (how == u"up"_s)
            QTest::keyClick(bench.part<QSpinBox>(setting), Qt::Key_Up);
        else
            bench.choose(setting, value.toInt());
        QCOMPARE(camera.received(), received);
        QCOMPARE(bench.product.product()->valueForSetting(setting), kept);
        if (const auto *slider = bench.part<QSlider>(setting)) {
            QCOMPARE(slider->value(), kept);
            QCOMPARE(bench.part<QSpinBox>(setting)->value(), kept);
        }
    }

    void missingNormsAreDisabled()
    {
        const NotingCamera camera(Type::Wireless);
        const Bench bench(camera);
        const auto *norms = bench.part<QComboBox>(BWSettingVideoNorm);
        QStringList possible;
        for (int norm = 0; norm < norms->count(); ++norm) {
            if (norms->model()->flags(norms->model()->index(norm, 0)).testFlag(Qt::ItemIsEnabled))
                possible << norms->itemText(norm);
        }
        QCOMPARE(possible, QStringList({u"NTSC"_s, u"PAL"_s}));
    }

    void missingControlsAreBlank()
    {
        const NotingCamera high(Type::High);
        const NotingCamera ultra(Type::Ultra);
        Bench bench(high);
        const auto *automatic = bench.part<QComboBox>(BWSettingAutoExposure);
        const auto *gain = bench.part<QSpinBox>(BWSettingGain);
        const auto *norm = bench.part<QComboBox>(BWSettingVideoNorm);
        const auto shown = [&] {
            return QStringList{automatic->currentText(), gain->text(), norm->currentText(),
                               automatic->isEnabled() ? u"automatic"_s : QString(),
                               gain->isEnabled() ? u"gain"_s : QString()}
                .join(u'|');
        };
        for (int round = 0; round < 2; ++round) {
            bench.start(high);
            ultra.notes->moves(BWSettingGain, 50 + round); // the other camera, which is still there
            ultra.notes->moves(BWSettingAutoExposure, round);
            bench.window.hide();
            bench.window.show();
            QCOMPARE(shown(), u"||||"_s);
            bench.start(ultra);
            QCOMPARE(shown(), u"Yes|0||automatic|gain"_s);
        }
        QCOMPARE(automatic->count(), 2);
        QVERIFY(!bench.window.controllerForSetting(BWSettingBacklight));
    }

    void endsWhileANumberIsTyped()
    {
        const NotingCamera camera(Type::Ultra);
        {
            Bench bench(camera);
            bench.window.show();
            bench.window.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&bench.window));
            auto *field = bench.part<QSpinBox>(BWSettingBrightness);
            field->setFocus();
            field->selectAll();
            QTest::keyClicks(field, u"7"_s);
            camera.received();
        }
        QCOMPARE(camera.received(), u"3=7"_s);
    }

    void successIsReportedOnlyWhenSaved()
    {
        const NotingCamera camera(Type::High);
        Bench bench(camera);
        const QDir folder(bench.folder.path());
        QVERIFY(folder.mkdir(u"settings.conf"_s)); // where the file should be
        bench.window.onRestoreDefaults();
        QVERIFY(hasLabel(bench.window, u"Could not be saved"_s) && !hasLabel(bench.window, u"Saved"_s));
        bench.config.setSaveSnapshotOnClick(false);
        QVERIFY(folder.rmdir(u"settings.conf"_s));
        bench.window.onSaveAsDefault();
        QVERIFY(hasLabel(bench.window, u"Saved"_s));
        QFile file(folder.filePath(u"settings.conf"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("bwp2x_snapshot_click=no")); // the earlier change is saved, too
        bench.part<QSlider>(BWSettingBrightness)->setValue(77);
        QVERIFY(!hasLabel(bench.window, u"Saved"_s));
    }

    void followsTheCamera()
    {
        const NotingCamera camera(Type::Ultra);
        Bench bench(camera);
        bench.window.show();
        camera.received();
        bench.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&bench.window));
        QCOMPARE(bench.window.focusWidget(), bench.part<QSlider>(BWSettingHue)); // not one of the buttons
        auto *slider = bench.part<QSlider>(BWSettingWhiteBalance);
        auto *field = bench.part<QSpinBox>(BWSettingWhiteBalance);
        camera.notes->moves(BWSettingWhiteBalance, 4710);
        bench.clock.advance(1s);
        QCOMPARE(slider->value(), 4710);
        QCOMPARE(field->value(), 4710);
        QVERIFY(slider->isEnabled());
        QCOMPARE(bench.signsOfHold(BWSettingWhiteBalance), u"hint dimmed reason"_s);
        QCOMPARE(camera.received(), QString()); // what is shown is not sent back
        QCOMPARE(bench.product.product()->valueForSetting(BWSettingWhiteBalance), 4600.0);

        // A slider that the user holds stays put.
        slider->setSliderDown(true);
        camera.notes->moves(BWSettingWhiteBalance, 4720);
        camera.notes->moves(BWSettingExposureAbsolute, 200);
        bench.clock.advance(1s);
        QCOMPARE(bench.part<QSlider>(BWSettingExposureAbsolute)->value(), 200);
        QCOMPARE(slider->value(), 4710);
        slider->setSliderDown(false);
        bench.clock.advance(1s);
        QCOMPARE(slider->value(), 4720);

        // A selected number stays selected, to be typed over.
        field->setFocus();
        field->findChild<QLineEdit *>()->selectAll(); // as a double click does
        camera.notes->moves(BWSettingWhiteBalance, 4730);
        bench.clock.advance(1s);
        QCOMPARE(slider->value(), 4730);
        QTest::keyClicks(field, u"3000"_s);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(camera.received(), u"7=3000"_s);
        QTest::keyClicks(field, u"2900"_s);
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(field->value(), 3000);
        QTest::keyClick(field, Qt::Key_Escape);
        QVERIFY(!bench.window.isVisible());
        QCOMPARE(camera.received(), QString());
        bench.window.show();

        bench.choose(BWSettingAutoWhite, 1);
        QCOMPARE(bench.signsOfHold(BWSettingWhiteBalance), QString());
        QCOMPARE(camera.received(), u"8=0 7=3000"_s);
        // So does an open menu. Another program changes the mode.
        auto *automatic = bench.part<QComboBox>(BWSettingAutoWhite);
        automatic->showPopup();
        camera.notes->moves(BWSettingAutoWhite, 1);
        bench.clock.advance(1s);
        QCOMPARE(bench.signsOfHold(BWSettingWhiteBalance), u"hint dimmed reason"_s);
        QCOMPARE(automatic->currentText(), u"No"_s);
        automatic->hidePopup();
        bench.clock.advance(1s);
        QCOMPARE(automatic->currentText(), u"Yes"_s);

        // A slow camera keeps reporting the old value for a while.
        bench.clock.advance(900ms);
        slider->setValue(3500);
        QCOMPARE(camera.received(), u"7=3500"_s);
        camera.notes->moves(BWSettingWhiteBalance, 3000);
        bench.clock.advance(900ms);
        QCOMPARE(slider->value(), 3500);
        bench.clock.advance(100ms);
        QCOMPARE(slider->value(), 3000);
    }
};

QTEST_MAIN(TestBWAdvancedSettings)
#include "tst_BWAdvancedSettings.moc"
