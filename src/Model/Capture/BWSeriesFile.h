// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Capture/BWSeriesFiles.h"
#include "Model/Capture/BWSeriesPlan.h"
#include "Utils/BWTemporaryFiles.h"
#include "Utils/BWWorkerPool.h"

#include <memory>
#include <optional>
#include <QDateTime>
#include <QString>
#include <QUrl>

/// How far a series has come, for a later run of the program.
struct BWSeriesRecord {
    BWSeriesPlan plan{};
    QUrl album{};
    QDateTime first{}; ///< when its first picture was due
    qint64 saved = 0;
    qint64 missed = 0;
    BWSeriesFiles files{}; ///< its pictures

    /// Whether it needs no more pictures, or its time has passed by then.
    bool isOver(const QDateTime &now) const;
};

/// The record of the running series in a small file, which each change replaces atomically; no file while none runs. Only
/// one program uses it at a time. GUI thread; the disk is written in the background.
class BWSeriesFile {
public:
    /// Touches no disk.
    explicit BWSeriesFile(const QString &path);
    /// Waits a little for the last change.
    ~BWSeriesFile() = default;

    /// False while another program uses the file.
    bool claim();
    /// Nothing without a file; and for a damaged one, which is logged.
    std::optional<BWSeriesRecord> read() const;
    /// Without a claim, both do nothing. Of changes that come faster than the disk takes them, the newest counts.
    void store(const BWSeriesRecord &record);
    void remove() { write({}); }

private:
    struct Writer;
    void write(const QByteArray &content);

    const QString m_path;
    std::shared_ptr<BWFileClaim> m_claim;
    const std::shared_ptr<Writer> m_writer; // shared with the thread
    BWWorkerPool m_disk;
};
