#include "SysfsTree.h"
#include "v4l2/finding/BWNodeAccess.h"
#include "v4l2/finding/BWVideoNode.h"

#include <fcntl.h>
#include <QProcess>
#include <QTest>
#include <stdlib.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray button(const QString &sysPath)
{
    BWVideoNode node;
    node.sysPath = sysPath.toUtf8();
    return node.buttonPath();
}

} // namespace

/// What is looked up in /proc and sysfs around a device.
class DeviceLookups : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void namesTheProgramThatHoldsADevice()
    {
        const int own = ::open("/dev/full", O_RDWR | O_CLOEXEC); // which no other program holds
        QVERIFY(own >= 0);
        QVERIFY2(BWNodeAccess::programHolding("/dev/full").isNull(), "our own process does not count");
        ::close(own);
        QVERIFY(BWNodeAccess::programHolding("/dev/no-such-node").isNull());

        QProcess open;
        open.setStandardInputFile(u"/dev/zero"_s);
        open.start(u"sleep"_s, {u"60"_s});
        QVERIFY(open.waitForStarted());
        QTRY_COMPARE(BWNodeAccess::programHolding("/dev/zero"), u"sleep"_s);

        QProcess streaming;
        streaming.setStandardInputFile(u"/dev/zero"_s);
        streaming.start(u"python3"_s,
                        {u"-c"_s,
                         u"import mmap,time\nbuffer = mmap.mmap(0, 4096, flags=mmap.MAP_PRIVATE)\n"
                         "print('mapped', flush=True)\ntime.sleep(60)"_s});
        QVERIFY(streaming.waitForReadyRead());
        QVERIFY2(BWNodeAccess::programHolding("/dev/zero").startsWith(u"python3"_s),
                 "the one that streams comes first");
        for (QProcess *process : {&open, &streaming}) {
            process->kill();
            process->waitForFinished();
        }
    }

    void findsTheButtonOfTheSameCamera()
    {
        // Bit 212 (KEY_CAMERA) alone, and a keyboard's many keys without it.
        const QString cameraKey = u"100000 0 0 0"_s;
        const QString otherKeys = u"ffffffff00000000 0 3ffffffff fffffffffffffffe"_s;
        SysfsTree tree;
        const QString hub = tree.addUsbDevice(u"1"_s, {{u"idVendor"_s, u"05e3"_s}});
        tree.write(hub + "/1-1:1.0/input/input3/capabilities/key"_L1, cameraKey);
        tree.write(hub + "/1-1:1.0/input/input3/event3/dev"_L1, u"13:67"_s);
        const QString camera = tree.addUsbDevice(u"1.2"_s, {{u"idVendor"_s, u"eb1a"_s}});
        const QString interface = tree.addInterface(camera, u"1.0"_s, u"uvcvideo"_s);
        const QString node = tree.addVideoNode(interface, 0, 0, u"Camera"_s);

        QVERIFY2(button(node).isNull(), "the hub's button is another one's");
        tree.write(camera + "/1-1.2:1.2/input/input4/capabilities/key"_L1, otherKeys);
        tree.write(camera + "/1-1.2:1.2/input/input4/event4/dev"_L1, u"13:68"_s);
        QVERIFY2(button(node).isNull(), "has no camera key");
        tree.write(camera + "/1-1.2:1.1/input/input5/capabilities/key"_L1, cameraKey);
        tree.write(camera + "/1-1.2:1.1/input/input5/event9/dev"_L1, u"13:73"_s);
        QCOMPARE(button(node), "/dev/input/event9"_qba);
        tree.write(interface + "/input/input6/capabilities/key"_L1, cameraKey);
        tree.write(interface + "/input/input6/event2/dev"_L1, u"13:66"_s);
        QVERIFY2(button(node) == "/dev/input/event2", "that of the camera's own interface");
        QVERIFY(button(u"/sys/no/such/folder"_s).isNull());
    }
};

QTEST_GUILESS_MAIN(DeviceLookups)
#include "tst_DeviceLookups.moc"
