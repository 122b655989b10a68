// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Settings/BWSettingsFile.h"
#include "TestFolder.h"
#include "Utils/BWUIUtils.h"
#include "Views/Measuring/BWCalibrationDialog.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"
#include "Views/Utils/BWFilePanels.h"

#include <QClipboard>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

/// Answers every panel with one file, or with Cancel.
struct Panels : BWFilePanels {
    void save(QWidget *, const Save &panel, Chosen chosen) override
    {
        suggested = panel.name;
        if (!answer.isEmpty())
            chosen(answer);
    }
    void chooseFile(QWidget *, const File &, Chosen) override { }
    void chooseFolder(QWidget *, const Folder &, Chosen) override { }

    QUrl answer;
    QString suggested;
};

BWMeasurement line(double length)
{
    return {u"length"_s, {{0, 0}, {length, 0}}};
}

} // namespace

class TestMeasurementResultsPanel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatWasMeasured()
    {
        QLocale::setDefault(QLocale(QLocale::German));
        TestFolder folder;
        BWSettingsFile defaults{folder.path(u"settings.conf"_s)};
        BWLocalizationManager texts(QString(), {u"en"_s});
        Panels panels;
        QList<BWMeasurement> measurements;
        BWMeasurementResultsPanel panel({[&] { return measurements; },
                                         [] {
                                             return BWPictureScale{{1000, 800}, {u"10"_s, 10, 0, {}}};
                                         },
                                         {}},
                                        panels, defaults, nullptr);
        panel.localizeWithManager(texts);
        panel.show();
        auto *rows = panel.findChild<QTreeWidget *>();
        QVERIFY(rows->isHidden());
        for (const QPushButton *button : panel.findChildren<QPushButton *>())
            QVERIFY(!button->isEnabled());
        QGuiApplication::clipboard()->setText(u"before"_s);
        panel.copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);

        measurements = {line(0.15), {u"arrow"_s, {{0, 0}, {1, 0}}, u"here"_s}, line(0.25)};
        panel.reload();
        QVERIFY(!rows->isHidden());
        QStringList shown;
        for (int i = 0; i < rows->topLevelItemCount(); ++i)
            shown.append(rows->topLevelItem(i)->text(0) + u' ' + rows->topLevelItem(i)->text(2));
        QCOMPARE(shown,
                 QStringList({u"Length 1 1,500\u00a0mm"_s, u"Length 2 2,500\u00a0mm"_s, u"Length: mean 2,000\u00a0mm"_s,
                              u"Length: minimum 1,500\u00a0mm"_s, u"Length: maximum 2,500\u00a0mm"_s,
                              u"Length: standard deviation 0,707\u00a0mm"_s}));
        const QTreeWidgetItem *head = rows->headerItem();
        for (int column = 0; column < rows->columnCount(); ++column)
            QCOMPARE(head->textAlignment(column), rows->topLevelItem(0)->textAlignment(column));
        qsizetype chosen = -1;
        connect(&panel, &BWMeasurementResultsPanel::measurementChosen, this, [&](qsizetype index) { chosen = index; });
        rows->setCurrentItem(rows->topLevelItem(1));
        QCOMPARE(chosen, 2);
        panel.copy();
        QVERIFY(QGuiApplication::clipboard()->text().contains(u"\nLength 2\tLength\t2,500\tmm\t0,007\n"));

        // What is measured next comes into view, and nothing else moves or is chosen.
        for (int i = 0; i < 60; ++i)
            measurements.append(line(0.2));
        panel.reload();
        QVERIFY(rows->visualItemRect(rows->topLevelItem(61)).intersects(rows->viewport()->rect()));
        const int scrolled = rows->verticalScrollBar()->value();
        measurements.removeFirst();
        measurements.removeLast();
        panel.reload();
        QCOMPARE(rows->verticalScrollBar()->value(), scrolled);
        QCOMPARE(rows->indexOfTopLevelItem(rows->currentItem()), 1);
        QCOMPARE(chosen, 2);
        measurements = {line(0.15), line(0.2), line(0.25)};
        panel.reload();

        panel.save(); // cancelled
        QCOMPARE(panels.suggested, u"Measurements.csv"_s);
        panels.answer = folder.url(u"a.csv"_s);
        panel.save();
        const auto written = [&] {
            QFile file(panels.answer.toLocalFile());
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        };
        QVERIFY2(written().contains(u"\r\nLength 3;Length;2,500;mm;0,007\r\n"), qPrintable(written()));
        panel.findChild<QComboBox *>()->setCurrentIndex(0);
        panel.save();
        QVERIFY2(written().contains(u"\r\nLength 3,Length,2.500,mm,0.007\r\n"), qPrintable(written()));
    }

    void calibrationFromLines()
    {
        QLocale::setDefault(QLocale(QLocale::German));
        BWLocalizationManager texts(QString(), {u"en"_s});
        BWCalibration stored;
        bool accepts = false;
        BWCalibrationDialog dialog(
            {{u"Length 1"_s, 0.2}, {u"Length 2"_s, 0.201}}, 1000, BWLengthUnit::Millimetre,
            [&](const BWCalibration &made) {
                stored = made;
                return accepts;
            },
            nullptr);
        dialog.localizeWithManager(texts);
        dialog.show();
        const QList<QLineEdit *> fields = dialog.findChildren<QLineEdit *>();
        QPushButton *save = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save);
        fields[2]->setText(u" 50x "_s);
        fields[0]->setText(u"2 foot"_s);
        QVERIFY(!save->isEnabled());
        fields[0]->setText(u"2"_s); // for both
        QVERIFY(save->isEnabled());
        QVERIFY(qAbs(dialog.calibration().millimetresPerWidth - 9.975) < 0.001);
        fields[1]->setText(u"2,01 mm"_s);
        QCOMPARE(dialog.calibration().millimetresPerWidth, 10.0);
        fields[1]->setText(u"x"_s);
        QVERIFY(!save->isEnabled());
        fields[1]->clear();
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(stored.name, u"50x"_s);
        QVERIFY(dialog.isVisible()); // the name is taken: nothing typed is lost
        accepts = true;
        save->click();
        QVERIFY(!dialog.isVisible());
    }
};

QTEST_MAIN(TestMeasurementResultsPanel)
#include "tst_BWMeasurementResultsPanel.moc"
