#include "Utils/BWAlertPresenter.h"
#include "Utils/BWUIUtils.h"

#include <QFileInfo>
#include <QFontMetricsF>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Presenter : BWAlertPresenter {
    QStringList shown;
    bool answer = false;

    void presentOK(const QString &title, const QString &message) override { shown.append(title + u'|' + message); }
    bool presentOKCancel(const QString &title, const QString &message) override
    {
        presentOK(title, message);
        return answer;
    }
};

} // namespace

class TestUtils : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void alerts()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"nobody shows: A - b"_s));
        BWUIUtils::displayOKAlert(u"A"_s, u"b"_s);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"nobody shows: C - d"_s));
        QVERIFY(!BWUIUtils::displayOKCancelAlert(u"C"_s, u"d"_s));

        Presenter presenter;
        QVERIFY(!BWUIUtils::setAlertPresenter(&presenter));
        BWUIUtils::displayOKAlert(u"A"_s, u"b"_s);
        QVERIFY(!BWUIUtils::displayOKCancelAlert(u"C"_s, u"d"_s));
        presenter.answer = true;
        QVERIFY(BWUIUtils::displayOKCancelAlert(u"E"_s, u"f"_s));
        QCOMPARE(presenter.shown, QStringList({u"A|b"_s, u"C|d"_s, u"E|f"_s}));
        QCOMPARE(BWUIUtils::setAlertPresenter(nullptr), &presenter);
    }

    void temporaryPaths()
    {
        const auto restore = qScopeGuard([before = qgetenv("TMPDIR")] { qputenv("TMPDIR", before); });
        static const QRegularExpression name(u"^brimwellpro-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\.jpg$"_s);
        for (const char *folder : {"/some where/100%", "/var/tmp"}) {
            qputenv("TMPDIR", folder[1] == 's' ? folder : ""); // empty is as good as unset
            const QFileInfo file(BWUIUtils::temporaryPath(u"brimwellpro"_s, u"jpg"_s).toLocalFile());
            QCOMPARE(file.path(), QString::fromLatin1(folder));
            QVERIFY2(name.match(file.fileName()).hasMatch(), qPrintable(file.fileName()));
        }
        QVERIFY(BWUIUtils::temporaryPath(u"a"_s, u"b"_s) != BWUIUtils::temporaryPath(u"a"_s, u"b"_s));
    }

    void fontToFit_data()
    {
        QTest::addColumn<double>("width"); // as a multiple of the text's width at 12 points
        QTest::addColumn<double>("lines"); // height as a multiple of the line's at 12 points
        QTest::addColumn<double>("size");
        QTest::newRow("fits") << 1.0 << 1.0 << 20.0;
        QTest::newRow("high enough for two lines") << 0.5 << 1.01 << 20.0;
        QTest::newRow("never fits") << 0.01 << 1.0 << 10.0;
        QTest::newRow("no room at all") << 0.0 << 0.0 << 10.0;
    }

    void fontToFit()
    {
        QFETCH(double, width);
        QFETCH(double, lines);
        QFont font = QGuiApplication::font();
        font.setPointSizeF(20);
        const QString text = u"Automatischer Weißabgleich"_s;
        const QFontMetricsF metrics(font);
        const QSizeF bounds(metrics.horizontalAdvance(text) * width, metrics.height() * lines);
        QTEST(BWUIUtils::fontToFit(font, bounds, text, 10).pointSizeF(), "size");
    }

    void fontShrinksByWholePointsToTheFirstThatFits()
    {
        QFont font = QGuiApplication::font();
        font.setPointSizeF(14.5);
        const QString text = u"Automatischer Weißabgleich"_s;
        const double height = QFontMetricsF(font).height();
        font.setPointSizeF(12.5);
        const double width = QFontMetricsF(font).size(0, text).width();
        font.setPointSizeF(14.5);
        // A height of half a line is one line.
        const QFont found = BWUIUtils::fontToFit(font, {width, height / 2}, text, 10);
        QCOMPARE(found.pointSizeF(), 12.5);
    }
};

QTEST_MAIN(TestUtils)
#include "test_utils.moc"
