// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/finding/BWNodeTracker.h"

#include "base/BWDriverLog.h"
#include "v4l2/finding/BWNodeAccess.h"

#include <algorithm>
#include <QFile>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// While the user may be waiting for the camera, and later, when only the user's own action can change anything.
constexpr std::chrono::milliseconds soon{250};
constexpr std::chrono::seconds later{5};

} // namespace

BWNodeTracker::BWNodeTracker(BWCameraMaker maker, BWCameraBackend::Events events, std::function<bool()> udevRuns)
    : m_maker(std::move(maker)), m_events(std::move(events)), m_udevRuns(std::move(udevRuns))
{
}

void BWNodeTracker::interfaceAppeared(const BWVideoNode &usb, Time now)
{
    if (!m_maker.mayBeCamera(usb))
        return;
    if (const auto known = m_entries.find(usb.sysPath); known != m_entries.end()) {
        known->second.node.driver = usb.driver;
        return;
    }
    Entry entry;
    entry.node = usb;
    entry.isInterface = true;
    entry.since = now;
    entry.next = now + patience;
    m_entries.emplace(usb.sysPath, entry);
}

void BWNodeTracker::nodeAppeared(const BWVideoNode &node, bool initialised, quint64 sequence, Time now)
{
    if (sequence != 0 && sequence < m_lastGone.value(node.sysPath))
        return;
    std::erase_if(m_entries, [&node](const auto &each) {
        return each.second.isInterface && node.sysPath.startsWith(each.first + '/');
    });
    // Another device in the place of an old one whose removal was missed?
    const auto old = m_entries.find(node.sysPath);
    if (old != m_entries.end() && old->second.node.usbDevice != node.usbDevice)
        drop(old);
    const auto [place, isNew] = m_entries.try_emplace(node.sysPath);
    Entry &entry = place->second;
    if (isNew) {
        entry.node = node;
        entry.since = now;
        entry.settled = !m_maker.mayBeCamera(node);
    }
    entry.initialised = entry.initialised || initialised;
    entry.sequence = std::max(entry.sequence, sequence);
    entry.next = now;
}

void BWNodeTracker::gone(const QByteArray &sysPath, quint64 sequence)
{
    m_lastGone[sysPath] = std::max(m_lastGone.value(sysPath), sequence);
    const auto entry = m_entries.find(sysPath);
    if (entry != m_entries.end() && entry->second.sequence <= sequence)
        drop(entry);
}

void BWNodeTracker::keepOnly(const QSet<QByteArray> &sysPaths)
{
    for (auto entry = m_entries.begin(); entry != m_entries.end();) {
        const auto next = std::next(entry);
        if (!sysPaths.contains(entry->first))
            drop(entry);
        entry = next;
    }
}

void BWNodeTracker::accessChanged(const QByteArray &path, Time now)
{
    for (auto &[folder, entry] : m_entries) {
        if (entry.node.path == path && !entry.isInterface)
            entry.next = now;
    }
}

void BWNodeTracker::advance(Time now)
{
    for (auto &[folder, entry] : m_entries) {
        if (entry.settled || entry.next > now)
            continue;
        if (isAttempted(entry, now))
            attempt(entry);
        if (entry.settled)
            continue;
        const bool isLate = now >= entry.since + patience;
        if (isLate && !entry.complained)
            complain(entry);
        entry.next = now + (isLate ? std::chrono::milliseconds(later) : soon);
    }
}

std::optional<BWNodeTracker::Time> BWNodeTracker::nextTime() const
{
    std::optional<Time> time;
    for (const auto &[folder, entry] : m_entries) {
        if (!entry.settled && !(entry.isInterface && entry.complained))
            time = std::min(time.value_or(entry.next), entry.next);
    }
    return time;
}

bool BWNodeTracker::pending(Time now) const
{
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [now](const auto &each) { return !each.second.settled && now < each.second.since + patience; });
}

QList<BWBlockedCamera> BWNodeTracker::blocked() const
{
    QList<BWBlockedCamera> blocked;
    for (const auto &[folder, entry] : m_entries) {
        if (!entry.settled && entry.complained)
            blocked.append({m_maker.nameOf(entry.node), problemOf(entry)});
    }
    return blocked;
}

BWStartProblem BWNodeTracker::problemOf(const Entry &entry)
{
    using Kind = BWStartProblem::Kind;
    if (!entry.isInterface)
        return {BWNodeAccess::problemKind(entry.error)};
    if (entry.node.driver.isNull())
        return {Kind::NoDriver};
    return {entry.node.isTakenByProgram() ? Kind::InUse : Kind::Failed};
}

bool BWNodeTracker::isAttempted(const Entry &entry, Time now) const
{
    return !entry.isInterface && (entry.initialised || now >= entry.since + patience || !m_udevRuns());
}

void BWNodeTracker::attempt(Entry &entry)
{
    const std::optional<BWVideoAbilities> abilities = m_maker.read(entry.node, entry.error);
    if (abilities)
        settle(entry, *abilities);
}

void BWNodeTracker::settle(Entry &entry, const BWVideoAbilities &abilities)
{
    entry.settled = true;
    const BWVideoNode &node = entry.node;
    const BWCameraKind kind = m_maker.kindOf(node, abilities);
    const QString identifier = uniqueIdentifier(node);
    entry.camera = m_maker.make(node, abilities, kind, identifier);
    if (!entry.camera) {
        qCInfo(bwDriver).noquote() << u"%1 (%2) is not used as a camera: %3"_s.arg(QFile::decodeName(node.path),
                                                                                   node.name, kind.why);
        return;
    }
    const QByteArray before = std::exchange(m_known[identifier], node.path);
    const QString cameBack =
        before.isNull() ? QString() : u"; it came back, and was %1 before"_s.arg(QFile::decodeName(before));
    qCInfo(bwDriver).noquote() << u"%1 (%2) is used as %3, because %4%5"_s.arg(
        QFile::decodeName(node.path), node.name, entry.camera->cameraDescription()->name, kind.why, cameBack);
    m_events.found(entry.camera);
}

void BWNodeTracker::complain(Entry &entry) const
{
    entry.complained = true;
    const BWVideoNode &node = entry.node;
    if (entry.isInterface)
        qCWarning(bwDriver).noquote() << u"USB camera %1 (%2) at %3 has got no video node: %4"_s.arg(
            m_maker.nameOf(node), node.usbId, node.port, node.whyWithoutNode());
    else if (entry.error != 0)
        qCWarning(bwDriver).noquote() << u"Camera %1 cannot be used yet: %2"_s.arg(
            node.name, BWNodeAccess::problem(node.path, entry.error));
}

QString BWNodeTracker::uniqueIdentifier(const BWVideoNode &node) const
{
    const auto isTaken = [this](const QString &identifier) {
        return std::any_of(m_entries.begin(), m_entries.end(), [&identifier](const auto &each) {
            return each.second.camera && each.second.camera->uniqueIdentifier() == identifier;
        });
    };
    // Some makers give all their cameras the same serial number.
    QString identifier = node.identity();
    if (isTaken(identifier))
        identifier += u" at %1"_s.arg(node.port);
    const QString base = identifier;
    for (int number = 2; isTaken(identifier); ++number)
        identifier = u"%1 #%2"_s.arg(base).arg(number);
    return identifier;
}

void BWNodeTracker::drop(std::map<QByteArray, Entry>::iterator entry)
{
    const BWDetectedCameraPtr camera = entry->second.camera;
    m_entries.erase(entry);
    if (camera)
        m_events.removed(camera);
}
