// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWLiveViewController.h"
#include "App/LiveView/BWLookBackController.h"
#include "App/LiveView/BWMeasurementsInFile.h"
#include "App/LiveView/BWMeasuringController.h"
#include "App/LiveView/BWSceneController.h"
#include "BWManualClock.h"
#include "Model/Export/BWPictureExport.h"
#include "Model/Products/BWProductInUse.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "OtherPrograms.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"
#include "TestJpeg.h"
#include "Views/MainWindow/BWCenteringClipView.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWMeasuringLayer.h"
#include "Views/MainWindow/BWMeasuringMenu.h"
#include "Views/MainWindow/BWStatusLine.h"
#include "Views/Utils/BWFilePanels.h"

#include <atomic>
#include <filesystem>
#include <future>
#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QProgressDialog>
#include <QPushButton>
#include <QScopeGuard>
#include <QTest>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QSize pictureSize(320, 240);
const BWCalibration fiftyTimes{u"50x"_s, 8, 0.01, {}};

QByteArray jpeg(unsigned seed = 1)
{
    return TestJpeg::encode(TestJpeg::noise(pictureSize, seed));
}

QByteArray exif(int orientation)
{
    return QByteArray("\xff\xe1\0\x22"
                      "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\3\0\0\0\1\0",
                      29)
        + char(orientation) + QByteArray(6, '\0');
}

QByteArray picturePart(const QUrl &file)
{
    const QByteArray all = TestFolder::read(file);
    return all.sliced(std::max<qsizetype>(0, all.indexOf("\xff\xda")));
}

/// The main window with an album of that folder, as one run of the program has it. Saves copies where `target` is.
struct Bench : BWFilePanels {
    explicit Bench(const TestFolder &home) : folder(home)
    {
        albums.prepare();
        contents.follow();
        window.localizeWithManager(texts);
        window.resize(977, 650);
        window.show();
        QTRY_VERIFY(!contents.files(BWMediaType::Image).isEmpty());
    }

    void show(const QUrl &file)
    {
        lookBack.show(file);
        QTRY_COMPARE(scene.main() == BWSceneController::Main::Album ? measuring.albumPicture() : QString(),
                     QString::fromLatin1(file.toEncoded()));
        QTRY_VERIFY((view.viewport()->repaint(), view.pictureToViewport()));
    }
    /// A line more.
    void measure() const
    {
        menu.tools()[1]->trigger();
        auto &layer = *window.findChild<BWMeasuringLayer *>();
        for (const auto &[key, modifiers] : {std::pair(Qt::Key_Space, Qt::NoModifier),
                                             {Qt::Key_Down, Qt::ShiftModifier},
                                             {Qt::Key_Space, Qt::NoModifier}})
            QTest::keyClick(&layer, key, modifiers);
    }
    qsizetype count() const { return measuring.measurements().size(); }
    static qsizetype countIn(const QUrl &file) { return BWPictureFile::read(file).metadata.measurements.size(); }
    bool waitUntilSaved()
    {
        bool saved = false;
        inFile.whenSaved([&saved] { saved = true; });
        return QTest::qWaitFor([&saved] { return saved; });
    }

    void save(QWidget *, const Save &panel, Chosen chosen) override
    {
        proposed = panel.name;
        chosen(target);
    }
    void chooseFile(QWidget *, const File &, Chosen) override { }
    void chooseFolder(QWidget *, const Folder &, Chosen) override { }

    const TestFolder &folder;
    BWManualClock clock;
    BWSettingsFile defaults{folder.path(u"settings.conf"_s)};
    BWConfigManager config{defaults};
    BWProductInUse product{config};
    BWAlbumManager albums{defaults, folder.path()};
    BWAlbumContents contents{albums};
    BWLocalizationManager texts{QString(), {u"en"_s}};
    BWLiveRenderer live;
    BWMainWindow window{live};
    BWCenteringClipView &view = window.centeringClipView();
    const BWMeasuringMenu &menu = *window.menu().measuring;
    BWLiveViewController liveView{window, live, product};
    BWSceneController scene{window, liveView, live};
    BWStatusLine statusLine{window.currentCameraLabel(), clock};
    BWMeasuringController measuring{
        BWMeasuringController::Parts{window, liveView, scene, product, statusLine, config, texts, *this, defaults}};
    BWLookBackController lookBack{window, scene, albums, contents, statusLine, texts, {}, clock};
    QUrl target;
    QString proposed;
    QStringList said;
    BWMeasurementsInFile inFile{
        BWMeasurementsInFile::Parts{measuring, window, liveView, scene, texts,
                                    BWPictureSaver::Callbacks{[this](const QString &text) { said << text; }, *this},
                                    [] { return u"MX7"_s; }},
        clock};
};

} // namespace

class TestMeasurementsInFile : public QObject {
    Q_OBJECT

    std::unique_ptr<TestFolder> m_folder;

    QUrl inAlbum(int number, const QByteArray &content = jpeg()) const
    {
        return m_folder->file(u"BrimwellPro/Default Album/20260101_image_00%1.jpg"_s.arg(number), content);
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<TestFolder>();
        inAlbum(1);
    }

    void keptAndBroughtBack()
    {
        const QUrl file = inAlbum(1);
        const QByteArray pictureBefore = picturePart(file);
        const QImage pixels(file.toLocalFile());
        {
            Bench bench(*m_folder);
            bench.show(file);
            bench.measure();
            bench.measure();
            QVERIFY(bench.waitUntilSaved());
            bench.menu.undo->trigger();
            bench.clock.advance(900ms);
            bench.menu.undo->trigger();
            bench.clock.advance(900ms); // not a moment yet
            QCOMPARE(Bench::countIn(file), 2);
            bench.clock.advance(200ms);
            QTRY_COMPARE(Bench::countIn(file), 0);
            bench.menu.redo->trigger();
            bench.lookBack.end();
            QTRY_COMPARE(Bench::countIn(file), 1);
            bench.show(file);
            bench.menu.redo->trigger(); // however long ago
            QCOMPARE(bench.count(), 2);
            bench.measuring.setMeasurements(bench.measuring.measurements(), fiftyTimes);
            QVERIFY(bench.waitUntilSaved());
            QVERIFY(bench.said.isEmpty() && bench.inFile.problem().isNull());
        }
        QCOMPARE(picturePart(file), pictureBefore);
        QCOMPARE(QImage(file.toLocalFile()), pixels);
        const QJsonObject tags = tagsOf(file);
        QCOMPARE(tags[u"XMP-bwm:Measurements"_s].toArray().size(), 2);
        QCOMPARE(tags[u"XMP-bwm:Measurements"_s][1][u"Results"_s][0][u"Value"_s].toDouble(), 10 * 8 / 320.0);
        QCOMPARE(tags[u"IFD0:XResolution"_s].toDouble(), 400.0); // in a centimetre
        QVERIFY(output(u"exiv2"_s, {u"-PXkv"_s, file.toLocalFile()}).contains("Measurements[2]/bwm:Points"));

        const QByteArray saved = TestFolder::read(file);
        Bench bench(*m_folder);
        bench.show(file);
        QTRY_COMPARE(bench.count(), 2);
        QCOMPARE(bench.measuring.scale().calibration, fiftyTimes);
        QVERIFY(!bench.menu.undo->isEnabled());
        bench.lookBack.end();
        QVERIFY(bench.waitUntilSaved());
        QCOMPARE(TestFolder::read(file), saved); // who only looks changes nothing
        bench.show(file);
        bench.measure();
        bench.lookBack.end();
        QTRY_COMPARE(Bench::countIn(file), 3);
    }

    /// Measured before the file has been read, and left while it is being saved.
    void steppingFast()
    {
        for (int i = 1; i <= 6; ++i)
            inAlbum(i, jpeg(unsigned(i)));
        Bench bench(*m_folder);
        QTRY_COMPARE(bench.contents.files(BWMediaType::Image).size(), 6);
        for (int round = 1; round <= 2; ++round) {
            for (const QUrl &file : bench.contents.files(BWMediaType::Image)) {
                bench.show(file);
                bench.measure();
                bench.clock.advance(1s);
            }
        }
        bench.lookBack.end();
        QVERIFY(bench.waitUntilSaved());
        for (int i = 1; i <= 6; ++i) {
            const QUrl file = bench.contents.files(BWMediaType::Image)[6 - i];
            QCOMPARE(Bench::countIn(file), 2);
            const QByteArray plain = jpeg(unsigned(i));
            QCOMPARE(picturePart(file), plain.sliced(plain.indexOf("\xff\xda")));
        }
        QVERIFY(bench.said.isEmpty());
    }

    /// In place, or by moving a new file over it.
    void anotherProgramSavesThePictureThatShows()
    {
        const auto plain = [](Qt::GlobalColor colour) {
            QImage image(pictureSize, QImage::Format_RGB888);
            image.fill(colour);
            return TestJpeg::encode(image);
        };
        const QUrl file = inAlbum(1, plain(Qt::red));
        Bench bench(*m_folder);
        bench.show(file);
        const auto hue = [port = bench.view.viewport()] {
            return port->grab().toImage().pixelColor(port->rect().center()).hue() / 10;
        };
        QTRY_COMPARE(hue(), 0);
        bench.measure();
        QVERIFY(bench.waitUntilSaved());
        inAlbum(1, plain(Qt::green));
        QTRY_COMPARE(hue(), 12);
        QTRY_COMPARE(bench.count(), 0); // they are not in the new one
        bench.measure();
        output(u"exiftool"_s, {u"-overwrite_original"_s, u"-XMP:City=c"_s, file.toLocalFile()});
        bench.clock.advance(1s); // not over what it has not read
        QTRY_COMPARE(Bench::countIn(file), 1);
        QTRY_VERIFY(bench.inFile.unsaved().isEmpty() && bench.inFile.problem().isNull());
        QCOMPARE(tagsOf(file)[u"XMP-photoshop:City"_s].toString(), u"c"_s);
        QVERIFY(bench.waitUntilSaved());
        TestFolder::write(m_folder->url(u"blue"_s), plain(Qt::blue));
        std::filesystem::rename(m_folder->path(u"blue"_s).toStdString(), file.toLocalFile().toStdString());
        QTRY_COMPARE(hue(), 24);
        QVERIFY(bench.said.isEmpty());
    }

    void whatCannotBeSaved_data()
    {
        const Rows<QString, bool> row; // what is said; whether it can be saved when it is shown again
        row("read-only file", u"The picture could not be changed."_s, true);
        row("read-only folder", u"The picture could not be changed."_s, true);
        row("in the Trash", u"The picture is no longer there."_s, true);
        row("damaged XMP", u"The description in this picture’s file is damaged"_s, false);
        row("PNG", u"This file is not a JPEG picture"_s, false);
    }
    void whatCannotBeSaved()
    {
        const auto [said, laterSaved] = Rows<QString, bool>::current();
        const QByteArray what = QTest::currentDataTag();
        const QByteArray broken("\xff\xe1\0\x23http://ns.adobe.com/xap/1.0/\0<rdf", 37);
        QBuffer png;
        QImage(pictureSize, QImage::Format_RGB32).save(&png, "png");
        const QUrl file = inAlbum(1,
                                  what == "PNG"               ? png.data()
                                      : what == "damaged XMP" ? jpeg().first(20) + broken + jpeg().sliced(20)
                                                              : jpeg());
        const QString other = m_folder->path(u"elsewhere"_s);
        const QByteArray album = QFile::encodeName(m_folder->path(u"BrimwellPro/Default Album"_s));
        const QByteArray path = BWFilePath::native(file);
        Bench bench(*m_folder);
        bench.show(file);
        bench.measure();
        QVERIFY(bench.waitUntilSaved());
        bench.measure();
        ::chmod(path.constData(), what == "read-only file" ? 0444 : 0666);
        if (what == "in the Trash")
            QVERIFY(QFile::rename(file.toLocalFile(), other));
        const QByteArray before = TestFolder::read(what == "in the Trash" ? QUrl::fromLocalFile(other) : file);
        if (what == "read-only folder") {
            ::chmod(QFile::encodeName(m_folder->path()).constData(), 0755);
            ::chmod(album.constData(), 0555);
            ::setfsuid(65534); // root may write everywhere
        }
        bench.clock.advance(1s);
        const auto restored = qScopeGuard([&] { ::setfsuid(::geteuid()); });
        if (what != "in the Trash")
            QTRY_VERIFY2(bench.inFile.problem().startsWith(said), qPrintable(bench.inFile.problem()));
        QTRY_COMPARE(bench.inFile.unsaved(), QStringList(file.fileName()));
        QVERIFY(bench.inFile.problem().isEmpty() || bench.inFile.problem().contains(u"“Save with"_s));
        bench.lookBack.end(); // a reminder
        QTRY_VERIFY(!bench.said.isEmpty());
        QVERIFY2(bench.said[0].startsWith(file.fileName() + u": "_s + said), qPrintable(bench.said[0]));
        ::setfsuid(::geteuid());
        if (what == "in the Trash") {
            QVERIFY(QFile::rename(other, file.toLocalFile()));
            const QUrl later = inAlbum(2, jpeg()); // is noticed after the way there and back
            QTRY_VERIFY(bench.contents.files(BWMediaType::Image).contains(later));
        }
        QCOMPARE(TestFolder::read(file), before);
        ::chmod(path.constData(), 0666);
        ::chmod(album.constData(), 0755);
        bench.show(file);
        QCOMPARE(bench.count(), 2);
        if (laterSaved)
            QTRY_COMPARE(Bench::countIn(file), 2);
        QTRY_COMPARE(bench.inFile.problem().isNull(), laterSaved);
        QTRY_COMPARE(bench.inFile.unsaved().isEmpty(), laterSaved);
        QCOMPARE(TestFolder::read(file) == before, !laterSaved);
    }

    /// And not the file, as it does while nothing is measured.
    void deleteMeansTheMeasurement()
    {
        Bench bench(*m_folder);
        const auto isForTheFile = [&bench] {
            QKeyEvent key(QEvent::ShortcutOverride, Qt::Key_Delete, Qt::NoModifier);
            key.ignore();
            QApplication::sendEvent(&bench.view, &key);
            return key.isAccepted();
        };
        bench.show(bench.contents.files(BWMediaType::Image)[0]);
        QVERIFY(isForTheFile());
        bench.measuring.setOpen(true);
        QTest::keyClick(&bench.view, Qt::Key_Delete); // asks nothing
        QVERIFY(bench.window.currentCameraLabel().text().startsWith(u"Nothing is selected to be deleted."));
        bench.measure();
        bench.menu.tools()[0]->trigger();
        QTest::keyClick(bench.window.findChild<BWMeasuringLayer *>(), Qt::Key_Tab); // selects it
        QVERIFY(!isForTheFile());
    }

    /// Before the last change is saved.
    void renamedWhileShown()
    {
        const QUrl file = inAlbum(1);
        const QUrl renamed = m_folder->url(u"BrimwellPro/Default Album/spot on the left.jpg"_s);
        Bench bench(*m_folder);
        bench.show(file);
        for (int i = 1; i <= 2; ++i) {
            bench.measure();
            QVERIFY(i == 2 || bench.waitUntilSaved());
        }
        QVERIFY(QFile::rename(file.toLocalFile(), renamed.toLocalFile()));
        QTRY_COMPARE(bench.lookBack.file(), QUrl());
        QTRY_COMPARE(Bench::countIn(renamed), 2);
        QVERIFY(bench.waitUntilSaved() && bench.inFile.unsaved().isEmpty() && bench.said.isEmpty());
    }

    /// Two people measure in one picture.
    void bothKeepTheirs()
    {
        const BWMeasurement theirs{u"length"_s, {{0, 0}, {0.5, 0.5}}, {}};
        const QUrl file = inAlbum(1);
        Bench bench(*m_folder);
        bench.show(file);
        bench.measure();
        bench.measure();
        QVERIFY(bench.waitUntilSaved());
        BWPictureFile::Read read = BWPictureFile::read(file);
        read.metadata.measurements[1] = theirs; // in place of the second one
        QVERIFY(BWPictureFile::save(file, read.metadata, read.fingerprint).problem == BWPictureProblem::None);
        bench.measure();
        const auto ours = bench.measuring.measurements();
        bench.clock.advance(1s);
        const QList<BWMeasurement> both{ours[0], theirs, ours[2]};
        QTRY_COMPARE(bench.measuring.measurements(), both);
        QTRY_COMPARE(BWPictureFile::read(file).metadata.measurements, both);
        bench.menu.undo->trigger();
        QCOMPARE(bench.measuring.measurements(), ours);
    }

    /// What is stored is in the picture as it is stored, what shows in the upright one.
    void turnedByItsFile()
    {
        const QPointF stored(200.5 / 320, 30.5 / 320);
        const BWMeasurement line{u"length"_s, {stored, {0.5, 0.5}}, {}};
        for (int orientation = 1; orientation <= 8; ++orientation) {
            QImage image(pictureSize, QImage::Format_RGB32);
            image.fill(Qt::black);
            for (int i = 0; i < 81; ++i)
                image.setPixelColor(196 + i % 9, 26 + i / 9, Qt::white);
            const QByteArray plain = TestJpeg::encode(image.convertToFormat(QImage::Format_RGB888));
            const QUrl file = inAlbum(1, plain.first(20) + exif(orientation) + plain.sliced(20));
            const auto fingerprint = BWPictureFile::read(file).fingerprint;
            BWPictureFile::save(file, {fiftyTimes, {}, {}, {line}}, fingerprint);
            Bench bench(*m_folder);
            bench.show(file);
            QTRY_COMPARE(bench.count(), 1);
            const QImage shown = BWStillLoader::read(file).image;
            const QPointF at = bench.measuring.measurements()[0].points[0] * shown.width();
            QVERIFY(qGray(shown.pixel(at.toPoint())) > 128);
            QCOMPARE(bench.measuring.scale().calibration.millimetresPerWidth, shown.width() / 40.0);
            bench.measure();
            QVERIFY(bench.waitUntilSaved());
            const auto read = BWPictureFile::read(file).metadata;
            QCOMPARE(read.measurements[0], line);
            QCOMPARE(read.calibration, fiftyTimes);
            const QPointF way = read.measurements[1].points[1] - read.measurements[1].points[0];
            QCOMPARE(std::hypot(way.x(), way.y()), 10 / 320.0);
        }
    }

    /// What takes long can be cancelled, leaves nothing, and the next one is saved.
    void copyIsCancelled()
    {
        Bench bench(*m_folder);
        bench.target = m_folder->url(u"a.png"_s);
        const QByteArray before = TestFolder::read(m_folder->file(u"a.png"_s, "before"));
        BWPictureSaver saver(bench.window, bench.texts, {[&](auto &text) { bench.said << text; }, bench}, bench.clock);
        std::atomic<bool> isWriting = false;
        std::promise<void> goOn;
        const auto save = [&, ready = goOn.get_future().share()] {
            saver.save(
                u"Save"_s, {}, {},
                [] {
                    return TestJpeg::noise({2000, 1500}, 1);
                },
                [&, ready](const QImage &picture, const QUrl &target, BWExportWatch &watch) {
                    isWriting = true;
                    ready.wait();
                    return BWPictureExport::write(picture, target, watch);
                });
        };
        save();
        QTRY_VERIFY(isWriting);
        bench.clock.advance(499ms);
        QVERIFY(!bench.window.findChild<QProgressDialog *>());
        bench.clock.advance(1ms);
        auto *progress = bench.window.findChild<QProgressDialog *>();
        QVERIFY(progress && progress->isVisible() && progress->labelText() == "Saving: a.png"_L1);
        progress->findChild<QPushButton *>()->click();
        QVERIFY(!saver.isSaving() && !progress->isVisible());
        goOn.set_value();
        bench.target = m_folder->url(u"b.png"_s);
        save();
        QTRY_COMPARE_WITH_TIMEOUT(bench.said, QStringList(u"Saved: b.png"_s), 30000);
        QCOMPARE(TestFolder::read(m_folder->url(u"a.png"_s)), before);
        QVERIFY(!QFile::exists(m_folder->path(u"a.png.part"_s)));
    }

    void copies_data()
    {
        const Rows<QString, int, int> row; // its name, turn and mirror
        row("JPEG", u"a.jpg"_s, 0, 0);
        row("turned", u"a.jpg"_s, 90, 1);
        row("PNG", u"a.png"_s, 270, 2);
        row("full disk", u"a.png"_s, 0, 0);
    }
    void copies()
    {
        const auto [name, turn, flip] = Rows<QString, int, int>::current();
        QImage grey(pictureSize, QImage::Format_RGB888);
        grey.fill(Qt::gray);
        const QUrl file = inAlbum(1, TestJpeg::encode(grey));
        Bench bench(*m_folder);
        bench.target = m_folder->url(name);
        bench.menu.saveCopy->trigger();
        QCOMPARE(bench.said.takeFirst(), u"There is no picture to save."_s);
        bench.show(file);
        bench.liveView.onRotate(QString::number(turn));
        bench.liveView.onFlip(flip);
        bench.measuring.setMeasurements({{u"length"_s, {{0.25, 0.25}, {0.5, 0.25}}, {}}}, fiftyTimes);
        std::optional<SmallDisk> small;
        if (QTest::currentDataTag() == "full disk"_ba)
            small.emplace(300);
        bench.menu.saveCopy->trigger();
        QCOMPARE(bench.proposed, u"20260101_image_001 - measured.jpg"_s);
        QTRY_VERIFY(!bench.inFile.isSavingCopy());
        QCOMPARE(bench.said, small ? QStringList() : QStringList(u"Saved: "_s + name));
        QCOMPARE(QFile::exists(bench.target.toLocalFile()), !small);
        if (small)
            return; // an alert has told
        const QImage copy(bench.target.toLocalFile());
        QCOMPARE(copy.size(), turn == 0 ? pictureSize : pictureSize.transposed());
        // The middle of the line, upright at 120, 80.
        const QColor there = copy.pixelColor(turn == 0 ? QPoint(120, 80) : QPoint(80, 120));
        QVERIFY2(there.red() > there.blue() + 25, qPrintable(there.name())); // on grey
        const QJsonObject tags = tagsOf(bench.target);
        QVERIFY(!tags.contains(u"XMP-bwm:Measurements"_s));
        const bool isPng = name.endsWith(u"png"_s);
        QCOMPARE(tags[isPng ? u"PNG-pHYs:PixelsPerUnitX"_s : u"IFD0:XResolution"_s].toDouble(),
                 isPng ? 40'000.0 : 400.0);
        if (!isPng)
            QCOMPARE(tags[u"XMP-bwm:MillimetresPerWidth"_s].toDouble(), copy.width() / 40.0);
    }
};

QTEST_MAIN(TestMeasurementsInFile)
#include "tst_BWMeasurementsInFile.moc"
