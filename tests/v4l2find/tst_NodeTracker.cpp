// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "v4l2/finding/BWNodeTracker.h"

#include <cerrno>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A computer whose nodes the test makes appear, and whose clock it moves.
class Computer {
public:
    explicit Computer(bool udev = true) : m_udev(udev) { }

    static BWVideoNode node(int number, const QString &serial, int index = 0)
    {
        BWVideoNode node;
        node.path = "/dev/video" + QByteArray::number(number);
        node.sysPath = "/sys/usb1/1-1/1-1:1.0/video4linux/video" + QByteArray::number(number);
        node.name = u"Lens"_s;
        node.usbId = u"1234:5678"_s;
        node.serial = serial;
        node.port = u"usb-1"_s;
        node.index = index;
        return node;
    }

    void kernelAdds(const BWVideoNode &node) { tracker.nodeAppeared(node, false, ++sequence, now); }
    void udevAdds(const BWVideoNode &node) { tracker.nodeAppeared(node, true, sequence, now); }
    void add(const BWVideoNode &node)
    {
        kernelAdds(node);
        udevAdds(node);
    }
    void remove(const BWVideoNode &node) { tracker.gone(node.sysPath, ++sequence); }

    /// Lets time pass as the tracker's thread does: calls advance() whenever it is due.
    void pass(std::chrono::milliseconds time = 0ms)
    {
        const BWNodeTracker::Time end = now + time;
        tracker.advance(now);
        for (auto next = tracker.nextTime(); next && *next <= end; next = tracker.nextTime()) {
            now = std::max(now, *next);
            tracker.advance(now);
        }
        now = end;
    }

    bool pending() const { return tracker.pending(now); }

    int error = 0; ///< of opening a node
    int openings = 0;
    QStringList events; ///< "+identifier" and "-identifier"
    quint64 sequence = 100;
    BWNodeTracker::Time now{1000s};
    BWNodeTracker tracker{
        maker(),
        {[this](const BWDetectedCameraPtr &camera) { events.append(u'+' + camera->uniqueIdentifier()); },
         [this](const BWDetectedCameraPtr &camera) { events.append(u'-' + camera->uniqueIdentifier()); }},
        [this] { return m_udev; }};

private:
    BWCameraMaker maker()
    {
        const auto read = [this](const QByteArray &, int &problem) -> std::optional<BWVideoAbilities> {
            ++openings;
            problem = error;
            if (error != 0)
                return std::nullopt;
            BWVideoAbilities abilities;
            abilities.captures = true;
            abilities.modes = {{0, BWPixelFormat::MJPEG, {640, 480}, 30, {}}};
            return abilities;
        };
        return BWCameraMaker(BWCameraTable(), {BWCameraDetector::descriptionForRegularMicroscope()}, read);
    }

    bool m_udev;
};

} // namespace

/// A node from its appearance to its removal.
class NodeTracker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void waitsForUdevAndReportsOnce()
    {
        Computer computer;
        computer.kernelAdds(Computer::node(0, u"A"_s));
        computer.kernelAdds(Computer::node(1, u"A"_s, 1)); // metadata
        computer.pass(1s);
        QVERIFY(computer.pending());
        QCOMPARE(computer.openings, 0);
        Computer withoutUdev(false);
        withoutUdev.kernelAdds(Computer::node(0, u"A"_s));
        withoutUdev.pass();
        QVERIFY2(withoutUdev.events.size() == 1, "there is no udev to wait for");

        computer.udevAdds(Computer::node(0, u"A"_s));
        computer.udevAdds(Computer::node(1, u"A"_s, 1));
        computer.udevAdds(Computer::node(0, u"A"_s));
        computer.tracker.nodeAppeared(Computer::node(0, u"A"_s), true, 0, computer.now); // already there at the start
        computer.pass(1s);
        QCOMPARE(computer.events, QStringList{u"+1234:5678 A"_s});
        QCOMPARE(computer.openings, 1);
        QVERIFY(!computer.pending());
        QVERIFY2(!computer.tracker.nextTime(), "nothing to wake up for");

        computer.remove(Computer::node(0, u"A"_s));
        computer.remove(Computer::node(0, u"A"_s));
        QCOMPARE(computer.events.size(), 2);
    }

    void blockedNodeIsLoggedOnceAndPickedUpLater()
    {
        Computer computer;
        computer.error = EPERM;
        computer.add(Computer::node(0, u"A"_s));
        computer.pass(9900ms);
        QVERIFY(computer.pending());
        QVERIFY(computer.tracker.blocked().isEmpty());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Lens cannot be used.*container"_s));
        computer.pass(200ms);
        QVERIFY(!computer.pending());
        const QList<BWBlockedCamera> blocked{{u"Lens"_s, {BWStartProblem::Kind::NoPermission}}};
        QCOMPARE(computer.tracker.blocked(), blocked);

        QTest::failOnWarning(QRegularExpression(u".*"_s));
        computer.pass(60s);
        QVERIFY2(computer.openings < 80, "retries too often");
        computer.error = 0;
        computer.tracker.accessChanged("/dev/video1", computer.now); // another node's
        computer.pass();
        QVERIFY(computer.events.isEmpty());
        computer.tracker.accessChanged("/dev/video0", computer.now);
        computer.pass();
        QCOMPARE(computer.events.size(), 1);
        QVERIFY(computer.tracker.blocked().isEmpty());

        computer.error = EACCES;
        computer.add(Computer::node(2, u"B"_s));
        computer.pass(1s);
        computer.error = 0;
        computer.pass(1s);
        QVERIFY2(computer.events.size() == 2, "permissions can come unnoticed");
    }

    void oldEventsAreIgnored()
    {
        // Plugged in, out, and in again at the same place before udev has done anything.
        Computer computer;
        const BWVideoNode node = Computer::node(0, u"A"_s);
        computer.kernelAdds(node);
        const quint64 first = computer.sequence;
        computer.remove(node);
        computer.tracker.nodeAppeared(node, true, first, computer.now);
        computer.pass();
        QVERIFY2(computer.events.isEmpty() && !computer.pending(), "it is gone already");

        computer.kernelAdds(node);
        computer.tracker.gone(node.sysPath, first + 1);
        QVERIFY2(computer.pending(), "the one that went is not this one");
        computer.udevAdds(node);
        computer.pass();
        computer.tracker.gone(node.sysPath, first + 1);
        QCOMPARE(computer.events.size(), 1);
    }

    void camerasWithOneSerialNumberHaveDifferentIdentifiers()
    {
        Computer computer;
        for (const int number : {0, 2, 4})
            computer.add(Computer::node(number, u"0001"_s));
        computer.pass();
        QCOMPARE(computer.events.size(), 3);
        QCOMPARE(computer.events.removeDuplicates(), 0);
    }

    void interfaceIsPendingUntilItsNodeComes()
    {
        Computer computer;
        BWVideoNode interface;
        interface.sysPath = "/sys/usb1/1-1/1-1:1.0";
        interface.usbId = u"1234:5678"_s;
        computer.tracker.interfaceAppeared(interface, computer.now);
        computer.pass(5s);
        QVERIFY(computer.pending());
        computer.add(Computer::node(0, u"A"_s));
        computer.pass();
        QVERIFY(!computer.pending());
        QCOMPARE(computer.openings, 1);

        interface.sysPath = "/sys/usb1/1-2/1-2:1.0";
        computer.tracker.interfaceAppeared(interface, computer.now);
        computer.tracker.gone(interface.sysPath, computer.sequence + 1);
        QVERIFY(!computer.pending());
        computer.tracker.interfaceAppeared(interface, computer.now);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"1234:5678.*no video node.*modprobe"_s));
        computer.pass(30s);
        QVERIFY(!computer.pending());

        using Kind = BWStartProblem::Kind;
        QCOMPARE(computer.tracker.blocked(), (QList<BWBlockedCamera>{{u"USB 1234:5678"_s, {Kind::NoDriver}}}));
        interface.driver = u"usbfs"_s; // a program has taken it
        computer.tracker.interfaceAppeared(interface, computer.now);
        QCOMPARE(computer.tracker.blocked().value(0).problem.kind, Kind::InUse);
        interface.driver = u"uvcvideo"_s;
        computer.tracker.interfaceAppeared(interface, computer.now);
        QCOMPARE(computer.tracker.blocked().value(0).problem.kind, Kind::Failed);
    }

    void lostEventsAreRecovered()
    {
        Computer computer;
        computer.add(Computer::node(0, u"A"_s));
        computer.add(Computer::node(2, u"B"_s));
        computer.pass();
        computer.tracker.keepOnly({Computer::node(0, u"A"_s).sysPath});
        QCOMPARE(computer.events.mid(2), QStringList{u"-1234:5678 B"_s});

        BWVideoNode other = Computer::node(0, u"C"_s); // plugged in where A was
        other.usbDevice = 7;
        computer.tracker.nodeAppeared(other, true, 0, computer.now);
        computer.pass();
        QCOMPARE(computer.events.mid(3), (QStringList{u"-1234:5678 A"_s, u"+1234:5678 C"_s}));
    }
};

QTEST_GUILESS_MAIN(NodeTracker)
#include "tst_NodeTracker.moc"
