#include "Utils/BWAlertPresenter.h"
#include "Utils/BWUIUtils.h"

#include <QDir>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

struct Presenter : BWAlertPresenter {
    QString shown;

    void presentOK(const QString &title, const QString &message) override { shown += title + message; }
    bool presentOKCancel(const QString &title, const QString &) override { return title == "yes"_L1; }
    bool presentChoice(const QString &, const QString &, const QString &, const QString &) override { return false; }
};

} // namespace

class TestUtils : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void alerts()
    {
        QTest::ignoreMessage(QtWarningMsg, "Alert that nobody shows: A - b");
        BWUIUtils::displayOKAlert(u"A"_s, u"b"_s);
        QTest::ignoreMessage(QtWarningMsg, "Alert that nobody shows: yes - d");
        QVERIFY(!BWUIUtils::displayOKCancelAlert(u"yes"_s, u"d"_s));

        Presenter presenter;
        QVERIFY(!BWUIUtils::setAlertPresenter(&presenter));
        BWUIUtils::displayOKAlert(u"A"_s, u"b"_s);
        QCOMPARE(presenter.shown, u"Ab"_s);
        QVERIFY(BWUIUtils::displayOKCancelAlert(u"yes"_s, u""_s) && !BWUIUtils::displayOKCancelAlert(u"no"_s, u""_s));
        QCOMPARE(BWUIUtils::setAlertPresenter(nullptr), &presenter);
    }

    void linesInOne()
    {
        QCOMPARE(BWUIUtils::inOneLine(u"Product:"_s, u"DX10"_s), u"Product: DX10"_s);
        QCOMPARE(BWUIUtils::inOneLine(u"製品："_s, u"DX10"_s), u"製品：DX10"_s);
    }

    void temporaryPaths()
    {
        const auto restore = qScopeGuard([before = qgetenv("TMPDIR")] { qputenv("TMPDIR", before); });
        static const QRegularExpression name(u"^brimwellpro-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.jpg$"_s);
        const QTemporaryDir odd(QDir::tempPath() + u"/100% of"_s);
        const QByteArray open = QFile::encodeName(odd.filePath(u"open to all"_s));
        QVERIFY(QDir().mkpath(odd.filePath(u"open to all"_s)) && ::chmod(open.constData(), 0777) == 0);
        const QByteArray good = odd.path().toUtf8();
        const QByteArray notUtf8 = good + "/caf\xe9";
        QCOMPARE(::mkdir(notUtf8.constData(), 0700), 0);
        const auto removed = qScopeGuard([&notUtf8] { ::rmdir(notUtf8.constData()); });
        for (const QByteArray &folder :
             {good, '/' + good + "//", QByteArray(), good + "/gone", QByteArray("relative"), open, notUtf8}) {
            qputenv("TMPDIR", folder);
            const QUrl url = BWUIUtils::temporaryPath(u"brimwellpro"_s, u"jpg"_s);
            QVERIFY2(url.host().isEmpty(), qPrintable(url.toString()));
            const QFileInfo file(url.toLocalFile());
            const bool isGood = QDir::cleanPath(QFile::decodeName(folder)).endsWith(odd.path());
            QCOMPARE(QFileInfo(file.path()).path(), isGood ? odd.path() : u"/var/tmp"_s);
            QVERIFY2(name.match(file.fileName()).hasMatch(), qPrintable(file.fileName()));
        }
        QVERIFY(BWUIUtils::temporaryPath(u"a"_s, u"b"_s) != BWUIUtils::temporaryPath(u"a"_s, u"b"_s));
    }

    void fontToFit_data()
    {
        QTest::addColumn<double>("measured"); // the font size in which the text just fits into the width
        QTest::addColumn<double>("width"); // as a multiple of that
        QTest::addColumn<double>("lines"); // height as a multiple of the line's at full size
        QTest::addColumn<double>("size");
        QTest::newRow("fits") << 14.5 << 1.0 << 1.0 << 14.5;
        QTest::newRow("high enough for two lines") << 14.5 << 0.5 << 1.01 << 14.5;
        QTest::newRow("half a line is a line; whole points are taken off") << 12.5 << 1.0 << 0.5 << 12.5;
        QTest::newRow("never fits") << 14.5 << 0.01 << 1.0 << 10.0;
        QTest::newRow("no room at all") << 14.5 << 0.0 << 0.0 << 10.0;
    }
    void fontToFit()
    {
        QFETCH(double, measured);
        QFETCH(double, width);
        QFETCH(double, lines);
        const QString text = u"Automatischer Weißabgleich"_s;
        QFont font = QGuiApplication::font();
        font.setPointSizeF(measured);
        const double textWidth = QFontMetricsF(font).size(0, text).width();
        font.setPointSizeF(14.5);
        const QSizeF bounds(textWidth * width, QFontMetricsF(font).height() * lines);
        QTEST(BWUIUtils::fontToFit(font, bounds, text, 10).pointSizeF(), "size");
    }
};

QTEST_MAIN(TestUtils)
#include "test_utils.moc"
