// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"
#include "Rows.h"
#include "SysfsTree.h"
#include "v4l2/device/BWVideoAbilities.h"
#include "v4l2/finding/BWCameraMaker.h"
#include "v4l2/finding/BWCameraTable.h"
#include "v4l2/finding/BWVideoNode.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

BWVideoAbilities capturing(const QList<BWResolution> &sizes)
{
    BWVideoAbilities abilities;
    abilities.captures = true;
    for (const BWResolution &size : sizes)
        abilities.modes.push_back({0, BWPixelFormat::YUYV, size, 0, {}});
    return abilities;
}

BWVideoNode usbCamera(const QString &usbId, const QString &name, const QString &driver = u"uvcvideo"_s)
{
    BWVideoNode node;
    node.usbId = usbId;
    node.name = name;
    node.driver = driver;
    return node;
}

QByteArray button(const QString &sysPath)
{
    BWVideoNode node;
    node.sysPath = sysPath.toUtf8();
    return node.buttonPath();
}

} // namespace

/// Which device is taken for what: entries of the tables, and what counts without one; what sysfs shows of it.
class CameraKind : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void entryThatFitsFirstCounts()
    {
        const BWCameraTable both = table(
            {uR"json({"cameras": [{"usb": "1234:abcd", "displayName": "Own"}, {"usb": "1234:*", "displayName": "Vendor"},
                {"name": "My Lens ? (*)", "displayName": "Pattern"}, {"name": "a.b", "displayName": "Dots"},
                {"driver": "em28xx", "name": "Both", "displayName": "Two conditions"}]})json"_s,
             uR"({"cameras": [{"usb": "1234:*", "displayName": "No"}, {"name": "Sec*", "displayName": "Of second file"}]})"_s});
        const auto entry = [&](const QString &usbId, const QString &name, const QString &driver = u"uvcvideo"_s) {
            const BWCameraRule *rule = both.ruleFor(usbCamera(usbId, name, driver));
            return rule ? rule->displayName : QString();
        };
        QCOMPARE(entry(u"1234:ABCD"_s, u"Any"_s), u"Own"_s);
        QCOMPARE(entry(u"1234:0001"_s, u"Any"_s), u"Vendor"_s);
        QCOMPARE(entry(u"0:0"_s, u"my lens 7 (rear)"_s), u"Pattern"_s);
        QVERIFY2(entry(u"0:0"_s, u"My Lens 77 (rear)"_s).isNull(), "? is one character");
        QVERIFY2(entry(u"0:0"_s, u"axb"_s).isNull(), "a dot is no pattern");
        QCOMPARE(entry(u"0:0"_s, u"Both"_s, u"em28xx"_s), u"Two conditions"_s);
        QVERIFY2(entry(u"0:0"_s, u"Both"_s).isNull(), "one of two conditions fits");
        QVERIFY2(entry({}, u"Any"_s, u"vivid"_s).isNull(), "not on USB");
        QCOMPARE(entry(u"0:0"_s, u"Second"_s), u"Of second file"_s);
    }

    void damageIsLoggedAndTheRestUsed_data()
    {
        const Rows<QString, QString> row; // the table, and where the mistake is
        const auto entry = [&row](const char *name, const QString &text) {
            row(name, u"{\"cameras\": [%1, {\"driver\": \"good\", \"ignore\": true}]}"_s.arg(text), u"entry 1"_s);
        };
        entry("unknown type", uR"({"usb": "1234:*", "type": "telescope"})"_s);
        entry("USB id", uR"({"usb": "12:*", "ignore": true})"_s);
        entry("mistyped condition", uR"({"vendor": "1234", "driver": "uvcvideo", "ignore": true})"_s);
        entry("no condition", uR"({"ignore": true})"_s);
        entry("no statement", uR"({"driver": "x"})"_s);
        entry("text for a flag", uR"({"driver": "x", "ignore": "yes"})"_s);
        entry("number for a text", uR"({"driver": 5, "ignore": true})"_s);
        entry("no object", u"5"_s);
        row("no JSON", u"{\"cameras\": [\n  {\"driver\": \"x\" \"ignore\": true}]}"_s, u"line 2, column 1\\d"_s);
        row("no list", u"[]"_s, {});
    }

    void damageIsLoggedAndTheRestUsed()
    {
        const auto [text, place] = Rows<QString, QString>::current();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("table1.json.*"_L1 + place));
        const BWCameraTable read = table({text, uR"({"cameras": [{"driver": "next", "ignore": true}]})"_s});
        QCOMPARE(int(read.rules().size()), text.contains(u"good"_s) ? 2 : 1);
    }

    void tableThatIsNoFileDoesNotBlock()
    {
        const QTemporaryDir folder;
        const QString pipe = folder.filePath(u"cameras.json"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path : {pipe, folder.path(), u"/dev/zero"_s}) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"no regular file"_s));
            QVERIFY(BWCameraTable::read({path}).rules().empty());
        }
    }

    void shippedTableIsValid()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        const BWCameraTable shipped = BWCameraTable::read({QStringLiteral(BW_CAMERA_TABLE)});
        const BWVideoNode receiver = usbCamera(u"eb1a:2861"_s, u"Receiver"_s, u"em28xx"_s);
        BWVideoAbilities abilities = capturing({{720, 480}});
        const BWCameraKind kind = BWCameraKind::of(receiver, abilities, shipped.ruleFor(receiver));
        QCOMPARE(kind.type, u"receptor_wireless_microscope"_s);
        QVERIFY(kind.bridgeChip);

        // The udev rules open the chips of the table, and no others.
        QFile file(QStringLiteral(BW_UDEV_RULES));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString rules = QString::fromUtf8(file.readAll());
        const auto usb =
            QRegularExpression(u"ATTR\\{idVendor\\}==\"(.*)\", \\\\\n +ATTR\\{idProduct\\}==\"(.*)\","_s).match(rules);
        QCOMPARE(rules.count(u"idVendor"_s), 1);
        QStringList opened;
        for (const QString &product : usb.captured(2).split(u'|'))
            opened.append(usb.captured(1) + u':' + product);
        for (const BWCameraRule &rule : shipped.rules()) {
            if (rule.bridgeChip.value_or(false) && !rule.usb.isNull())
                QVERIFY2(opened.removeOne(rule.usb), qPrintable(rule.usb));
        }
        QCOMPARE(opened, QStringList());
    }

    void abilitiesDecideWithoutAnEntry()
    {
        // sizes, driver, whether it has video norms; type, whether it has a bridge chip
        const std::tuple<QList<BWResolution>, QString, bool, QString, bool> rows[] = {
            {{{1280, 960}}, u"uvcvideo"_s, false, u"regular_microscope"_s, false},
            {{{640, 480}, {1280, 1024}}, u"uvcvideo"_s, false, u"high_resolution_microscope"_s, false},
            {{{2560, 1920}}, u"uvcvideo"_s, false, u"high_resolution_microscope"_s, false},
            {{{2592, 1944}, {640, 480}}, u"uvcvideo"_s, false, u"ultra_resolution_microscope"_s, false},
            {{{720, 576}}, u"em28xx"_s, true, u"receptor_wireless_microscope"_s, true},
            {{{720, 576}}, u"usbtv"_s, true, u"receptor_wireless_microscope"_s, false},
            {{{640, 480}}, u"em28xx"_s, false, u"regular_microscope"_s, false},
            {{}, u"uvcvideo"_s, true, {}, false}, // no format we show
        };
        for (const auto &[sizes, driver, norms, type, bridgeChip] : rows) {
            BWVideoAbilities abilities = capturing(sizes);
            if (norms)
                abilities.norms[1] = 0xff;
            const BWVideoNode node = usbCamera(u"1234:5678"_s, u"Camera"_s, driver);
            const BWCameraKind kind = BWCameraKind::of(node, abilities, nullptr);
            QCOMPARE(kind.type, type);
            QCOMPARE(kind.bridgeChip, bridgeChip);

            BWCameraRule rule;
            rule.type = u"dx20"_s;
            QCOMPARE(BWCameraKind::of(node, abilities, &rule).type, type.isNull() ? QString() : u"dx20"_s);
            rule.ignore = true;
            QVERIFY(BWCameraKind::of(node, abilities, &rule).type.isNull());
            abilities.captures = false;
            QVERIFY(BWCameraKind::of(node, abilities, nullptr).type.isNull());
        }
    }

    void describesTheOneDevice()
    {
        BWVideoAbilities abilities = capturing({{1600, 1200}, {320, 240}, {1600, 1200}});
        for (const int code : {int(BWSettingGain), int(BWSettingHue)}) {
            BWVideoControl control;
            control.info.identifier = code;
            abilities.controls.push_back(control);
        }
        const BWCameraKind kind{u"dx20"_s, true, u"Bench 3"_s, {}};
        const BWCameraDescriptionPtr one = kind.describe(abilities, BWCameraDetector::supportedDescriptions());
        QVERIFY(one);
        QCOMPARE(one->name + u',' + one->identifierForProducts, u"Bench 3,wired_ultra"_s);
        QCOMPARE(one->availableResolutions, (QList<BWResolution>{{320, 240}, {1600, 1200}}));
        QCOMPARE(one->acceptedSettings, (QList<int>{BWSettingHue, BWSettingGain}));
        QVERIFY(one->hasOwnName && one->isBridgeChip);
        QVERIFY2(!kind.describe(abilities, {BWCameraDetector::descriptionForRegularMicroscope()}), "not looked for");
    }

    void cameraWithoutNodeIsNamed()
    {
        SysfsTree tree;
        const QString device = tree.addUsbDevice(
            u"1.2"_s, {{u"idVendor"_s, u"1234"_s}, {u"idProduct"_s, u"00ab"_s}, {u"product"_s, u"Pen Scope"_s}});
        const QString interface = tree.addInterface(device, u"1.2"_s, u"none"_s);
        QFile::remove(interface + "/driver"_L1);
        tree.write(interface + "/bInterfaceClass"_L1, u"0e"_s);
        tree.write(interface + "/bInterfaceSubClass"_L1, u"01"_s);
        const auto node = BWVideoNode::readInterface(interface);
        QVERIFY(node);
        QCOMPARE(node->name, u"Pen Scope"_s);
        QVERIFY(node->driver.isNull());
        const BWCameraTable named = table({uR"({"cameras": [{"usb": "1234:00ab", "displayName": "Bench 3"}]})"_s});
        QCOMPARE(BWCameraMaker(named, {}).nameOf(*node), u"Bench 3"_s);
    }

    void nodeIsReadFromSysfs()
    {
        SysfsTree tree;
        const QString device = tree.addUsbDevice(u"1.2"_s,
                                                 {{u"idVendor"_s, u"EB1A"_s},
                                                  {u"idProduct"_s, u"2761"_s},
                                                  {u"serial"_s, u"SN 7"_s},
                                                  {u"devnum"_s, u"14"_s}});
        const QString second = tree.addInterface(device, u"1.2"_s, u"uvcvideo"_s);
        const auto node = BWVideoNode::read(tree.addVideoNode(second, 5, 1, u"Lens: Lens"_s));
        QVERIFY(node);
        QCOMPARE(u"%1,%2,%3,%4"_s.arg(QString::fromLatin1(node->path), node->name, node->driver, node->identity()),
                 u"/dev/video5,Lens: Lens,uvcvideo,eb1a:2761 SN 7 if2"_s);
        QVERIFY(node->index == 1 && node->usbDevice == 14);
        tree.write(device + "/serial"_L1, {});
        QCOMPARE(BWVideoNode::read(tree.addVideoNode(second, 6, 0, u"Lens"_s))->identity(),
                 u"eb1a:2761 usb-0000:00:14.0-1.2 if2"_s);

        const QString platform = tree.root() + "/devices/platform/tuner.0"_L1;
        const auto other = BWVideoNode::read(tree.addVideoNode(platform, 7, 0, u"tuner-1"_s));
        QVERIFY(other && other->usbId.isNull());
        QCOMPARE(other->port, u"tuner.0 tuner-1"_s);
        tree.write(platform + "/video4linux/radio0/uevent"_L1, u"DEVNAME=radio0"_s);
        QVERIFY2(!BWVideoNode::read(platform + "/video4linux/radio0"_L1), "a radio");
        QVERIFY2(!BWVideoNode::read(platform + "/video4linux/video9"_L1), "gone");
    }

    void findsTheButtonOfTheSameCamera()
    {
        // Bit 212 (KEY_CAMERA) alone, and a keyboard's many keys without it.
        const QString cameraKey = u"100000 0 0 0"_s;
        const QString otherKeys = u"ffffffff00000000 0 3ffffffff fffffffffffffffe"_s;
        SysfsTree tree;
        const QString hub = tree.addUsbDevice(u"1"_s, {{u"idVendor"_s, u"05e3"_s}});
        const auto addInput = [&tree](const QString &parent, int number, const QString &keys) {
            const QString input = u"%1/input/input%2"_s.arg(parent).arg(number);
            tree.write(input + "/capabilities/key"_L1, keys);
            tree.write(u"%1/event%2/dev"_s.arg(input).arg(number), u"13:67"_s);
        };
        addInput(hub + "/1-1:1.0"_L1, 3, cameraKey);
        const QString camera = tree.addUsbDevice(u"1.2"_s, {{u"idVendor"_s, u"eb1a"_s}});
        const QString interface = tree.addInterface(camera, u"1.0"_s, u"uvcvideo"_s);
        const QString node = tree.addVideoNode(interface, 0, 0, u"Camera"_s);

        QVERIFY2(button(node).isNull(), "the hub's button is another one's");
        addInput(camera + "/1-1.2:1.2"_L1, 4, otherKeys);
        QVERIFY2(button(node).isNull(), "has no camera key");
        addInput(camera + "/1-1.2:1.1"_L1, 9, cameraKey);
        QCOMPARE(button(node), "/dev/input/event9"_ba);
        addInput(interface, 2, cameraKey);
        QVERIFY2(button(node) == "/dev/input/event2", "that of the camera's own interface");
        QVERIFY(button(u"/sys/no/such/folder"_s).isNull());
    }

private:
    BWCameraTable table(const QStringList &texts)
    {
        QStringList files{m_files.root() + "/missing.json"_L1};
        for (const QString &text : texts) {
            files.append(u"%1/table%2.json"_s.arg(m_files.root()).arg(files.size()));
            m_files.write(files.last(), text);
        }
        return BWCameraTable::read(files);
    }

    SysfsTree m_files; ///< only a folder here
};

QTEST_GUILESS_MAIN(CameraKind)
#include "tst_CameraKind.moc"
