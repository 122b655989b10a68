// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraManager.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "fault.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/Capture/BWSeriesFile.h"
#include "Model/Export/BWFileExport.h"
#include "Model/Export/BWMovieExport.h"
#include "Model/Export/BWZipExport.h"
#include "Model/Import/BWOldSettingsImporter.h"
#include "Model/Measuring/BWMeasurementFile.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Thumbnails/BWJpegPicture.h"
#include "Model/Thumbnails/BWThumbnails.h"
#include "MovieProbe.h"
#include "Rows.h"
#include "TestFolder.h"
#include "TestJpeg.h"

#include <cerrno>
#include <dlfcn.h>
#include <QDirIterator>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto arm = reinterpret_cast<int (*)(const fault *)>(dlsym(RTLD_DEFAULT, "fault_arm"));

const auto spare = reinterpret_cast<void (*)()>(dlsym(RTLD_DEFAULT, "fault_spare"));

/// What the user sees of a way.
struct Outcome {
    bool done;
    int told; ///< how often, of success or failure
};

using Files = QMap<QString, QByteArray>;

/// An album with a picture, settings and an archive, a camera, and the call that will fail.
class Bench {
public:
    explicit Bench(const fault &wanted) : m_fault(wanted)
    {
        std::strcpy(m_fault.where, QFile::encodeName(dir.path()).constData());
        dir.folder(u"temporary"_s);
        dir.folder(u"other"_s);
        qputenv("TMPDIR", dir.path(u"temporary"_s).toUtf8());
        static const QByteArray jpeg = TestJpeg::encode(TestJpeg::noise({640, 480}, 1));
        picture = dir.file(album + u"20240607_image_001.jpg"_s, jpeg);
        dir.file(u"settings.conf"_s, "[General]\nkept=yes\n");
        dir.file(u"old.zip"_s, QByteArray::fromHex("504b0506") + QByteArray(18, '\0'));
        other = dir.file(u"old.jpg"_s, jpeg);
    }

    ~Bench() { qputenv("TMPDIR", "/tmp"); }
    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    void begin()
    {
        m_before = files();
        arm(&m_fault);
    }
    Outcome end(bool done, int told)
    {
        hasFailed = arm(nullptr) != 0;
        m_after = files();
        return {done, told};
    }
    static bool wait(const std::function<bool()> &condition) { return QTest::qWaitFor(condition, 20'000); }

    /// What is no longer as it was, although it should be, or half there.
    QStringList damage(bool done) const
    {
        QStringList found;
        for (auto file = m_before.begin(); file != m_before.end(); ++file) {
            const bool isReplaced =
                m_after.contains(file.key()) ? isWhole(file.key()) : m_after.values().contains(*file);
            const bool mayChange = done || file.key() == settings(); // to which an import adds bit by bit
            if (m_after.value(file.key()) != *file && !(mayChange && isReplaced))
                found << u"lost: "_s + file.key();
        }
        for (const QString &name : m_after.keys()) {
            static const QRegularExpression temporary(u"/temporary/|\\.part$|/\\.[^/]*$|\\.conf\\.[^/]*$"_s);
            const bool isTemporary = temporary.match(name).hasMatch();
            const bool isMeant = isTemporary ? !done : done && !m_before.contains(name);
            if (!m_before.contains(name) && !name.endsWith(u".use"_s) && !(isMeant && isWhole(name)))
                found << u"left: "_s + name;
            if (!m_before.contains(name) && (int(QFile::permissions(name)) & 0x77) != 0)
                found << u"open to others: "_s + name;
        }
        return found;
    }

    QString settings() const { return dir.path(u"settings.conf"_s); }

    TestFolder dir;
    const QString album = u"BrimwellPro/Default Album/"_s;
    QUrl picture;
    QUrl other;
    bool hasFailed = false;

private:
    Files files() const
    {
        Files all;
        QDirIterator each(dir.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (each.hasNext()) {
            const QString name = each.next();
            all[name] = TestFolder::read(QUrl::fromLocalFile(name));
        }
        return all;
    }
    /// Of its kind; the beginning of an export, which says that it is one, is no kind.
    bool isWhole(const QString &name) const
    {
        const QByteArray bytes = m_after[name];
        const QString ending = QFileInfo(name).suffix();
        if (ending == u"jpg"_s)
            return !BWJpegPicture()
                        .whole({reinterpret_cast<const uint8_t *>(bytes.data()), size_t(bytes.size())}, 1 << 30)
                        .damaged;
        if (ending == u"mov"_s)
            return MovieProbe::framesIn(name) > 0;
        if (ending == u"zip"_s)
            return QProcess::execute(u"unzip"_s, {u"-tqq"_s, name}) == 0;
        if (ending == u"conf"_s)
            return BWSettingsFile(name).string(u"kept"_s) == u"yes"_s;
        return ending == u"png"_s ? !QImage(name).isNull()
                                  : ending != u"json"_s || !QJsonDocument::fromJson(bytes).isNull();
    }

    fault m_fault;
    Files m_before;
    Files m_after;
};

Outcome capture(Bench &bench, BWPixelFormat format, bool isMovie)
{
    BWSettingsFile defaults(bench.settings());
    BWAlbumManager albums(defaults, bench.dir.path());
    albums.prepare();
    QList<BWCaptureResult> results;
    BWCaptureController controller(albums,
                                   {[] {}, [](bool) {}, [&](const BWCaptureResult &result) { results << result; }});
    BWSimulatedCameraOptions options;
    options.pacing = BWSimulatedCameraOptions::Pacing::Manual;
    options.pixelFormat = format;
    const auto backend = BWSimulatedBackend::create({options});
    BWCameraManager cameras;
    BWCameraPtr camera;
    const auto push = [&](const std::function<bool()> &condition) {
        Bench::wait([&] {
            backend->cameras().first()->pushFrames(1);
            return condition();
        });
    };
    backend->start(
        {BWCameraDetector::descriptionForHighResolutionMicroscope()},
        {[&](const BWDetectedCameraPtr &found) { camera = cameras.addDetectedCamera(found); }, [](const auto &) {}});
    Bench::wait([&] { return camera != nullptr; });
    controller.prepareCamera(camera);
    camera->setOnCameraFrame([](auto &, auto &) { spare(); }); // the thread that draws the pictures
    camera->setResolution({640, 480}, {});
    camera->startWithCompletion({});
    Bench::wait([&] { return camera->started(); });
    push([&] { return camera->statistics().framesDelivered > 0; });
    bench.begin();
    if (isMovie) {
        controller.toggleRecording(camera);
        push([&] { return camera->recordingStatus().frames >= 4 || !camera->recording(); });
        if (camera->recording())
            controller.toggleRecording(camera);
    } else {
        controller.forceSnapshot(camera);
    }
    push([&] { return !results.isEmpty(); });
    cameras.removeDetectedCamera(camera->detectedCamera());
    camera.reset();
    QCoreApplication::processEvents();
    const BWCaptureResult last = results.value(0);
    // A movie that lacks pictures says so, and one without any does not say that there were none.
    const bool isSaid = !isMovie || last.recording.frames >= 4 || last.recording.end != BWRecordingStatus::End::Asked;
    return bench.end(!last.file.isEmpty() && isSaid, isSaid ? int(results.size()) : 0);
}

Outcome settings(Bench &bench)
{
    BWSettingsFile defaults(bench.settings());
    BWConfigManager config(defaults);
    BWCalibrations calibrations;
    calibrations.add(u"mx7"_s, {u"50x"_s, 8, 0.01, {}});
    bench.begin();
    config.setCalibrations(calibrations.toJson());
    return bench.end(config.isStored(), !config.isStored());
}

Outcome album(Bench &bench)
{
    BWSettingsFile defaults(bench.settings());
    BWAlbumManager albums(defaults, bench.dir.path());
    albums.prepare();
    bench.begin();
    albums.addAlbumFromPath(bench.dir.url(u"other"_s));
    return bench.end(defaults.isStored(), !defaults.isStored());
}

using Export = BWExportResult (*)(const QList<QUrl> &pictures, const QUrl &target, BWExportWatch &watch);
template <Export run>
Outcome exported(Bench &bench, const QString &name)
{
    BWFileExport thread;
    QList<BWExportResult> results;
    const QUrl target = bench.dir.url(name);
    const auto work = [target, pictures = QList{bench.picture, bench.other}](auto &watch) {
        return run(pictures, target, watch);
    };
    bench.begin();
    thread.start(work, target, [&](const BWExportResult &result) { results << result; });
    Bench::wait([&] { return !results.isEmpty(); });
    return bench.end(results.value(0).outcome == BWExportResult::Outcome::Done, int(results.size()));
}

BWExportResult copied(const QList<QUrl> &pictures, const QUrl &target, BWExportWatch &watch)
{
    return BWExportCopy::run(pictures[0], target, watch);
}

BWExportResult joined(const QList<QUrl> &pictures, const QUrl &target, BWExportWatch &watch)
{
    return BWMovieExport::joinPictures(pictures, 10, target, watch);
}

Outcome moved(Bench &bench, const QByteArray &newName)
{
    BWFileMoves moves([] {});
    QList<BWFileMoves::Result> results;
    const auto done = [&](const BWFileMoves::Result &result) { results << result; };
    bench.begin();
    if (newName.isNull())
        moves.move({bench.picture}, bench.dir.url(u"other"_s), done);
    else
        moves.rename(bench.picture, newName, done);
    Bench::wait([&] { return !results.isEmpty(); });
    return bench.end(results.value(0).files.size() == 1, int(results.size()));
}

Outcome measured(Bench &bench)
{
    BWMeasurementFile file(bench.picture);
    file.read();
    Bench::wait([&] { return !file.isBusy(); });
    file.change({{{u"length"_s, {{0.1, 0.1}, {0.35, 0.1}}, {}}}, {}, {}});
    bench.begin();
    file.save();
    Bench::wait([&] { return !file.isBusy(); });
    return bench.end(file.isSaved(), file.problem() == BWPictureProblem::None ? 0 : 1);
}

bool isShown(const Bench &bench)
{
    BWThumbnails::Options options;
    options.sharedFolder = bench.dir.path(u"cache"_s).toUtf8();
    BWThumbnails thumbnails([](const auto &) {}, options);
    thumbnails.request({bench.picture}, 256);
    Bench::wait([&] { return thumbnails.isIdle(); });
    const auto found = thumbnails.thumbnail(bench.picture);
    return found && found->kind == BWThumbnail::Kind::Picture;
}

Outcome thumbnail(Bench &bench)
{
    bench.begin();
    const bool done = isShown(bench);
    const Outcome outcome = bench.end(done, 1);
    return isShown(bench) ? outcome : Outcome{done, 0}; // without the fault it is made, whatever was noted of it
}

std::atomic<int> warnings = 0;

Outcome series(Bench &bench)
{
    const QString path = bench.dir.path(u"series.json"_s);
    bench.begin();
    warnings = 0;
    bool isClaimed = false;
    {
        BWSeriesFile file(path);
        isClaimed = file.claim();
        file.store({{}, bench.dir.url(bench.album), QDateTime::currentDateTime(), 2, 0, {}});
    }
    const auto record = BWSeriesFile(path).read();
    return bench.end(record.has_value(), warnings + !isClaimed);
}

Outcome imported(Bench &bench)
{
    BWSettingsFile defaults(bench.settings());
    BWConfigManager config(defaults);
    BWAlbumManager albums(defaults, bench.dir.path());
    albums.prepare();
    bench.begin();
    const auto file = BWOldSettingsFile::read(bench.dir.path(u"defaults.xml"_s));
    BWOldSettingsImporter::importByHand(file.settings, {bench.dir.url(u"other"_s)}, config, albums);
    const bool done = file.problem == BWOldSettingsFile::Problem::None && defaults.synchronize();
    return bench.end(done, done ? 0 : 1);
}

struct Way {
    const char *name;
    std::function<Outcome(Bench &)> run;
    int separate = false;
};

const QList<Way> ways{
    {"snapshot", [](Bench &b) { return capture(b, BWPixelFormat::MJPEG, false); }},
    {"raw snapshot, other disk", [](Bench &b) { return capture(b, BWPixelFormat::YUYV, false); }, true},
    {"recording", [](Bench &b) { return capture(b, BWPixelFormat::MJPEG, true); }},
    {"raw recording, other disk", [](Bench &b) { return capture(b, BWPixelFormat::YUYV, true); }, true},
    {"measurements", measured},
    {"settings", settings},
    {"album", album},
    {"import", imported},
    {"copy", [](Bench &b) { return exported<copied>(b, u"old.jpg"_s); }},
    {"archive", [](Bench &b) { return exported<BWZipExport::run>(b, u"old.zip"_s); }},
    {"movie of pictures", [](Bench &b) { return exported<joined>(b, u"new.mov"_s); }},
    {"rename", [](Bench &b) { return moved(b, "new name.jpg"); }},
    {"move", [](Bench &b) { return moved(b, {}); }},
    {"move to another disk", [](Bench &b) { return moved(b, {}); }, true},
    {"thumbnail", thumbnail},
    {"series", series},
};

const bool isLong = qEnvironmentVariableIsSet("BW_FAULTS");

} // namespace

/// Each way, with its first call of a kind failing, then its second one, until it has no more of them.
class TestFaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(arm, "needs failing_calls preloaded");
        const QString script = QStringLiteral(BW_IMPORT_FOLDER) + u"/make_archives.py"_s;
        QCOMPARE(QProcess::execute(u"python3"_s, {script, m_archives.path(), m_archives.path(u"home"_s)}), 0);
        qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &, const QString &) { warnings += type == QtWarningMsg; });
    }

    void nothingIsLost_data()
    {
        const Rows<qsizetype, int, int, bool> row; // the way; calls, their error, whether all that follow fail, too
        for (qsizetype i = 0; i < ways.size(); ++i) {
            const auto add = [&](const char *name, int calls, int error, bool lasting) {
                row(qPrintable(QLatin1String(ways[i].name) + u" | "_s + QLatin1String(name)), i, calls, error, lasting);
            };
            add("write", FAULT_WRITE, ENOSPC, false);
            add("half a write", FAULT_WRITE, 0, false);
            add("full disk", FAULT_WRITE | FAULT_OPEN, ENOSPC, true);
            add("sync", FAULT_SYNC, EIO, false);
            add("name", FAULT_NAME, EACCES, false);
            add("open", FAULT_OPEN, EACCES, false);
            add("memory", FAULT_MEMORY, ENOMEM, false);
            if (isLong) {
                add("write, EIO", FAULT_WRITE, EIO, false);
                add("dead disk", FAULT_WRITE | FAULT_OPEN | FAULT_SYNC | FAULT_NAME, EIO, true);
                add("no memory", FAULT_MEMORY, ENOMEM, true);
            }
        }
    }
    void nothingIsLost()
    {
        const auto [way, calls, error, lasting] = Rows<qsizetype, int, int, bool>::current();
        int done = 0;
        int told = 0;
        bool hasFailed = true;
        long nth = 0;
        while (hasFailed && nth < 200) {
            nth += isLong || nth < 6 ? 1 : 9; // many are alike
            Bench bench({calls, error, lasting, nth, 0, ways[way].separate, 128 << 10, {}});
            QVERIFY(QFile::copy(m_archives.path(u"defaults.xml"_s), bench.dir.path(u"defaults.xml"_s)));
            const Outcome outcome = ways[way].run(bench);
            hasFailed = bench.hasFailed;
            const QStringList damage = bench.damage(outcome.done);
            const bool isTold = outcome.told == 1 || (outcome.told == 0 && outcome.done);
            QVERIFY2(damage.isEmpty() && isTold && (outcome.done || hasFailed),
                     qPrintable(u"call %1: done %2, told %3, %4"_s.arg(nth)
                                    .arg(outcome.done)
                                    .arg(outcome.told)
                                    .arg(damage.join(u", "_s))));
            done += hasFailed && outcome.done;
            told += hasFailed && !outcome.done;
        }
        std::printf("| %s | %ld | %d | %d |\n", QTest::currentDataTag(), nth, done, told);
    }

private:
    TestFolder m_archives;
};

QTEST_MAIN(TestFaults)
#include "tst_BWFaults.moc"
