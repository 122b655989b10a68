// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWPictureFile.h"
#include "OtherPrograms.h"
#include "Rows.h"
#include "SmallDisk.h"
#include "TestFolder.h"
#include "TestJpeg.h"

#include <csignal>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Problem = BWPictureProblem;

namespace {

const BWMeasurement line{u"length"_s, {{0.1, 0.2}, {1.0 / 3, 0.7}}, {}};
const QByteArray xmpName("http://ns.adobe.com/xap/1.0/\0", 29);
const QByteArray restName("http://ns.adobe.com/xmp/extension/\0", 35);

QByteArray segment(char marker, const QByteArray &payload)
{
    const auto length = payload.size() + 2;
    return QByteArray("\xff") + marker + char(length >> 8) + char(length) + payload;
}

/// What is inserted comes after the JFIF segment.
QByteArray jpeg(const QByteArray &segments = {}, bool jfif = true, const TestJpeg::Options &options = {})
{
    const QByteArray plain = TestJpeg::encode(TestJpeg::noise({40, 30}, 1), options);
    return plain.first(jfif ? 20 : 2) + segments + plain.sliced(20);
}

QByteArray rdf(const QByteArray &properties)
{
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:o='http://other.example/' "
           "xmlns:xmpNote='http://ns.adobe.com/xmp/note/' xmlns:b='https://brimwellpro.example/ns/measuring/1.0/'>"
        + properties + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

QByteArray xmp(const QByteArray &properties)
{
    return segment('\xe1', xmpName + rdf(properties));
}

QByteArray rest(const QByteArray &properties, int missing = 0)
{
    const QByteArray whole = rdf(properties);
    const QByteArray name = QCryptographicHash::hash(whole, QCryptographicHash::Md5).toHex().toUpper();
    const auto number = [](qsizetype n) { return QByteArray("\0\0", 2) + char(n >> 8) + char(n); };
    return xmp("<xmpNote:HasExtendedXMP>" + name + "</xmpNote:HasExtendedXMP><dc:source>here</dc:source>")
        + segment('\xe1', restName + name + number(whole.size()) + number(0) + whole.chopped(50))
        + segment('\xe1',
                  restName + name + number(whole.size()) + number(whole.size() - 50) + whole.last(50).chopped(missing));
}

/// Big-endian, with a maker's note that only an unmoved place makes sense of, and no resolution.
QByteArray exif()
{
    return segment('\xe1',
                   QByteArray("Exif\0\0MM\0*\0\0\0\x08\0\x02\x01\x0f\0\x02\0\0\0\x04XYZ\0\x87\x69\0\x04\0\0\0\x01\0\0\0"
                              "\x26\0\0\0\0\0\x01\x92\x7c\0\x07\0\0\0\x06\0\0\0\x38\0\0\0\0Maker!\0",
                              69));
}

BWPictureMetadata metadata(const QList<BWMeasurement> &measurements = {line})
{
    return {{u"50x \"fine\""_s, 40 / 7.1, 0.0123, {}}, BWLengthUnit::Micrometre, u"MX7"_s, measurements};
}

/// All but XMP and resolution.
QByteArray untouched(const QByteArray &file)
{
    QByteArray parts;
    qsizetype at = 2;
    for (qsizetype end = at; uchar(file[at + 1]) != 0xda; at = end) {
        const qsizetype head = at + (uchar(file[at + 1]) == 0xff); // a fill byte
        end = head + 2 + uchar(file[head + 2]) * 256 + uchar(file[head + 3]);
        const QByteArray payload = file.mid(head + 4, end - head - 4);
        if (!payload.startsWith("http://ns.adobe.com/x") && !payload.startsWith("Exif") && !payload.startsWith("JFIF"))
            parts += file.mid(at, end - at);
    }
    return parts + file.mid(at);
}

/// What other programs' tags say.
QJsonObject foreign(const QUrl &file)
{
    QJsonObject tags = tagsOf(file);
    static const QRegularExpression others(u"^(XMP-bwm|XMP-x|Composite):|Resolution|ExtendedXMP|ExifByteOrder"_s);
    for (const QString &key : tags.keys().filter(others))
        tags.remove(key);
    return tags;
}

} // namespace

class TestPictureFile : public QObject {
    Q_OBJECT

    TestFolder m_folder;

    void save(const QUrl &file, const BWPictureMetadata &wanted)
    {
        const auto saved = BWPictureFile::save(file, wanted, BWPictureFile::read(file).fingerprint);
        QVERIFY2(saved.problem == Problem::None, qPrintable(saved.detail));
        QCOMPARE(saved.fingerprint, BWPictureFile::read(file).fingerprint);
        QCOMPARE(BWPictureFile::read(file).metadata, wanted);
    }

private Q_SLOTS:
    void filesOfAllSorts_data()
    {
        const QByteArray title = "<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>Käfer</rdf:li></rdf:Alt></dc:title>";
        const Rows<QByteArray> row;
        row("tagged by another program", jpeg());
        row("progressive", jpeg({}, true, {.progressive = true}));
        row("nothing but a picture", jpeg({}, false));
        row("Exif without resolution", jpeg(exif(), false));
        row("XMP", jpeg(xmp(title + "<o:a rdf:parseType='Resource'><o:b>1</o:b></o:a>")));
        row("long XMP", jpeg(rest("<o:long>" + QByteArray(3000, 'x') + "</o:long>")));
        row("others",
            jpeg(segment('\xe2', "ICC_PROFILE\0\1\1a") + segment('\xfe', "mine") + "\xff" + segment('\xed', "8BIM")));
        row("cut short in the picture", jpeg().chopped(200));
        row("more behind the picture", jpeg() + jpeg());
    }
    void filesOfAllSorts()
    {
        const auto [content] = Rows<QByteArray>::current();
        const QUrl file = m_folder.file(u"a.jpg"_s, content);
        const QString path = file.toLocalFile();
        if (QTest::currentDataTag() == "tagged by another program"_ba)
            output(u"exiftool"_s,
                   {u"-overwrite_original"_s, u"-Artist=Ö"_s, u"-Subject=a"_s, u"-City=c"_s,
                    u"-ThumbnailImage<="_s + path, path});
        const QByteArray before = TestFolder::read(file);
        const QJsonObject others = foreign(file);
        QVERIFY(BWPictureFile::read(file).metadata == BWPictureMetadata());
        save(file, metadata());
        const QByteArray first = TestFolder::read(file);
        QCOMPARE(untouched(first), untouched(before));
        QCOMPARE(foreign(file), others);
        const QJsonObject tags = tagsOf(file);
        QCOMPARE(tags[u"IFD0:XResolution"_s].toDouble(), 71.0); // 40 pixels are 40 / 7.1 mm
        QCOMPARE(tags[u"IFD0:YResolution"_s].toDouble(), 71.0);
        QCOMPARE(tags[u"IFD0:ResolutionUnit"_s].toInt(), 3); // centimetres
        QCOMPARE(first.indexOf("Maker!"), before.indexOf("Maker!"));
        save(file, metadata());
        QCOMPARE(tagsOf(file), tags);
        save(file, {});
        QCOMPARE(foreign(file), others);
        QVERIFY(!TestFolder::read(file).contains("bwm:"));
        QCOMPARE(untouched(TestFolder::read(file)), untouched(before));
    }

    void otherProgramsReadIt()
    {
        const QUrl file = m_folder.file(u"b.jpg"_s, jpeg());
        save(file,
             metadata({{u"circle"_s, {{0.25, 0}, {0.5, 0.25}, {0.25, 0.5}}, {}}, {u"arrow"_s, line.points, u"Öl"_s}}));
        const QJsonObject tags = tagsOf(file);
        QCOMPARE(tags[u"XMP-bwm:MillimetresPerWidth"_s].toDouble(), 40 / 7.1);
        QCOMPARE(tags[u"XMP-bwm:ScaleName"_s].toString(), u"50x \"fine\""_s);
        const QJsonObject circle = tags[u"XMP-bwm:Measurements"_s][0].toObject();
        QCOMPARE(circle[u"Points"_s].toString(), u"0.25,0 0.5,0.25 0.25,0.5"_s);
        const QJsonObject diameter = circle[u"Results"_s][0].toObject();
        QVERIFY(std::abs(diameter[u"Value"_s].toDouble() - 40'000 / 7.1 / 2) < 1e-9);
        QVERIFY(diameter[u"Error"_s].toDouble() > 0);
        QCOMPARE(diameter[u"Unit"_s].toString(), u"um"_s);
        QCOMPARE(circle[u"Results"_s][1][u"Unit"_s].toString(), u"um2"_s);
        const QByteArray listed = output(u"exiv2"_s, {u"-PXkv"_s, file.toLocalFile()});
        for (const char *const expected :
             {"bwm.Unit", "Measurements[1]/bwm:Points", "Measurements[2]/bwm:Text", "Öl\n"})
            QVERIFY2(listed.contains(expected), listed.constData());
    }

    void manyAndAllKinds()
    {
        QList<BWMeasurement> many;
        for (int i = 0; i < 2000; ++i) {
            const BWMeasurementKind &kind = BWMeasurementKind::all()[i % BWMeasurementKind::all().size()];
            BWPoints points;
            for (int j = 0; j < kind.fewestPoints + i % 3 * (kind.mostPoints > 9); ++j)
                points.append({std::sin(i + 0.1 * j), 1e-9 / (i + j + 1)});
            const QString text = u"%1 \"<'&\"> 🔬\n\t計測  "_s.arg(i);
            many.append({kind.identifier, points, kind.hasText ? text : QString()});
        }
        const QUrl file = m_folder.file(u"c.jpg"_s, jpeg(rest("<o:long>kept</o:long>")));
        save(file, metadata(many));
        many.move(3, 1500); // and what was changed, removed, added
        many[700].points[0] += {0.1, 0.1};
        many.removeAt(20);
        many.append(line);
        save(file, metadata(many));
        const QJsonObject tags = tagsOf(file);
        QCOMPARE(tags[u"XMP-bwm:Measurements"_s].toArray().size(), 2000);
        QCOMPARE(tags[u"XMP-o:Long"_s].toString(), u"kept"_s);
        save(file, metadata());
        QVERIFY(TestFolder::read(file).size() < jpeg().size() + 10'000); // nothing of the many is left
    }

    void densities()
    {
        using Density = std::tuple<double, int, int>; // millimetres per width; unit and number in JFIF
        // Closer in centimetres, in inches; more than 16 bits; less than a pixel.
        for (const auto &[width, unit, number] : {Density(4, 2, 100), {50.8, 1, 20}, {0.0016, 0, 1}, {4000, 0, 1}}) {
            const QByteArray file = BWPictureMetadata{{u"x"_s, width, 0, {}}, {}, {}, {}}.addedTo(jpeg()).jpeg;
            QCOMPARE(file.mid(13, 5), QByteArray(1, char(unit)) + '\0' + char(number) + '\0' + char(number));
            const double exact = tagsOf(m_folder.file(u"d.jpg"_s, file))[u"IFD0:XResolution"_s].toDouble();
            QVERIFY(std::abs(exact / 400 * width - 1) < 1e-9);
        }
    }

    /// What cannot be read or saved is said, and stays as it is.
    void damage_data()
    {
        const QByteArray fine = "<rdf:li b:Kind='length' b:Points='0.1,0.2 0.5,0.5' b:Shade='red'/>";
        const QByteArray deep =
            QByteArray("<rdf:Bag><rdf:li>").repeated(1500) + QByteArray("</rdf:li></rdf:Bag>").repeated(1500);
        using enum BWPictureProblem;
        const Rows<QByteArray, Problem, Problem> row; // reading, saving
        const auto refused = [&](const char *name, const QByteArray &xml) {
            row(name, jpeg(segment('\xe1', xmpName + xml)), DescriptionDamaged, DescriptionDamaged);
        };
        const auto partly = [&](const QByteArray &name, const QByteArray &properties) {
            row(name.constData(), jpeg(xmp(properties)), Partly, None);
        };
        const auto item = [&](const QByteArray &name, const QByteArray &one) {
            partly(name, "<b:Measurements><rdf:Seq>" + one + fine + "</rdf:Seq></b:Measurements>");
        };
        row("empty", {}, NotJpeg, NotJpeg);
        row("another format", "\x89PNG\r\n", NotJpeg, NotJpeg);
        row("cut short", jpeg().first(100), Damaged, Damaged);
        refused("no XML", "<rdf");
        refused("no RDF", "<a/>");
        refused("no real RDF", rdf({}).replace("1999/02", "1999/06"));
        refused("deep", rdf("<o:a>" + deep + "</o:a>"));
        refused("definitions", "<!DOCTYPE a [<!ENTITY b 'c'>]>" + rdf({}));
        row("rest missing", jpeg(rest("<o:a>b</o:a>", 1)), Partly, DescriptionDamaged);
        row("no list", jpeg(xmp("<b:Measurements>x</b:Measurements>")), Partly, DescriptionDamaged);
        row("newer", jpeg(xmp("<b:Version>2.0</b:Version>")), Newer, Newer);
        row("newer in details", jpeg(xmp("<b:Version>1.7</b:Version><b:Mood>o</b:Mood>")), None, None);
        row("full", jpeg(xmp("<o:a>" + QByteArray(65'000, 'x') + "</o:a>")), None, NoRoom);
        for (const QByteArray width : {"-1", "1e99", "nan", "inf", "x"})
            partly("width " + width, "<b:MillimetresPerWidth>" + width + "</b:MillimetresPerWidth>");
        for (const QByteArray error : {"-1", "1.5", "nan"})
            partly("error " + error,
                   "<b:MillimetresPerWidth>4</b:MillimetresPerWidth><b:RelativeError>" + error + "</b:RelativeError>");
        for (const QByteArray points : {"", "0.1,0.2", "nan,1 0,0", "inf,1 0,0", "1e9,1 0,0", "1,1 0;0", "0.1,0.2 0.3"})
            item("points " + points, "<rdf:li b:Kind='length' b:Points='" + points + "'/>");
        item("unknown kind", "<rdf:li b:Kind='spiral' b:Points='0,0 1,1' b:Turns='4'/>");
        item("no measurement", "<rdf:li>x</rdf:li>");
    }
    void damage()
    {
        const auto [content, reading, saving] = Rows<QByteArray, Problem, Problem>::current();
        const QUrl file = m_folder.file(u"e.jpg"_s, content);
        const BWPictureFile::Read read = BWPictureFile::read(file);
        QVERIFY2(read.problem == reading, qPrintable(read.detail));
        QCOMPARE(read.metadata.measurements.size(), content.count("Shade"));
        BWPictureMetadata wanted = read.metadata;
        wanted.measurements.append(line);
        const auto saved = BWPictureFile::save(file, wanted, read.fingerprint);
        QVERIFY2(saved.problem == saving, qPrintable(saved.detail));
        const QByteArray now = TestFolder::read(file);
        if (saving != Problem::None)
            QCOMPARE(now, content);
        else
            QCOMPARE(BWPictureFile::read(file).metadata, wanted);
        static const QRegularExpression ours(u"(?<=['\">])(spiral|4|red|o|1e9,1 0,0|0.1,0.2 0.3|1e99|-1)(?=['\"<])"_s);
        const auto count = [](const QByteArray &bytes) { return QString::fromLatin1(bytes).count(ours); };
        QCOMPARE(count(now), count(content)); // what could not be read, and what is not known
    }

    void fileStaysItselfOrAsItIs()
    {
        const QUrl file = m_folder.file(u"album/f.jpg"_s, jpeg());
        const QByteArray path = file.toLocalFile().toUtf8();
        const bool keepsTags = ::setxattr(path.constData(), "user.tag", "red", 3, 0) == 0; // not every disk does
        QVERIFY(::chmod(path.constData(), 0640) == 0);
        QVERIFY(QFile::link(file.toLocalFile(), m_folder.path(u"link.jpg"_s)));
        save(m_folder.url(u"link.jpg"_s), {});
        save(m_folder.url(u"link.jpg"_s), metadata());
        QVERIFY(QFileInfo(m_folder.path(u"link.jpg"_s)).isSymLink());
        struct stat info;
        QVERIFY(::stat(path.constData(), &info) == 0 && (info.st_mode & 07777) == 0640);
        QCOMPARE(::getxattr(path.constData(), "user.tag", nullptr, 0), keepsTags ? 3 : -1);

        const BWPictureFile::Read before = BWPictureFile::read(file);
        const auto problem = [&] { return BWPictureFile::save(file, {}, before.fingerprint).problem; };
        {
            const SmallDisk disk(300);
            QCOMPARE(problem(), Problem::DiskFull);
        }
        ::chmod(path.constData(), 0444);
        QCOMPARE(problem(), Problem::NotWritable);
        ::chmod(path.constData(), 0644);
        QCOMPARE(BWPictureFile::read(file).fingerprint, before.fingerprint);
        TestFolder::write(file, jpeg() + "x"); // by another program
        QCOMPARE(problem(), Problem::Changed);
        QCOMPARE(TestFolder::read(file), jpeg() + "x");
        QFile::remove(file.toLocalFile());
        QCOMPARE(problem(), Problem::Gone);
        QCOMPARE(BWPictureFile::read(file).problem, Problem::Gone);
        QCOMPARE(BWPictureFile::read(m_folder.url(u"album"_s)).problem, Problem::Unreadable);
        QCOMPARE(TestFolder::count(m_folder.path(u"album"_s)), 0);
    }

    /// Killed at any moment, it leaves the old file or the new one, whole.
    void killed()
    {
        const QUrl file = m_folder.file(u"killed/h.jpg"_s, jpeg());
        const QList<BWMeasurement> many(500, line);
        save(file, metadata());
        const QByteArray whole = untouched(jpeg());
        int ends[2] = {};
        for (int i = 0; i < 25 || (i < 200 && ends[0] * ends[1] == 0); ++i) {
            const pid_t child = ::fork();
            for (bool large = true; child == 0; large = !large)
                BWPictureFile::save(file, metadata(large ? many : QList{line}), BWPictureFile::read(file).fingerprint);
            ::usleep(useconds_t(20'000 + i * 7'001)); // any moment will do
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, 0);
            const BWPictureFile::Read found = BWPictureFile::read(file);
            const bool isLarge = found.metadata.measurements.size() > 1;
            QCOMPARE(found.metadata, metadata(isLarge ? many : QList{line}));
            QCOMPARE(untouched(TestFolder::read(file)), whole);
            ++ends[isLarge];
        }
        QVERIFY(ends[0] > 0 && ends[1] > 0);
    }
};

QTEST_GUILESS_MAIN(TestPictureFile)
#include "tst_BWPictureFile.moc"
