// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWCameraListing.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"
#include "Model/Settings/BWSettingsFile.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QTextStream>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

using Control = BWV4L2Listing::Control;
using Mode = BWV4L2Listing::Mode;
using Node = BWV4L2Listing::Node;

constexpr int width = 96;
constexpr int indent = 12; ///< of the text beside a label

/// The words in sequence, wrapped into lines below each other. Prints nothing if there are none.
void printField(const QString &label, const QStringList &words, int margin, QTextStream &out)
{
    QString line = "  "_L1 + label;
    bool isEmpty = true;
    for (const QString &word : words) {
        if (isEmpty || line.size() + 1 + word.size() > width) {
            if (!isEmpty)
                out << line << '\n';
            line = (isEmpty ? line : QString()).leftJustified(margin);
        } else {
            line += u' ';
        }
        line += word;
        isEmpty = false;
    }
    if (!isEmpty)
        out << line << '\n';
}

void printText(const QString &label, const QString &text, QTextStream &out)
{
    printField(label, text.split(u' ', Qt::SkipEmptyParts), indent, out);
}

/// The sizes and rates of each format. Formats that the program cannot show are only named.
void printModes(const QList<Mode> &modes, QTextStream &out)
{
    QStringList others;
    QString label = u"pictures"_s;
    for (qsizetype i = 0; i < modes.size();) {
        const Mode &first = modes[i];
        QStringList sizes;
        for (; i < modes.size() && modes[i].format == first.format; ++i) {
            const QString rate = u" (%1/s)"_s.arg(modes[i].framesPerSecond, 0, 'g', 3);
            sizes.append(modes[i].resolution.resolutionString() + (modes[i].framesPerSecond > 0 ? rate : QString()));
        }
        if (!first.isShown) {
            others.append(first.format);
            continue;
        }
        printField(label.leftJustified(indent - 2) + first.format, sizes, indent + 6, out);
        label.clear();
    }
    others.removeDuplicates();
    printField(u"not shown"_s, others, indent, out);
}

void printControls(const QList<Control> &controls, QTextStream &out)
{
    if (controls.isEmpty())
        return;
    out << u"  %1%2 %3 %4  range\n"_s.arg(u"controls"_s, -(indent - 2))
               .arg(QString(), -27)
               .arg(u"now"_s, 7)
               .arg(u"default"_s, 8);
    for (const Control &control : controls) {
        const QString id = control.id != 0 ? u"0x%1"_s.arg(control.id, 8, 16, QLatin1Char('0')) : QString();
        out << u"    %1 %2 %3 %4  %5 to %6"_s.arg(control.name, -24)
                   .arg(id, -10)
                   .arg(control.value, 7)
                   .arg(control.defaultValue, 8)
                   .arg(control.min)
                   .arg(control.max);
        if (control.step > 1)
            out << " by " << control.step;
        out << '\n';
        if (!control.menu.isEmpty())
            printField({}, {control.menu.join(", "_L1)}, indent, out);
    }
}

void printNode(const Node &node, QTextStream &out)
{
    out << (node.path.isNull() ? u"No video node"_s : node.path)
        << (node.name.isEmpty() ? QString() : "  "_L1 + node.name) << '\n';
    if (node.type.isNull())
        printText(u"not used"_s, node.why, out);
    else
        printText(
            u"used as"_s,
            u"%1%2, because %3"_s.arg(node.type, node.isBridgeChip ? u" with bridge chip"_s : QString(), node.why),
            out);
    // There is nothing more to say about a node that is not a camera.
    if (node.modes.isEmpty() && node.problems.isEmpty())
        return;
    for (const QString &problem : node.problems)
        printText(u"problem"_s, problem, out);
    if (!node.heldBy.isNull())
        printText(u"open in"_s, node.heldBy, out);
    printText(u"driver"_s, node.driver, out);
    if (!node.usbId.isNull())
        printText(u"USB"_s,
                  node.serial.isEmpty() ? u"%1, no serial number"_s.arg(node.usbId)
                                        : u"%1, serial number %2"_s.arg(node.usbId, node.serial),
                  out);
    printText(u"port"_s, node.port, out);
    printText(u"button"_s, node.button, out);
    printText(u"norms"_s, node.norms.join(u' '), out);
    printModes(node.modes, out);
    printControls(node.controls, out);
}

void printCamera(const BWDetectedCamera &camera, QTextStream &out)
{
    const BWCameraDescription &description = *camera.cameraDescription();
    QStringList resolutions;
    for (const BWResolution &resolution : description.availableResolutions)
        resolutions.append(resolution.resolutionString());
    out << description.name << '\n'
        << "  device:      " << camera.uniqueIdentifier() << '\n'
        << "  type:        " << description.identifierForProducts << (description.isBridgeChip ? " (bridge chip)" : "")
        << '\n'
        << "  resolutions: " << resolutions.join(u' ') << '\n'
        << "  controls:\n";
    for (const BWControlInfo &control : camera.open()->controls())
        out << u"    %1 %2 from %3 to %4\n"_s.arg(BWCameraSetting::nameForSettingIdentifier(control.identifier), -24)
                   .arg(control.value, 5)
                   .arg(control.min)
                   .arg(control.max);
}

} // namespace

QStringList BWCameraListing::cameraTables()
{
    return {QFileInfo(BWSettingsFile::defaultPath()).path() + "/cameras.json"_L1, u":/cameras.json"_s};
}

void BWCameraListing::printNodes(const QList<Node> &nodes, QTextStream &out)
{
    for (qsizetype i = 0; i < nodes.size(); ++i) {
        if (i > 0)
            out << '\n';
        printNode(nodes[i], out);
    }
    if (nodes.isEmpty())
        out << "No camera detected\n";
}

void BWCameraListing::printSimulated(const QList<BWSimulatedCameraOptions> &cameras, QTextStream &out)
{
    int count = 0;
    std::vector<std::unique_ptr<BWCameraBackend>> backends;
    backends.push_back(BWSimulatedBackend::create(cameras));
    BWCameraDetector detector(BWCameraDetector::supportedDescriptions(), std::move(backends));
    detector.setCameraFoundBlock([&](const BWDetectedCameraPtr &camera) {
        ++count;
        printCamera(*camera, out);
    });
    detector.startCamerasDetection();

    // Cameras are reported through the event loop; those being prepared get a little time.
    constexpr int patience = 3000; // milliseconds
    QElapsedTimer elapsed;
    elapsed.start();
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!detector.pendingDevices() || elapsed.elapsed() > patience)
            loop.quit();
    });
    poll.start(100);
    loop.exec();
    if (count == 0)
        out << "No camera detected\n";
}
