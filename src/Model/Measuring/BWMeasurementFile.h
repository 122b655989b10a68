// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Measuring/BWPictureFile.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <memory>
#include <QObject>
#include <QTransform>

/// What was measured in a picture's file: read from it, and kept in it a moment after each change. A thread of this object
/// waits for the disk, which may hang; nobody else does. GUI thread.
///
/// Nothing is lost: what cannot be saved stays here, and is tried again after the next change and by save(). Where the file
/// says something new when it is read again, both are put together.
class BWMeasurementFile : public QObject {
    Q_OBJECT

public:
    /// How long nothing changes before it is saved, in seconds.
    static constexpr double calm = 1;

    /// In the picture as it is shown, upright, whatever turn its file asks for.
    struct Contents {
        QList<BWMeasurement> measurements;
        BWCalibration calibration; ///< null: none. Of this picture alone: it has no other fields
        BWLengthUnit unit = BWLengthUnit::Millimetre; ///< of a new calibration

        /// A unit alone is no change.
        bool operator==(const Contents &other) const
        {
            return measurements == other.measurements && calibration == other.calibration;
        }
        /// What both say: where `ours` differs from `before`, that counts, else `theirs`; nothing that was added is left out.
        static Contents merged(const Contents &before, const Contents &ours, const Contents &theirs);
    };

    explicit BWMeasurementFile(const QUrl &file, BWClock &clock = BWClock::system());
    ~BWMeasurementFile() override;

    const QUrl &file() const { return m_file; }
    /// With all changes, saved or not.
    const Contents &contents() const { return m_now; }

    /// Reads what it says by now.
    void read();
    void change(const Contents &contents);
    /// What is not saved yet is saved now rather than in a moment.
    void save();

    bool isSaved() const { return m_now == m_saved; }
    /// Whether something is on its way into the file.
    bool isSaving() const { return m_saves || (m_thread && !isSaved()); }
    /// Whether it is being read or saved.
    bool isBusy() const { return m_thread != nullptr; }
    /// As far as it matters now: about what is in the file, or about saving, while something is not saved.
    BWPictureProblem problem() const;

Q_SIGNALS:
    /// contents() are others now, from the file.
    void contentsRead();
    /// Reading or saving is over.
    void done();

private:
    void next();
    void startReading();
    void startSaving();
    void take(const BWPictureFile::Read &read);
    BWPictureMetadata stored(const Contents &contents) const;

    const QUrl m_file;
    BWClock &m_clock;
    Contents m_now;
    Contents m_saved; // in the file, as far as it is known
    BWPictureFile::Read m_read; // the last that succeeded
    Contents m_shownRead; // the same, as it is shown
    QTransform m_toShown; // both in widths of the picture
    double m_widths = 1; // of the picture as it is stored, that the shown one is wide
    BWPictureProblem m_problem = BWPictureProblem::None;
    bool m_mustRead = false;
    bool m_mustSave = false;
    bool m_saves = false;
    DispatchAfterStrict::Handle m_calm;
    BWAliveToken m_alive;
    std::unique_ptr<BWWorkerPool> m_thread; // while it is read or saved
};
