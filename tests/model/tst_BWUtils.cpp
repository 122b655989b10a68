// SPDX-License-Identifier: GPL-3.0-or-later
#include "Utils/BWUIUtils.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

class TestUtils : public QObject {
    Q_OBJECT

private Q_SLOTS:
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
};

QTEST_MAIN(TestUtils)
#include "tst_BWUtils.moc"
