// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWCaptureController.h"
#include "Model/Capture/BWCaptureNotice.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What the user reads about captures.
class TestCaptureNotices : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void notices_data()
    {
        using End = BWRecordingStatus::End;
        const Rows<BWCaptureResult, QString, QString> row;
        const auto album = std::make_shared<BWAlbum>(QUrl(u"file:///Patient 42"_s));
        const auto standard = std::make_shared<BWAlbum>(QUrl(u"file:///old name"_s));
        standard->setIsDefaultAlbum(true);
        const auto movie = [&](End end, uint64_t leftOut = 0, const QString &camera = {}) {
            BWRecordingStatus status;
            status.end = end;
            status.framesLeftOut = leftOut;
            return BWCaptureResult{BWMediaType::Video, QUrl(u"file:///Patient 42/v.mov"_s), {}, status, camera, album};
        };
        const auto lost = [](BWCaptureResult result, const QUrl &left = {}) {
            result.file.clear();
            result.left = left;
            return result;
        };
        const QUrl left(u"file:///var/tmp/t.mov"_s);
        const QString notSaved = u"The capture could not be saved"_s;
        const QString keptHere =
            u"It could not be copied into the album. Please check that the album folder exists and "
            "has free space. The capture is kept here:\n/var/tmp/t.mov"_s;
        const QString slow = u"Pictures left out because the disk or the computer was too slow: 12"_s;
        const QString untilThen = u"What was recorded up to that point is in the album:\nPatient 42 · v.mov"_s;
        const QString videoSaved = u"Video saved · Patient 42 · v.mov"_s;
        const QUrl image(u"file:///old name/i.jpg"_s);
        row("snapshot", BWCaptureResult{BWMediaType::Image, image, {}, {}, {}, standard}, QString(),
            u"Snapshot saved · Default Album · i.jpg"_s);
        row("slow disk", movie(End::Asked, 12), QString(), videoSaved + u'\n' + slow);
        row("unplugged, with a name", movie(End::CameraGone, 0, u"Microscope (2)"_s), QString(),
            videoSaved + u"\nThe recording ended because “Microscope (2)” was unplugged."_s);
        row("full disk", movie(End::DiskFull, 12), u"The recording ended because the disk is full"_s,
            untilThen + u'\n' + slow);
        row("not in the album", lost(movie(End::Asked), left), notSaved, keptHere);
        row("full disk, not in the album", lost(movie(End::DiskFull), left), notSaved,
            u"The recording ended because the disk is full.\n\n"_s + keptHere);
        row("nothing at all", lost(movie(End::Failed)), notSaved,
            u"It could not be written to the disk. Please check that there is free "
            "space, then take it again."_s);
        row("no library for movies", lost(movie(End::NoMovies)), u"Videos cannot be recorded"_s,
            u"A part of BrimwellPro that videos need is missing or damaged. Please install BrimwellPro again. Until "
            "then you can take snapshots."_s);
        row("no picture came", lost(movie(End::CameraGone)), QString(),
            u"Nothing was recorded, because the camera sent no picture.\n"
            "The recording ended because the camera was unplugged."_s);
    }
    void notices()
    {
        const auto [result, title, text] = Rows<BWCaptureResult, QString, QString>::current();
        BWLocalizationManager texts(QString(), {u"en"_s});
        const BWCaptureNotice notice = BWCaptureNotice::of(result, texts);
        QCOMPARE(notice.title, title);
        QCOMPARE(notice.text, text);
        QCOMPARE(notice.title.isNull(), notice.title.isEmpty());
    }

    void progress()
    {
        const auto text = [](int milliseconds, qint64 bytes, const QString &language) {
            BWRecordingStatus status;
            status.duration = std::chrono::milliseconds(milliseconds);
            status.bytes = bytes;
            return BWCaptureNotice::progressText(status, QLocale(language));
        };
        QCOMPARE(text(59'999, 99'600, u"en"_s), u"0:59 · 100 kB"_s);
        QCOMPARE(text(65'000, 999'000'000, u"en"_s), u"1:05 · 999 MB"_s);
        QCOMPARE(text(3'725'000, 12'340'000'000, u"de"_s), u"1:02:05 · 12,3 GB"_s);
    }
};

QTEST_GUILESS_MAIN(TestCaptureNotices)
#include "tst_BWCaptureNotice.moc"
