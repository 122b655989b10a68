// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasurementFile.h"

#include <utility>

using Problem = BWPictureProblem;

namespace {

constexpr std::chrono::milliseconds patience{100}; // with work that has just reported, or with a disk at the very end

BWMeasurement mapped(BWMeasurement measurement, const QTransform &transform)
{
    for (QPointF &point : measurement.points)
        point = transform.map(point);
    return measurement;
}

/// What the file says counts; otherwise it cannot be known.
bool isReadable(Problem problem)
{
    return problem == Problem::None || problem == Problem::Partly;
}

} // namespace

BWMeasurementFile::Contents BWMeasurementFile::Contents::merged(const Contents &before, const Contents &ours,
                                                                const Contents &theirs)
{
    if (theirs == before)
        return ours;
    Contents all = theirs;
    QList<BWMeasurement> removed = before.measurements;
    QList<BWMeasurement> added;
    for (const BWMeasurement &one : ours.measurements) {
        if (!removed.removeOne(one))
            added.append(one);
    }
    for (const BWMeasurement &one : removed)
        all.measurements.removeOne(one);
    for (const BWMeasurement &one : added) {
        if (!theirs.measurements.contains(one))
            all.measurements.append(one);
    }
    if (ours.calibration != before.calibration) {
        all.calibration = ours.calibration;
        all.unit = ours.unit;
    }
    return all;
}

BWMeasurementFile::BWMeasurementFile(const QUrl &file, BWClock &clock) : m_file(file), m_clock(clock) { }

BWMeasurementFile::~BWMeasurementFile()
{
    if (m_calm)
        m_calm->cancel();
}

void BWMeasurementFile::read()
{
    m_mustRead = true;
    next();
}

void BWMeasurementFile::change(const Contents &contents)
{
    if (contents == m_now)
        return;
    m_now = contents;
    if (m_calm)
        m_calm->cancel();
    m_calm = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            m_calm.reset();
            save();
        },
        calm, m_clock);
}

void BWMeasurementFile::save()
{
    if (m_calm)
        std::exchange(m_calm, {})->cancel();
    m_mustSave = true;
    next();
}

BWPictureProblem BWMeasurementFile::problem() const
{
    const bool isOfReading =
        m_problem == Problem::Partly || m_problem == Problem::DescriptionDamaged || m_problem == Problem::Newer;
    return isOfReading || !isSaved() ? m_problem : Problem::None;
}

/// One after the other.
void BWMeasurementFile::next()
{
    if (m_thread)
        return;
    // What the file says comes first.
    if (std::exchange(m_mustRead, false) || (m_read.fingerprint.isNull() && m_mustSave && !isSaved()))
        startReading();
    else if (std::exchange(m_mustSave, false) && !isSaved())
        startSaving();
}

void BWMeasurementFile::startReading()
{
    // A thread for each, as this one may wait for its disk for ever.
    m_thread = std::make_unique<BWWorkerPool>(1, patience);
    m_thread->run([this, file = m_file, alive = m_alive.watch()] {
        const BWPictureFile::Read read = BWPictureFile::read(file);
        BWMainQueue::post(alive, [this, read] {
            m_thread.reset();
            take(read);
            next();
            Q_EMIT done();
        });
    });
}

void BWMeasurementFile::take(const BWPictureFile::Read &read)
{
    m_problem = read.problem;
    if (read.fingerprint.isNull()) {
        m_mustSave = false; // there is no file to save it in
        return;
    }
    m_mustSave = m_mustSave || !isSaved();
    m_read.identity = read.identity; // a copy may have taken the place
    if (read.fingerprint == m_read.fingerprint)
        return;
    m_read = read;
    const QSizeF asStored = read.size;
    const bool isTurned = !read.turn.isNone() && !asStored.isEmpty();
    const QSizeF shown = isTurned && read.turn.degrees % 180 != 0 ? asStored.transposed() : asStored;
    m_toShown = {};
    m_widths = 1;
    if (isTurned) {
        m_widths = shown.width() / asStored.width();
        // From right to left.
        m_toShown.scale(1 / shown.width(), 1 / shown.width());
        m_toShown.translate(shown.width() / 2, shown.height() / 2);
        m_toShown.rotate(read.turn.degrees);
        m_toShown.scale(read.turn.mirrored ? -1 : 1, 1);
        m_toShown.translate(-asStored.width() / 2, -asStored.height() / 2);
        m_toShown.scale(asStored.width(), asStored.width());
    }
    m_shownRead = {read.metadata.measurements, read.metadata.calibration, read.metadata.unit};
    for (BWMeasurement &one : m_shownRead.measurements)
        one = mapped(one, m_toShown);
    m_shownRead.calibration.millimetresPerWidth *= m_widths;

    const Contents before = std::exchange(m_saved, m_shownRead);
    if (!isReadable(read.problem))
        return; // what is known stays
    const Contents all = Contents::merged(before, m_now, m_saved);
    m_mustSave = m_mustSave || all != m_saved;
    if (all == m_now)
        return;
    m_now = all;
    Q_EMIT contentsRead();
}

void BWMeasurementFile::startSaving()
{
    m_thread = std::make_unique<BWWorkerPool>(1, patience);
    m_saves = true;
    m_thread->run([this, file = m_file, contents = m_now, metadata = stored(m_now), fingerprint = m_read.fingerprint,
                   identity = m_read.identity, alive = m_alive.watch()] {
        const BWPictureFile::Saved saved = BWPictureFile::save(file, metadata, fingerprint, identity);
        BWMainQueue::post(alive, [this, contents, saved] {
            m_thread.reset();
            m_saves = false;
            m_problem = saved.problem;
            if (saved.problem == Problem::None) {
                m_saved = contents;
                m_read.fingerprint = saved.fingerprint;
                m_read.identity = saved.identity;
            }
            next();
            Q_EMIT done();
        });
    });
}

/// As it goes into the file. What is still as it was read gets the very numbers of then.
BWPictureMetadata BWMeasurementFile::stored(const Contents &contents) const
{
    BWPictureMetadata metadata = m_read.metadata;
    const QTransform toStored = m_toShown.inverted();
    metadata.measurements.clear();
    for (const BWMeasurement &one : contents.measurements) {
        const qsizetype known = m_shownRead.measurements.indexOf(one);
        metadata.measurements.append(known >= 0 ? m_read.metadata.measurements[known] : mapped(one, toStored));
    }
    if (contents.calibration != m_shownRead.calibration) {
        metadata.calibration = contents.calibration;
        metadata.calibration.millimetresPerWidth /= m_widths;
        metadata.unit = contents.unit;
    }
    return metadata;
}
