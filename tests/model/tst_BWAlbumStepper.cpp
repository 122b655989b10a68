// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumStepper.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QList<QUrl> files(const QString &names)
{
    QList<QUrl> urls;
    for (const QChar name : names)
        urls.append(QUrl(u"file:///"_s + name));
    return urls;
}

} // namespace

/// Files are called by letters: "cba" is an album with three.
class TestAlbumStepper : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keepsItsPlace_data()
    {
        const Rows<QString, QString, QString> row; // before; current, and now; previous, current, next, position
        row("nothing changes", u"cba"_s, u"b cba"_s, u"cba2"_s);
        row("first", u"cba"_s, u"c cba"_s, u"-cb1"_s);
        row("last", u"cba"_s, u"a cba"_s, u"ba-3"_s);
        row("alone", u"a"_s, u"a a"_s, u"-a-1"_s);
        row("new capture", u"cba"_s, u"b dcba"_s, u"cba3"_s);
        row("next goes", u"dcba"_s, u"c dca"_s, u"dca2"_s);
        row("it goes", u"cba"_s, u"b ca"_s, u"ca-2"_s);
        row("it and the next go", u"edcba"_s, u"d eba"_s, u"eba2"_s);
        row("the last goes", u"cba"_s, u"a cb"_s, u"cb-2"_s);
        row("it and all behind it go", u"dcba"_s, u"b d"_s, u"-d-1"_s);
        row("it goes as another comes", u"cba"_s, u"b xca"_s, u"ca-3"_s);
        row("all go", u"cba"_s, u"b "_s, u"----"_s);
        row("other order", u"cba"_s, u"b acb"_s, u"cb-3"_s);
        row("not listed yet", u"ba"_s, u"x ba"_s, u"-xb-"_s);
        row("just listed", u"ba"_s, u"x xba"_s, u"-xb1"_s);
        row("nothing is current", u"ba"_s, u" ba"_s, u"--b-"_s);
    }

    void keepsItsPlace()
    {
        const auto [before, change, expected] = Rows<QString, QString, QString>::current();
        BWAlbumStepper stepper;
        stepper.setFiles(files(before));
        stepper.setFile(files(change.section(u' ', 0, 0)).value(0));
        stepper.setFiles(files(change.section(u' ', 1)));
        const auto letter = [](const QUrl &file) { return file.isEmpty() ? u"-"_s : file.fileName(); };
        QCOMPARE(letter(stepper.previous()) + letter(stepper.file()) + letter(stepper.next())
                     + (stepper.position() ? QString::number(*stepper.position()) : u"-"_s),
                 expected);
    }
};

QTEST_GUILESS_MAIN(TestAlbumStepper)
#include "tst_BWAlbumStepper.moc"
