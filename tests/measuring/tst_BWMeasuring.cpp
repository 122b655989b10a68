// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFrameRenderer.h"
#include "Model/Measuring/BWMeasurementPainter.h"
#include "Model/Measuring/BWMeasurementTable.h"
#include "Model/Measuring/BWMeasuringTool.h"
#include "Model/Measuring/BWScaleBar.h"
#include "Rows.h"
#include "TestFrames.h"

#include <cmath>
#include <QGuiApplication>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;
using Unit = BWLengthUnit;
using Dimension = BWDimension;

namespace {

const QLocale english(QLocale::English, QLocale::UnitedStates);
const QLocale german(QLocale::German, QLocale::Germany);

BWCalibration calibration(const QString &name, double millimetresPerWidth, double error = 0)
{
    return {name, millimetresPerWidth, error, {}};
}

/// Points given in pixels of a picture 1000 wide.
BWMeasurement measured(const QString &kind, BWPoints pixels)
{
    for (QPointF &point : pixels)
        point /= 1000;
    return {kind, pixels};
}

BWMeasurementTable::Words words()
{
    const auto same = [](const QString &identifier) { return identifier; };
    return {same,       same,      u"Name"_s, u"What"_s,     u"Value"_s, u"Unit"_s,
            u"Error"_s, u"mean"_s, u"min"_s,  u"max, all"_s, u"sd"_s};
}

/// All turns, mirrorings, zooms and kinds of screens, of a picture that shows as a whole.
template <typename Check>
void forAllLooks(QSize picture, const Check &check)
{
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        for (unsigned zoom = 40; zoom <= 200; zoom += 10) {
            for (int look = 0; look < 16 && !QTest::currentTestFailed(); ++look) {
                BWLiveViewState state;
                state.setCurrentZoom(zoom);
                state.setCurrentRotation(look % 4 * 90);
                state.setCurrentFlip(look / 4);
                state.setFitsWindow(zoom == 40);
                state.adaptTo(picture, {517, 366});
                const BWLiveViewGeometry geometry(picture, state);
                check(BWRenderRequest(geometry, geometry.footprint().toSize() + QSize(31, 18), {}, ratio),
                      state.zoomText().toLatin1() + ", look " + QByteArray::number(look) + ", ratio "
                          + QByteArray::number(ratio));
            }
        }
    }
}

/// The weighted middle of what is light there.
QPointF spotNear(const QImage &image, QPointF near, double around)
{
    QPointF sum;
    double weights = 0;
    const QRectF all(near - QPointF(around, around), QSizeF(2 * around, 2 * around));
    const QRect area = all.toAlignedRect() & image.rect();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const double weight = std::max(0, qGreen(image.pixel(x, y)) - 32);
            sum += weight * QPointF(x + 0.5, y + 0.5);
            weights += weight;
        }
    }
    return sum / weights;
}

} // namespace

class TestMeasuring : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void numbers_data()
    {
        const Rows<BWQuantity, QString, QString> row;
        row("digits follow the error", {12.3456, 0.03}, u"12.35 px"_s, u"12,35 px"_s);
        row("one more after a 1", {12.3456, 0.014}, u"12.346 px"_s, u"12,346 px"_s);
        row("whole", {1234.5, 3, Dimension::Area, Unit::Micrometre}, u"1235 µm²"_s, u"1235 µm²"_s);
        row("groups of three", {1234567.8, 0.3}, u"1\u202f234\u202f567.8 px"_s, u"1\u202f234\u202f567,8 px"_s);
        row("tens", {1234.5, 40, Dimension::Length, Unit::Millimetre}, u"1230 mm"_s, u"1230 mm"_s);
        row("no error known", {0.5, 0, Dimension::Length, Unit::Inch}, u"0.500 in"_s, u"0,500 in"_s);
        row("no minus nothing", {-0.001, 0.1, Dimension::Length, Unit::Centimetre}, u"0.00 cm"_s, u"0,00 cm"_s);
        row("angle", {89.96, 0.4, Dimension::Angle}, u"90.0°"_s, u"90,0°"_s);
        row("count", {3, 0, Dimension::Count}, u"3"_s, u"3"_s);
        row("cannot be measured", {std::nan(""), 0.1}, u"–"_s, u"–"_s);
    }
    void numbers()
    {
        const auto [quantity, inEnglish, inGerman] = Rows<BWQuantity, QString, QString>::current();
        const auto text = [&](const QLocale &locale) {
            return BWLengths::text(quantity, locale).replace(QChar::Nbsp, u' ');
        };
        QCOMPARE(text(english), inEnglish);
        QCOMPARE(text(german), inGerman);
    }

    void unitsFollowNumbersWhereTextsAreReadFromTheRight()
    {
        const auto drawn = [](Qt::LayoutDirection direction) {
            QGuiApplication::setLayoutDirection(direction);
            QImage image(100, 20, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            painter.setLayoutDirection(direction);
            painter.drawText(image.rect(), Qt::AlignCenter,
                             BWLengths::text({12, 3, Dimension::Length, Unit::Millimetre}, english));
            return image;
        };
        const QImage fromTheRight = drawn(Qt::RightToLeft);
        QVERIFY(drawn(Qt::LeftToRight) == fromTheRight);
    }

    void typedLengths()
    {
        const auto typed = [](const QString &text, const QLocale &locale = english) {
            return BWLengths::parsed(text, Unit::Millimetre, locale);
        };
        QCOMPARE(typed(u"2"_s), 2.0);
        QCOMPARE(typed(u" 1.5cm "_s), 15.0);
        QCOMPARE(typed(u"200 um"_s), 0.2);
        QCOMPARE(typed(u"200 μm"_s), 0.2);
        QCOMPARE(typed(u"0,1 IN"_s, german), 2.54);
        QCOMPARE(typed(u"0.1 in"_s, german), 2.54);
        for (const QString &wrong : {u""_s, u"mm"_s, u"0"_s, u"-1 mm"_s, u"1 furlong"_s, u"nan"_s, u"inf mm"_s})
            QCOMPARE(typed(wrong), 0.0);
    }

    void kinds_data()
    {
        const Rows<QString, BWPoints, QList<double>> row;
        // In a picture 1000 pixels wide that shows 10 mm: a hundred pixels are a millimetre.
        row("length", u"length"_s, {{100, 100}, {400, 500}}, {5});
        row("path", u"path"_s, {{0, 0}, {300, 400}, {300, 500}}, {6});
        row("right angle", u"angle"_s, {{200, 100}, {100, 100}, {100, 900}}, {90});
        row("obtuse angle", u"angle"_s, {{200, 100}, {100, 100}, {0, 0}}, {135});
        row("no angle", u"angle"_s, {{100, 100}, {100, 100}, {0, 0}}, {std::nan("")});
        row("circle", u"circle"_s, {{500, 300}, {300, 500}, {100, 300}}, {4, M_PI * 4});
        row("no circle", u"circle"_s, {{100, 100}, {200, 200}, {300, 300}}, {std::nan(""), std::nan("")});
        row("radius", u"radius"_s, {{300, 300}, {300, 500}}, {4, M_PI * 4});
        row("polygon", u"polygon"_s, {{100, 100}, {500, 100}, {500, 400}}, {6, 12});
        row("polygon, the other way round", u"polygon"_s, {{500, 400}, {500, 100}, {100, 100}}, {6, 12});
        row("count", u"count"_s, {{1, 1}, {2, 2}, {3, 3}}, {3});
        row("arrow", u"arrow"_s, {{1, 1}, {2, 2}}, {});
        row("too few points", u"polygon"_s, {{1, 1}, {2, 2}}, {});
        row("too many points", u"length"_s, {{1, 1}, {2, 2}, {3, 3}}, {});
        row("unknown", u"volume"_s, {{1, 1}, {2, 2}}, {});
    }
    void kinds()
    {
        const auto [kind, points, expected] = Rows<QString, BWPoints, QList<double>>::current();
        const auto check = [&, &expected = expected](const BWMeasurement &one, QSize picture, const QByteArray &name) {
            const auto results = one.results({picture, calibration(u"10"_s, picture.width() / 100.0)});
            QCOMPARE(results.size(), expected.size());
            for (qsizetype i = 0; i < results.size(); ++i) {
                const double value = results[i].quantity.value;
                QVERIFY2(std::isnan(expected[i]) ? std::isnan(value) : std::abs(value - expected[i]) < 1e-9,
                         name + ": " + QByteArray::number(value, 'g', 15));
            }
        };
        const BWMeasurement direct = measured(kind, points);
        check(direct, {1000, 800}, "as given");
        if (!direct.isComplete() || (!expected.isEmpty() && std::isnan(expected.first())))
            return;
        // In any look at the picture, by a hand that points exactly.
        const QSize picture(1283, 967);
        forAllLooks(picture,
                    [&, &kind = kind, &points = points](const BWRenderRequest &request, const QByteArray &name) {
                        const QTransform toViewport = request.pictureToViewport();
                        BWMeasurementList list;
                        BWMeasuringTool tool(list);
                        tool.setPicture(picture);
                        tool.setKind(kind);
                        for (const QPointF &point : points)
                            tool.press(toViewport.inverted().map(toViewport.map(point / picture.width())), 0, false);
                        tool.finish();
                        tool.setText(u"here"_s);
                        QCOMPARE(list.items().size(), 1);
                        check(list.items().first(), picture, name);
                    });
    }

    void errors()
    {
        // Two ends, each off by half a pixel across and along; across does not matter for a length.
        const BWPictureScale pixels{{1000, 800}, {}};
        const BWMeasurement line = measured(u"length"_s, {{100, 100}, {400, 100}});
        BWQuantity length = line.results(pixels).first().quantity;
        QCOMPARE(length.unit, Unit::Pixel);
        QCOMPARE(length.value, 300.0);
        QVERIFY(std::abs(length.error - std::sqrt(0.5)) < 0.01);
        // The scale's error counts as well, twice for an area.
        const BWPictureScale scaled{{1000, 800}, calibration(u"10"_s, 10, 0.02), Unit::Micrometre};
        length = line.results(scaled).first().quantity;
        QCOMPARE(length.value, 3000.0);
        QVERIFY(std::abs(length.error - 60.4) < 0.1);
        const auto square = measured(u"polygon"_s, {{100, 100}, {400, 100}, {400, 400}, {100, 400}}).results(scaled);
        QVERIFY(std::abs(square.first().quantity.error / square.first().quantity.value - 0.04) < 0.001);
    }

    void everythingCanBeUndone()
    {
        BWMeasurementList list;
        const BWMeasurement line = measured(u"length"_s, {{0, 0}, {100, 0}});
        const BWMeasurement longer = measured(u"length"_s, {{0, 0}, {200, 0}});
        list.undo(); // nothing
        list.add(line);
        list.beginChange();
        for (int x = 100; x <= 200; ++x)
            list.replace(0, measured(u"length"_s, {{0, 0}, {double(x), 0}}));
        list.endChange();
        list.replace(0, longer); // no change
        list.replace(7, line);
        list.remove(-1);
        list.undo();
        QCOMPARE(list.items(), {line});
        list.redo();
        QCOMPARE(list.items(), {longer});
        list.beginChange();
        list.clear();
        list.cancelChange();
        QCOMPARE(list.items(), {longer});
        list.remove(0);
        list.beginChange();
        list.add(line);
        list.undo(); // in the middle of a drag: that is given up, and what was before it undone
        QCOMPARE(list.items(), {longer});
        QVERIFY(list.isChanged());
        list.setSaved();
        list.add(line);
        QVERIFY(!list.canRedo());
        list.undo();
        QVERIFY(!list.isChanged());
        // In the middle of the list, too.
        list.reset({line, longer, line, longer});
        list.replace(1, line);
        list.remove(2);
        list.undo();
        QCOMPARE(list.items(), (QList{line, line, line, longer}));
        list.undo();
        QCOMPARE(list.items(), (QList{line, longer, line, longer}));
        for (int i = 0; i < 3; ++i)
            list.redo();
        QCOMPARE(list.items(), (QList{line, line, longer}));
    }

    void handsPlaceAndMovePoints()
    {
        BWMeasurementList list;
        BWMeasuringTool tool(list);
        tool.setPicture({1000, 500});
        tool.setKind(u"length"_s);
        tool.press({0.1, 0.1}, 0.01, false);
        tool.release();
        tool.move({0.3, 0.12}, true); // nearly level
        QCOMPARE(tool.unfinished(), measured(u"length"_s, {{100, 100}, {300, 100}}));
        QVERIFY(list.items().isEmpty());
        tool.press({7, 0.1}, 0.01, false); // beyond the edge
        QCOMPARE(list.items(), {measured(u"length"_s, {{100, 100}, {1000, 100}})});
        QVERIFY(tool.unfinished().points.isEmpty());

        // Any number of points, until it is said to be enough; one taken back; too few do not count.
        tool.setKind(u"polygon"_s);
        for (const QPointF at : {QPointF(0.2, 0.2), QPointF(0.4, 0.2), QPointF(0.4, 0.4)})
            tool.press(at, 0, false);
        QVERIFY(tool.remove());
        tool.finish();
        QCOMPARE(list.items().size(), 1);
        tool.nudge({-100, 10}); // by keys
        tool.place();
        tool.finish();
        QCOMPARE(list.items().last(), measured(u"polygon"_s, {{200, 200}, {400, 200}, {300, 410}}));
        tool.press({0.2, 0.2}, 0, false);
        QVERIFY(tool.cancel());
        tool.finish();
        QCOMPARE(list.items().size(), 2);

        // Picked, dragged in many steps, undone in one; the point keeps its distance from the pointer.
        tool.setKind({});
        tool.press({0.105, 0.1}, 0.01, false);
        QCOMPARE(tool.selection(), (BWMeasuringTool::Selection{0, 0}));
        for (int i = 0; i <= 100; ++i)
            tool.move({0.105 + i / 1000.0, 0.2}, false);
        tool.release();
        QCOMPARE(list.items()[0].points[0], QPointF(0.2, 0.2));
        list.undo();
        QCOMPARE(list.items()[0].points[0], QPointF(0.1, 0.1));
        tool.press({0.1, 0.1}, 0.01, false);
        tool.move({0.9, 0.4}, false);
        QVERIFY(tool.cancel()); // in the middle of a drag
        tool.release();
        QCOMPARE(list.items()[0].points[0], QPointF(0.1, 0.1));
        tool.press({0.5, 0.45}, 0.01, false); // nothing there
        QVERIFY(!tool.selection());

        // By keys: the point after the last is none.
        for (int i = 0; i < 5; ++i)
            tool.selectNext(true);
        QCOMPARE(tool.selection(), (BWMeasuringTool::Selection{1, 2}));
        tool.nudge({0, 10});
        QCOMPARE(list.items()[1].points[2], QPointF(0.3, 0.42));
        tool.selectNext(true);
        QVERIFY(!tool.selection() && !tool.remove() && !tool.cancel());
        tool.selectNext(false);
        QVERIFY(tool.remove());
        QCOMPARE(list.items().size(), 1);
        QVERIFY(!tool.selection());

        // What is selected can be undone away.
        tool.undo();
        tool.selectNext(false);
        while (list.canUndo())
            tool.undo();
        QVERIFY(!tool.selection() && !tool.remove());
        tool.nudge({1, 1});
        QVERIFY(list.items().isEmpty());
    }

    /// A line's middle is drawn where it was placed, light with a dark edge on both a white and a black ground.
    void drawnLines()
    {
        for (const QColor &ground : {QColor(Qt::white), QColor(Qt::black), QColor(255, 221, 64)}) {
            QImage image(200, 100, QImage::Format_RGB32);
            image.fill(ground);
            QPainter painter(&image);
            BWMeasurementPainter(painter, QTransform::fromScale(200, 200), 2, QFont(), english)
                .draw({u"path"_s, {{0.1, 0.25}, {0.9, 0.25}}}, {});
            painter.end();
            QVERIFY(image.pixelColor(100, 50).lightness() > image.pixelColor(100, 52).lightness() + 40);
            QCOMPARE(image.pixelColor(100, 49), image.pixelColor(100, 50)); // it lies on the edge between them
            QCOMPARE(image.pixelColor(100, 44), ground);
        }
    }

    void calibrationLines()
    {
        BWCalibrationLines lines;
        lines.add(0, 1);
        lines.add(0.5, -1);
        QCOMPARE(lines.mean(), 0.0);
        lines.add(0.5, 5);
        QVERIFY(std::abs(lines.relativeError(0.001) - std::sqrt(2.0) * 0.001) < 1e-12); // half a pixel at each end
        lines.add(0.25, 2.6);
        lines.add(0.5, 4.9);
        QCOMPARE(lines.mean(), (10 + 10.4 + 9.8) / 3);
        QVERIFY(std::abs(lines.spread() - 0.0303) < 0.0001);
        QCOMPARE(lines.relativeError(1e-6), lines.spread() / std::sqrt(3.0));
        lines.removeLast();
        QCOMPARE(lines.mean(), 10.2);
    }

    void calibrations()
    {
        BWCalibrations all;
        // What the measuring grid says: 355 of 640 points are 5 mm.
        QCOMPARE(all.chosen(u"dx10"_s).widthAt(u"640x480"_s), 640 * 5 / 355.0);
        QCOMPARE(all.chosen(u"dx10"_s).widthAt(u"1600x1200"_s), 1600 * 5 / 710.0);
        QCOMPARE(all.chosen(u"dx10"_s).widthAt(u"2592x1944"_s), 640 * 5 / 355.0);
        QVERIFY(!all.add(u"dx10"_s, calibration(u"5 × 5 mm"_s, 3)));
        QVERIFY(all.chosen(u"mx62"_s).isNull());
        for (const double wrong : {0.0, -1.0, 1e-9, 1e9, std::nan("")})
            QVERIFY(!all.add(u"mx62"_s, calibration(u"x"_s, wrong)));
        QVERIFY(!all.add(u"mx62"_s, calibration(u" "_s, 3)));
        QVERIFY(all.add(u"mx62"_s, calibration(u" 50x "_s, 3, 0.01)));
        QVERIFY(all.add(u"mx62"_s, calibration(u"200x"_s, 0.75)));
        QVERIFY(all.add(u"mx62"_s, calibration(u"50x"_s, 3.1, 0.01)));
        all.choose(u"dx10"_s, {});
        // Another product has none of them, and what is chosen survives.
        BWCalibrations read;
        QVERIFY(read.fromJson(all.toJson()));
        QCOMPARE(read.of(u"mx62"_s), (QList{calibration(u"200x"_s, 0.75), calibration(u"50x"_s, 3.1, 0.01)}));
        QCOMPARE(read.chosen(u"mx62"_s).name, u"50x"_s);
        QVERIFY(read.chosen(u"mx61"_s).isNull());
        QVERIFY(read.chosen(u"dx10"_s).isNull());
        QCOMPARE(read.of(u"dx10"_s).size(), 1);
        // Other names, for what users have made.
        for (const QString &wrong : {u" "_s, u"200x"_s})
            QVERIFY(!read.rename(u"mx62"_s, u"50x"_s, wrong));
        QVERIFY(!read.rename(u"dx10"_s, u"5 × 5 mm"_s, u"mine"_s) && !read.remove(u"dx10"_s, u"5 × 5 mm"_s));
        QVERIFY(read.rename(u"mx62"_s, u"50x"_s, u" 60x "_s));
        QCOMPARE(read.chosen(u"mx62"_s), calibration(u"60x"_s, 3.1, 0.01));
        // Removed while in use: none, not another one, nor one that is called so later.
        QVERIFY(read.remove(u"mx62"_s, u"60x"_s) && read.rename(u"mx62"_s, u"200x"_s, u"60x"_s));
        QVERIFY(read.chosen(u"mx62"_s).isNull());
        // Damage costs what is damaged.
        QVERIFY(!read.fromJson(u"[1"_s));
        QVERIFY(!read.fromJson(
            uR"({"mx62":{"own":[{"name":"a","millimetres_per_width":-1},7,{"name":"b","millimetres_per_width":2}],"chosen":"a"}})"_s));
        QCOMPARE(read.of(u"mx62"_s).size(), 1);
        QVERIFY(read.chosen(u"mx62"_s).isNull());
        QVERIFY(read.rename(u"mx62"_s, u"b"_s, u"a"_s) && read.chosen(u"mx62"_s).isNull());
    }

    /// Where it was made is known, and where it holds as well is said.
    void calibrationsBelongToTheirPictures()
    {
        BWCalibrations all;
        const QSize square(480, 480);
        BWCalibration made = calibration(u"own"_s, 8);
        made.lines = 3;
        QVERIFY(all.add(u"mx62"_s, all.madeIn({640, 480}, u"mx62"_s, made)));
        QVERIFY(all.chosen(u"mx62"_s).holdsFor({1600, 1200}) && !all.chosen(u"mx62"_s).holdsFor(square));
        all.allow(u"mx62"_s, u"own"_s, square);
        all.setUnit(Unit::Inch);
        BWCalibrations read;
        QVERIFY(read.fromJson(all.toJson()));
        QCOMPARE(read.chosen(u"mx62"_s), all.chosen(u"mx62"_s));
        QVERIFY(read.chosen(u"mx62"_s).holdsFor(square));
        QCOMPARE(read.unit(), Unit::Inch);
        QVERIFY(read.fromJson(BWCalibrations().toJson()) && !read.unit());
        // The fields of this product's resolutions are known to differ.
        for (const QSize unknown : {square, QSize(800, 600)})
            QVERIFY(!all.chosen(u"dx10"_s).holdsFor(unknown));
        made = all.madeIn({1600, 1200}, u"dx10"_s, calibration(u"own"_s, 16));
        QCOMPARE(made.widthAt(QSize(1600, 1200)), 16.0);
        QCOMPARE(made.widthAt(QSize(640, 480)), 12.8);
        QVERIFY(made.holdsFor({1280, 1024}));
        // Another product with that camera has no grid: its other resolutions may see other fields as well.
        BWCalibrations others({{u"dx10"_s, u"wired_high"_s}, {u"mx61"_s, u"wired_high"_s}, {u"mx62"_s, u"ultra"_s}});
        QVERIFY(others.add(u"mx61"_s, others.madeIn({640, 480}, u"mx61"_s, calibration(u"own"_s, 8))));
        QVERIFY(others.chosen(u"mx61"_s).holdsFor({640, 480}) && !others.chosen(u"mx61"_s).holdsFor({1600, 1200}));
        QCOMPARE(others.fieldOf(u"mx62"_s, {1600, 1200}), u"4:3"_s);
        QVERIFY(others.fromJson( // of a version that did not know
            uR"({"mx61":{"own":[{"name":"a","millimetres_per_width":2,"shapes":["4:3"]}],"chosen":"a"}})"_s));
        QVERIFY(!others.chosen(u"mx61"_s).holdsFor({640, 480}) && !others.chosen(u"mx61"_s).isNull());
        others.allow(u"mx61"_s, u"a"_s, {640, 480});
        QVERIFY(others.chosen(u"mx61"_s).holdsFor({640, 480}) && !others.chosen(u"mx61"_s).holdsFor({1600, 1200}));
    }

    void tables()
    {
        const BWPictureScale scale{{1000, 800}, calibration(u"10"_s, 10)};
        const BWMeasurementTable table({measured(u"length"_s, {{0, 0}, {150, 0}}), measured(u"count"_s, {{1, 1}}),
                                        measured(u"length"_s, {{0, 0}, {250, 0}}),
                                        measured(u"circle"_s, {{1, 1}, {2, 2}, {3, 3}})},
                                       scale, words());
        QCOMPARE(table.toString(BWMeasurementTable::Format::CsvPoint, german),
                 u"Name,What,Value,Unit,Error\r\nlength 1,length,1.500,mm,0.007\r\ncount 1,count,1,,\r\n"
                 "length 2,length,2.500,mm,0.007\r\ncircle 1,diameter,,mm,\r\ncircle 1,area,,mm²,\r\n"
                 "length: mean,length,2.000,mm,0.005\r\nlength: min,length,1.500,mm,0.007\r\n"
                 "\"length: max, all\",length,2.500,mm,0.007\r\nlength: sd,length,0.707,mm,0.005\r\n"_s);
        const QString comma = table.toString(BWMeasurementTable::Format::CsvComma, english);
        QVERIFY2(comma.contains(u"\r\nlength 1;length;1,500;mm;0,007\r\n"), qPrintable(comma));
        const QString french = table.toString(BWMeasurementTable::Format::Text, QLocale(QLocale::French));
        QVERIFY2(french.contains(u"\nlength 1\tlength\t1,500\tmm\t0,007\n"), qPrintable(french));
        const QString text = table.toString(BWMeasurementTable::Format::Text, german);
        QVERIFY2(text.startsWith(u"Name\tWhat\tValue\tUnit\tError\nlength 1\tlength\t1,500\tmm\t0,007\n"),
                 qPrintable(text));
    }

    void scaleBars_data()
    {
        const Rows<double, Unit, bool, double, QString> row; // and whether somebody has chosen the unit
        row("millimetres", 0.013, Unit::Millimetre, false, 1 / 0.013, u"1 mm"_s);
        row("metric units are one family", 0.0049, Unit::Centimetre, false, 0.2 / 0.0049, u"200 µm"_s);
        row("unless one is chosen", 0.0049, Unit::Centimetre, true, 0.2 / 0.0049, u"0.02 cm"_s);
        row("chosen, and large", 0.21, Unit::Micrometre, true, 20 / 0.21, u"20\u202f000 µm"_s);
        row("just reaches", 0.05, Unit::Millimetre, false, 100, u"5 mm"_s);
        row("centimetres", 0.21, Unit::Micrometre, false, 20 / 0.21, u"2 cm"_s);
        row("inches stay", 0.013, Unit::Inch, false, 0.05 * 25.4 / 0.013, u"0.05 in"_s);
        row("pixels", 0.5, Unit::Pixel, false, 100, u"50 px"_s);
        row("nothing", 0, Unit::Millimetre, false, 0, QString());
    }
    void scaleBars()
    {
        const auto [perPoint, unit, isChosen, length, text] = Rows<double, Unit, bool, double, QString>::current();
        const BWScaleBar bar(perPoint, 100, unit, isChosen);
        QVERIFY2(std::abs(bar.length - length) < 1e-6, qPrintable(QString::number(bar.length)));
        if (length > 0)
            QCOMPARE(bar.text(english).replace(QChar::Nbsp, u' '), text);
    }

    void whatIsDrawnIsMeasured_data()
    {
        const Rows<BWPixelFormat, QSize> row;
        row("odd", BWPixelFormat::RGB24, {161, 117});
        row("raw", BWPixelFormat::YUYV, {160, 120});
        row("higher than wide", BWPixelFormat::GREY, {99, 202});
    }
    /// The renderer draws a spot of the picture just where measuring takes it to be.
    void whatIsDrawnIsMeasured()
    {
        const auto [format, size] = Rows<BWPixelFormat, QSize>::current();
        const double width = size.width();
        const QList<QPointF> spots{{15.5, 14}, {width - 16, 20.5}, {40, size.height() - 15.5}};
        const BWFrame frame = TestFrames::make(format, size, [&](int x, int y) {
            double light = 30;
            for (const QPointF &spot : spots) {
                const QPointF off = QPointF(x + 0.5, y + 0.5) - spot;
                light += 200 * std::exp(-QPointF::dotProduct(off, off) / 12);
            }
            return QColor::fromRgbF(float(light / 255), float(light / 255), float(light / 255));
        });
        BWFrameRenderer renderer;
        forAllLooks(size, [&](const BWRenderRequest &request, const QByteArray &name) {
            QVERIFY(renderer.setFrame(frame, request));
            const BWRenderedImage drawn = renderer.render(request);
            const double scale = request.frameSize.width() / width * request.devicePixelRatio;
            for (const QPointF &spot : spots) {
                const QPointF at = request.pictureToViewport().map(spot / width) * request.devicePixelRatio;
                const QPointF seen = spotNear(drawn.image, at - drawn.position, 9 * scale) + drawn.position;
                QVERIFY2(std::hypot(seen.x() - at.x(), seen.y() - at.y()) < 0.1,
                         name + ": off by " + QByteArray::number(seen.x() - at.x()) + ", "
                             + QByteArray::number(seen.y() - at.y()));
            }
        });
    }
};

QTEST_MAIN(TestMeasuring)
#include "tst_BWMeasuring.moc"
