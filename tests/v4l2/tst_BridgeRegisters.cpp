// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeKernel.h"
#include "v4l2/device/BWBridgeRegisters.h"

#include <cerrno>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

BWVideoNode receiver()
{
    BWVideoNode node;
    node.path = "/dev/video";
    node.usbBus = 3;
    node.usbDevice = 17;
    return node;
}

} // namespace

class TestBridgeRegisters : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void driverAccessesRegisters()
    {
        FakeKernel kernel;
        std::map<uint64_t, uint64_t> chip{{0x28, 0x1a2}};
        kernel.change([&chip](FakeKernel::State &state) {
            state.answers[VIDIOC_DBG_G_REGISTER] = [&chip](void *argument) {
                auto &reg = *static_cast<v4l2_dbg_register *>(argument);
                reg.val = chip[reg.reg];
                return reg.match.type == V4L2_CHIP_MATCH_BRIDGE ? 0 : -EINVAL;
            };
            state.answers[VIDIOC_DBG_S_REGISTER] = [&chip](void *argument) {
                const auto &reg = *static_cast<v4l2_dbg_register *>(argument);
                chip[reg.reg] = reg.val;
                return 0;
            };
        });
        BWBridgeRegisters registers(receiver(), kernel);
        QCOMPARE(registers.read(0x28), 0xa2);
        registers.write(0x1e, 300);
        QCOMPARE(chip[0x1e], 44u);
        QVERIFY(registers.problem().isNull());
        QCOMPARE(kernel.change([](const FakeKernel::State &state) { return state.opened; }), 0);

        kernel.change([](FakeKernel::State &state) { state.gone = true; });
        QCOMPARE(registers.read(0x28), 0);
        QVERIFY(!registers.problem().isNull());
    }

    void usbIsTheFallback()
    {
        FakeKernel kernel;
        kernel.change([&](FakeKernel::State &state) {
            state.faults[VIDIOC_DBG_S_REGISTER] = {ENOTTY};
            // The driver is tried once; what is opened later is the USB device.
            state.faults[FakeKernel::opening] = {0, EMFILE, EMFILE};
        });
        BWBridgeRegisters registers(receiver(), kernel);
        QVERIFY(registers.problem().isNull());
        registers.write(0x28, 1);
        QCOMPARE(registers.read(0x28), 0);
        QVERIFY2(registers.problem().contains(u"Too many open files"_s), qPrintable(registers.problem()));
        QVERIFY(registers.problem().contains(u"/dev/bus/usb/003/017"_s));
        QCOMPARE(kernel.change([](const FakeKernel::State &state) { return state.opened; }), 0);
    }
};

QTEST_GUILESS_MAIN(TestBridgeRegisters)
#include "tst_BridgeRegisters.moc"
