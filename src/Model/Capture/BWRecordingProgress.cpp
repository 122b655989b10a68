#include "Model/Capture/BWRecordingProgress.h"

using namespace Qt::StringLiterals;

namespace {

constexpr int64_t gigabyte = 1'000'000'000;

QString elapsed(std::chrono::seconds duration)
{
    const QLatin1Char zero('0');
    const qint64 seconds = duration.count();
    const QString end =
        u"%1:%2"_s.arg(seconds / 60 % 60, seconds < 3600 ? 1 : 2, 10, zero).arg(seconds % 60, 2, 10, zero);
    return seconds < 3600 ? end : u"%1:%2"_s.arg(seconds / 3600).arg(end);
}

} // namespace

QString BWRecordingProgress::text(const BWRecordingStatus &status, const QLocale &locale)
{
    const int decimals = status.bytes < gigabyte ? 0 : 1;
    return u"%1 · %2"_s.arg(elapsed(std::chrono::floor<std::chrono::seconds>(status.duration)),
                            locale.formattedDataSize(status.bytes, decimals, QLocale::DataSizeSIFormat));
}
