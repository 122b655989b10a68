#include "Model/BWAlbum.h"
#include "Model/BWFileNameOrder.h"
#include "TestFolder.h"

#include <csignal>
#include <QTest>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto image = BWMediaType::Image;
constexpr auto video = BWMediaType::Video;

/// As long as it lives, no file can grow beyond that size: what a full disk is like in the middle of a copy.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t limit)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{limit, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

class TestAlbum : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder.emplace();
        m_folder->folder(u"Album"_s);
        m_today = QDate(2024, 6, 7);
        m_album.emplace(m_folder->url(u"Album"_s), [this] { return m_today; });
    }

    void namesCountSeparatelyFromTheLowestFreeNumber()
    {
        const QUrl capture = m_folder->file(u"capture"_s, "pixels");
        QUrl added;
        QVERIFY(m_album->addFile(capture, image, &added));
        QCOMPARE(added, m_folder->url(u"Album/20240607_image_001.jpg"_s));
        QCOMPARE(TestFolder::read(added), "pixels");
        QCOMPARE(TestFolder::read(capture), "pixels");
        QVERIFY(m_album->addFile(capture, video, &added));
        QCOMPARE(added, m_folder->url(u"Album/20240607_video_001.mov"_s));
        QVERIFY(m_album->addFile(capture, image) && m_album->addFile(capture, image));
        m_album->removeFile(m_folder->url(u"Album/20240607_image_002.jpg"_s), image);
        QVERIFY(m_album->addFile(capture, image, &added));
        QCOMPARE(added, m_folder->url(u"Album/20240607_image_002.jpg"_s));

        m_today = m_today.addDays(1); // midnight
        QVERIFY(m_album->addFile(capture, image, &added));
        QCOMPARE(added, m_folder->url(u"Album/20240608_image_001.jpg"_s));
    }

    void numbersGrowWider()
    {
        for (int i = 1; i <= 999; ++i)
            m_folder->file(u"Album/20240607_image_%1.jpg"_s.arg(i, 3, 10, QLatin1Char('0')));
        QUrl added;
        QVERIFY(m_album->addFile(m_folder->file(u"capture"_s), image, &added));
        QCOMPARE(added, m_folder->url(u"Album/20240607_image_1000.jpg"_s));
        const QStringList listed = TestFolder::names(m_album->contentsForType(image).value());
        QCOMPARE(listed.size(), 1000);
        QCOMPARE(listed.first(2).join(u' '), u"20240607_image_1000.jpg 20240607_image_999.jpg"_s);
        QCOMPARE(listed.last(), u"20240607_image_001.jpg"_s);
    }

    void listing()
    {
        for (const QString &name : {u"20240607_image_002.jpg"_s, u"20231231_image_010.jpg"_s, u"x.jpg"_s, u"X10.jpg"_s,
                                    u"x9.jpg"_s, u"photo.JPG"_s, u"notes.txt"_s, u"a.jpeg"_s, u".jpg"_s, u"jpg"_s,
                                    u".hidden.jpg"_s, u"clip.mov"_s, u"clip.MOV"_s, u".20240607_image_003.jpg.part"_s})
            m_folder->file(u"Album/"_s + name);
        m_folder->file(u"Album/folder.jpg/inner.jpg"_s);
        QCOMPARE(TestFolder::names(m_album->contentsForType(image).value()).join(u' '),
                 u"X10.jpg x9.jpg x.jpg folder.jpg 20240607_image_002.jpg 20231231_image_010.jpg .hidden.jpg"_s);
        QCOMPARE(TestFolder::names(m_album->contentsForType(video).value()).join(u' '), u"clip.mov"_s);
        QVERIFY(!m_album->contentsForType(static_cast<BWMediaType>(2)));
    }

    void missingFolderIsNoEmptyAlbum()
    {
        const BWAlbum gone(m_folder->url(u"gone"_s), [this] { return m_today; });
        QVERIFY(!gone.contentsForType(image));
        QVERIFY(m_album->contentsForType(image)->isEmpty());
        QCOMPARE(gone.nextPathForType(video), m_folder->url(u"gone/20240607_video_001.mov"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot add"_s));
        QVERIFY(!gone.addFile(m_folder->file(u"capture"_s), video));
        QVERIFY(!QFile::exists(m_folder->path(u"gone"_s)));
    }

    void namesOfAnyKind_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("umlauts") << QByteArray("Häutchen ß");
        QTest::newRow("decomposed") << QByteArray("a\xcc\x88");
        QTest::newRow("percent") << QByteArray("100% %20 %41");
        QTest::newRow("quotes") << QByteArray("\"a\" 'b' \\ `c`");
        QTest::newRow("new line") << QByteArray("two\nlines\t");
        QTest::newRow("url signs") << QByteArray("a?b#c;d:e&f@g[h]");
        QTest::newRow("blanks") << QByteArray(" a ");
        QTest::newRow("not UTF-8") << QByteArray("caf\xe9 \xff");
        QTest::newRow("emoji") << QByteArray("\xf0\x9f\x94\xac\xe6\x97\xa5");
    }

    void namesOfAnyKind()
    {
        QFETCH(QByteArray, name);
        const QByteArray path = QFile::encodeName(m_folder->path()) + '/' + name;
        QCOMPARE(::mkdir(path.constData(), 0777), 0);
        const QUrl folder = BWFilePath::entry(m_folder->url(), name);
        const BWAlbum album(folder, [this] { return m_today; });
        QCOMPARE(album.name(), QFile::decodeName(name));
        QUrl added;
        QVERIFY(album.addFile(m_folder->file(u"capture"_s, "pixels"), image, &added));

        const QUrl renamed = BWFilePath::entry(folder, name + ".jpg");
        QCOMPARE(::rename(BWFilePath::native(added).constData(), (path + '/' + name + ".jpg").constData()), 0);
        QCOMPARE(album.contentsForType(image).value(), QList<QUrl>{renamed});
        QVERIFY(m_album->addFile(renamed, image, &added));
        QCOMPARE(TestFolder::read(added), "pixels");
        const qsizetype trashed = TestFolder::entries(TestFolder::trash()).size();
        album.removeFile(renamed, image);
        QVERIFY(album.contentsForType(image)->isEmpty());
        QVERIFY(TestFolder::entries(TestFolder::trash()).size() > trashed);
    }

    void failedCopyLeavesNothing_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<bool>("full");
        QTest::addColumn<bool>("readOnly");
        QTest::newRow("full disk") << u"capture"_s << true << false;
        QTest::newRow("read-only folder") << u"capture"_s << false << true;
        QTest::newRow("no source") << u"missing"_s << false << false;
        QTest::newRow("source is a folder") << u"Album"_s << false << false;
        QTest::newRow("source is a pipe") << u"pipe"_s << false << false;
    }

    void failedCopyLeavesNothing()
    {
        QFETCH(QString, source);
        QFETCH(bool, full);
        QFETCH(bool, readOnly);
        m_folder->file(u"capture"_s, QByteArray(3'000'000, 'x'));
        ::mkfifo(QFile::encodeName(m_folder->path(u"pipe"_s)).constData(), 0666);
        ::chmod(QFile::encodeName(m_folder->path()).constData(), 0755);
        ::chmod(QFile::encodeName(m_folder->path(u"Album"_s)).constData(), readOnly ? 0555 : 0777);
        {
            std::optional<FileSizeLimit> limit;
            if (full)
                limit.emplace(1'500'000);
            const OrdinaryUser user;
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot add"_s));
            QVERIFY(!m_album->addFile(m_folder->url(source), image));
        }
        QCOMPARE(TestFolder::entries(m_folder->path(u"Album"_s)), QList<QByteArray>());
    }

    void takenNamesAreNeverOverwritten()
    {
        // A link that leads nowhere takes its name, too.
        QVERIFY(QFile::link(u"nowhere"_s, m_folder->path(u"Album/20240607_image_001.jpg"_s)));
        QUrl added;
        QVERIFY(m_album->addFile(m_folder->file(u"capture"_s), image, &added));
        QCOMPARE(added, m_folder->url(u"Album/20240607_image_002.jpg"_s));
        QVERIFY(!QFile::exists(m_folder->path(u"Album/nowhere"_s)));
    }

    void failedRemovalIsOnlyLogged()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Cannot move to the Trash"_s));
        m_album->removeFile(m_folder->url(u"Album/none.jpg"_s), image);
    }

    void nameOrder_data()
    {
        QTest::addColumn<QString>("ascending");
        QTest::newRow("numbers") << u"a a0 a1 a9 a10 a99999999999999999999 a100000000000000000000 b"_s;
        QTest::newRow("several numbers") << u"1_2 1_10 2_1 10_1"_s;
        QTest::newRow("prefix") << u"x x1 x1a x1b xa"_s;
        QTest::newRow("case") << u"Alpha beta GAMMA Straße"_s;
        QTest::newRow("not the system's order") << u"z ä"_s;
    }

    void nameOrder()
    {
        QFETCH(QString, ascending);
        const QStringList names = ascending.split(u' ');
        for (qsizetype i = 0; i < names.size(); ++i) {
            for (qsizetype j = 0; j < names.size(); ++j) {
                const int order = BWFileNameOrder::compare(names[i], names[j]);
                QVERIFY2(i < j ? order < 0 : i > j ? order > 0 : order == 0, qPrintable(names[i] + u' ' + names[j]));
            }
        }
        QCOMPARE(BWFileNameOrder::compare(u"IMG_007"_s, u"img_7"_s), 0);
    }

private:
    std::optional<TestFolder> m_folder;
    QDate m_today;
    std::optional<BWAlbum> m_album;
};

QTEST_GUILESS_MAIN(TestAlbum)
#include "test_album.moc"
