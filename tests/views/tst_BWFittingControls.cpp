#include "Views/Utils/BWLightTabBar.h"
#include "Views/Utils/BWResizingButton.h"
#include "Views/Utils/BWResizingTextField.h"
#include "Views/Utils/BWVerticallyCenteringTextFieldCell.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QFont fontOfSize(double points)
{
    QFont font;
    font.setPointSizeF(points);
    return font;
}

/// The pixels that are not background, in the widget's coordinates.
QRect inkBounds(QWidget &widget)
{
    const QImage image = widget.grab().toImage();
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).lightness() < 128)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

class TestBWFittingControls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QPalette light(Qt::lightGray);
        light.setColor(QPalette::Window, Qt::white);
        light.setColor(QPalette::WindowText, Qt::black);
        QApplication::setPalette(light);
        QApplication::setStyle(u"Fusion"_s);
    }

    void labelShrinksToFit_data()
    {
        QTest::addColumn<double>("ownSize");
        QTest::addColumn<double>("widthInTexts"); // of the text's width in its own size
        QTest::addColumn<double>("smallest");
        QTest::addColumn<double>("largest");
        QTest::newRow("fits") << 16.0 << 1.5 << 16.0 << 16.0;
        QTest::newRow("a little too long") << 16.0 << 0.9 << 11.0 << 15.0;
        QTest::newRow("far too long") << 16.0 << 0.2 << 10.0 << 10.0;
        QTest::newRow("small by wish") << 8.0 << 0.2 << 8.0 << 8.0;
    }
    void labelShrinksToFit()
    {
        QFETCH(double, ownSize);
        QFETCH(double, widthInTexts);
        QFETCH(double, smallest);
        QFETCH(double, largest);
        const QString text = u"Gegenlichtkompensation"_s;
        const QFontMetrics metrics(fontOfSize(ownSize));
        const int width = qRound(metrics.horizontalAdvance(text) * widthInTexts);

        BWResizingTextField field;
        field.setFont(fontOfSize(ownSize));
        field.show();
        field.resize(width, 12); // one line in every size
        field.setStringValue(text);
        const double size = field.font().pointSizeF();
        QVERIFY2(size >= smallest && size <= largest, qPrintable(QString::number(size)));
        if (size > 10 && size < ownSize)
            QVERIFY(QFontMetrics(field.font()).horizontalAdvance(text) <= width);

        field.resize(width * 10, 12);
        QCOMPARE(field.font().pointSizeF(), ownSize); // room again
    }

    void buttonShrinksToFit()
    {
        BWResizingButton button;
        button.setFont(fontOfSize(18));
        button.setTitle(u"Werkseinstellungen"_s);
        button.show();
        const QSize wanted = button.sizeHint();
        button.resize(wanted);
        QCOMPARE(button.font().pointSizeF(), 18.0);
        button.resize(wanted.width() * 3 / 4, wanted.height() * 3); // height does not help a title
        QVERIFY(button.font().pointSizeF() < 18);
        QCOMPARE(button.sizeHint(), wanted); // the wish does not shrink along with the font
        button.resize(10, wanted.height());
        QCOMPARE(button.font().pointSizeF(), 10.0);
    }

    void titleIsCentredInItsHeight()
    {
        using Cell = BWVerticallyCenteringTextFieldCell;
        QCOMPARE(Cell::titleRectForBounds(QRectF(3, 5, 80, 60), 20), QRectF(3, 25, 80, 60));
        QCOMPARE(Cell::titleRectForBounds(QRectF(0, 10, 80, 15), 20), QRectF(0, 7.5, 80, 15)); // higher than the cell

        Cell cell(u"HH"_s);
        cell.resize(100, 90);
        cell.setAlignment(Qt::AlignLeft | Qt::AlignTop);
        const double middleOfOne = QRectF(inkBounds(cell)).center().y();
        QVERIFY2(qAbs(middleOfOne - 45) < 6, qPrintable(QString::number(middleOfOne)));
        cell.setText(u"HH HH"_s);
        cell.resize(cell.fontMetrics().horizontalAdvance(u"HHH"_s), 90); // two lines
        const QRectF two = inkBounds(cell);
        QVERIFY(two.height() > cell.fontMetrics().height());
        QVERIFY2(qAbs(two.center().y() - middleOfOne) < 2, qPrintable(QString::number(two.center().y())));
    }

    void dotTellsSelectedTab()
    {
        QCOMPARE(BWLightTabItem::dotRect(QRectF(50, 10, 40, 17)), QRectF(43, 17.5, 4, 4));

        BWLightTabBar bar;
        bar.addTab(u"Images"_s);
        bar.addTab(u"Videos"_s);
        bar.resize(bar.sizeHint());
        for (const int selected : {0, 1}) {
            bar.setCurrentIndex(selected);
            const QImage image = bar.grab().toImage();
            for (const int tab : {0, 1}) {
                const QRectF dot = BWLightTabItem::dotRect(bar.labelRect(tab));
                QVERIFY(QRectF(bar.tabRect(tab)).contains(dot));
                const QColor color = image.pixelColor(dot.center().toPoint());
                const bool green = color.green() > color.red() + 60 && color.green() > color.blue() + 30;
                const bool gray = color.hsvSaturation() < 40 && color.value() < 200;
                QVERIFY2(tab == selected ? green : gray, qPrintable(color.name()));
            }
        }
    }
};

QTEST_MAIN(TestBWFittingControls)
#include "tst_BWFittingControls.moc"
