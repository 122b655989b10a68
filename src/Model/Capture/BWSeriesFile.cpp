// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSeriesFile.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 longestRecord = 256 << 10; // of a file that may be anybody's
constexpr qint64 century = 36'525LL * 24 * 3600; // seconds; nanoseconds of it can still be counted

bool isPlausible(const BWSeriesRecord &record)
{
    const auto isCount = [&record](qint64 pictures) {
        return pictures >= 0 && pictures <= century / 2 / record.plan.interval.count();
    };
    return record.album.isLocalFile() && record.first.isValid() && isCount(record.saved) && isCount(record.missed)
        && std::abs(record.first.secsTo(QDateTime::currentDateTimeUtc())) <= century;
}

} // namespace

bool BWSeriesRecord::isOver(const QDateTime &now) const
{
    return plan.end == BWSeriesPlan::End::Duration ? first.addSecs(plan.duration.count()) <= now
                                                   : saved >= plan.pictures().value_or(saved + 1);
}

struct BWSeriesFile::Writer {
    void run();

    QString path;
    std::mutex mutex;
    std::optional<QByteArray> waiting; // to be written; empty: the file is to be removed
    bool isReported = false; // that it cannot be; the thread's alone
};

void BWSeriesFile::Writer::run()
{
    std::unique_lock lock(mutex);
    const std::optional<QByteArray> content = std::exchange(waiting, std::nullopt);
    lock.unlock();
    if (!content)
        return;
    if (content->isEmpty()) {
        QFile::remove(path);
        return;
    }
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    const bool isStored = file.open(QIODevice::WriteOnly) && file.write(*content) == content->size() && file.flush()
        && file.commit(); // which alone would not say that there was no room
    if (!isStored && !std::exchange(isReported, true))
        qCWarning(bwModel).noquote() << "Series: its progress cannot be stored in" << path << "-" << file.errorString();
    isReported = isReported && !isStored;
}

BWSeriesFile::BWSeriesFile(const QString &path) : m_path(path), m_writer(std::make_shared<Writer>())
{
    m_writer->path = path;
}

bool BWSeriesFile::claim()
{
    if (m_claim)
        return true;
    QDir().mkpath(QFileInfo(m_path).path());
    m_claim = BWFileClaim::create(m_path + u".use"_s); // the file itself is another one after each change
    return m_claim != nullptr;
}

std::optional<BWSeriesRecord> BWSeriesFile::read() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject json = QJsonDocument::fromJson(file.read(std::min(file.size(), longestRecord))).object();
    const std::optional<BWSeriesPlan> plan = BWSeriesPlan::fromJson(json.value(u"plan"_s).toObject());
    const BWSeriesRecord record{plan.value_or(BWSeriesPlan()),
                                QUrl::fromEncoded(json.value(u"album"_s).toString().toLatin1(), QUrl::StrictMode),
                                QDateTime::fromString(json.value(u"first"_s).toString(), Qt::ISODateWithMs),
                                json.value(u"saved"_s).toInteger(-1),
                                json.value(u"missed"_s).toInteger(-1),
                                BWSeriesFiles::fromJson(json.value(u"files"_s).toArray())};
    if (!plan || !isPlausible(record)) {
        qCWarning(bwModel).noquote() << "Series: its progress is damaged in" << m_path;
        return std::nullopt;
    }
    return record;
}

void BWSeriesFile::store(const BWSeriesRecord &record)
{
    const QJsonObject json{{u"plan"_s, record.plan.toJson()},
                           {u"album"_s, QString::fromLatin1(record.album.toEncoded())},
                           {u"first"_s, record.first.toUTC().toString(Qt::ISODateWithMs)},
                           {u"saved"_s, record.saved},
                           {u"missed"_s, record.missed},
                           {u"files"_s, record.files.toJson()}};
    write(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

void BWSeriesFile::write(const QByteArray &content)
{
    if (!m_claim)
        return;
    const std::lock_guard lock(m_writer->mutex);
    const bool isScheduled = std::exchange(m_writer->waiting, content).has_value();
    if (!isScheduled)
        m_disk.run([writer = m_writer] { writer->run(); });
}
