// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCaptureDevice.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Technician/BWEMPIADebuggerWindowController.h"
#include "WidgetSearch.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QSemaphore>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QStringList names{u"EM28XX_R28_XMIN"_s,   u"EM28XX_R29_XMAX"_s,    u"EM28XX_R2A_YMIN"_s,
                        u"EM28XX_R2B_YMAX"_s,   u"EM28XX_R1C_HSTART"_s,  u"EM28XX_R1D_VSTART"_s,
                        u"EM28XX_R1E_CWIDTH"_s, u"EM28XX_R1F_CHEIGHT"_s, u"EM28XX_R1B_OFLOW"_s};

/// A chip that keeps only even values and answers when the bus is let go on.
class SlowChip : public BWCaptureDevice {
public:
    explicit SlowChip(std::shared_ptr<QSemaphore> bus) : m_bus(std::move(bus)) { }

    void setEvents(std::function<void()>, std::function<void(int, double)>) override { }
    std::vector<BWControlInfo> controls() const override { return {}; }
    BWResolution resolution() const override { return {640, 480}; }
    void setResolution(BWResolution) override { }
    BWStartProblem startStreaming() override { return {}; }
    void stopStreaming() override { }
    WaitResult waitFrame(std::chrono::milliseconds, BWFrame &) override { return WaitResult::Nothing; }
    void interrupt() override { }
    double setControl(int, double value) override { return value; }
    int readRegister(int identifier) override
    {
        m_bus->acquire();
        return m_values.value(identifier);
    }
    void writeRegister(int identifier, int value) override
    {
        m_bus->acquire();
        m_values[identifier] = value & ~1;
    }
    QString registerProblem() const override { return m_values.value(0x28) == 2 ? u"The chip refuses."_s : QString(); }

private:
    std::shared_ptr<QSemaphore> m_bus; // each access waits for it
    QHash<int, int> m_values;
};

} // namespace

class TestBWRegisterDebugger : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_bus = std::make_shared<QSemaphore>();
        auto description = BWCameraDetector::descriptionForReceptorWirelessMicroscope();
        m_camera = std::make_shared<BWEmpiaCamera>(std::make_shared<BWDetectedCamera>(
            description, u"test"_s, [this] { return std::make_unique<SlowChip>(m_bus); }));
    }

    void readsAndWritesByName()
    {
        m_bus->release(1000);
        BWEMPIADebuggerWindowController window([this] { return m_camera; });
        window.localizeWithManager(m_texts);
        QVERIFY(!buttonNamed(window, u"&Write"_s)->isEnabled()); // nothing that could be written yet
        window.onReadRegisters();
        QTRY_COMPARE(values(window), QStringList(9, u"0"_s));

        const QStringList typed{
            u"300"_s, u"-2"_s, u"12 points"_s, u""_s, u"255"_s, u"256"_s, u"7"_s, u"-1"_s, u"9999999999999999999999"_s};
        for (int row = 0; row < names.size(); ++row)
            field(window, row)->setText(typed[row]);
        window.onWriteRegisters();
        QTRY_VERIFY(buttonNamed(window, u"&Read"_s)->isEnabled());
        const QList<int> numbers{0x28, 0x29, 0x2A, 0x2B, 0x1C, 0x1D, 0x1E, 0x1F, 0x1B};
        const QList<int> written{44, 254, 12, 0, 254, 0, 6, 254, 254};
        for (int row = 0; row < names.size(); ++row)
            QCOMPARE(m_camera->readRegisterWithIdentifier(numbers[row]), written[row]);

        window.onReadRegisters(); // shows what the chip has made of them
        QTRY_COMPARE(values(window).first(), u"44"_s);
        QTRY_COMPARE(values(window).last(), u"254"_s);
        QTRY_VERIFY(buttonNamed(window, u"&Read"_s)->isEnabled());

        field(window, 0)->setText(u"2"_s);
        window.onWriteRegisters();
        QTRY_VERIFY(hasLabel(window, u"The chip refuses."_s));
    }

    /// The values are shown one by one, and the window is used and closed in the meantime.
    void slowBusBlocksNothing()
    {
        auto window = std::make_unique<BWEMPIADebuggerWindowController>([this] { return m_camera; });
        window->localizeWithManager(m_texts);
        window->onReadRegisters();
        QVERIFY(!buttonNamed(*window, u"&Read"_s)->isEnabled());
        m_bus->release(2);
        QTRY_COMPARE(field(*window, 1)->text(), u"0"_s);
        QCOMPARE(field(*window, 2)->text(), QString());
        QElapsedTimer timer;
        timer.start();
        window.reset();
        QVERIFY(timer.elapsed() < 2000);
        m_bus->release(1000);
        QTRY_COMPARE(m_camera.use_count(), 1L); // what was under way comes to its end without the window
    }

private:
    static QLineEdit *field(const QWidget &window, int row)
    {
        const auto fields = window.findChildren<QLineEdit *>();
        for (QLineEdit *each : fields)
            if (each->accessibleName() == names[row])
                return each;
        return nullptr;
    }
    static QStringList values(const QWidget &window)
    {
        QStringList list;
        for (int row = 0; row < names.size(); ++row)
            list << field(window, row)->text();
        return list;
    }

    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    std::shared_ptr<QSemaphore> m_bus;
    std::shared_ptr<BWEmpiaCamera> m_camera;
};

QTEST_MAIN(TestBWRegisterDebugger)
#include "tst_BWRegisterDebugger.moc"
