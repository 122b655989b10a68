// SPDX-License-Identifier: GPL-3.0-or-later
#include "GridFixture.h"
#include "Rows.h"
#include "Views/Albums/BWThumbnailCellPainter.h"
#include "Views/Albums/BWThumbnailDrag.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"

#include <QScrollBar>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using Indexes = QList<int>;

namespace {

Indexes requested(const QSignalSpy &spy)
{
    Indexes indexes;
    for (const QUrl &file : spy.last().first().value<QList<QUrl>>())
        indexes.append(file.fileName().section(u'.', 0, 0).toInt());
    return indexes;
}

Indexes numbers(int from, int to)
{
    Indexes indexes;
    for (int index = from; from <= to ? index <= to : index >= to; index += from <= to ? 1 : -1)
        indexes.append(index);
    return indexes;
}

} // namespace

class TestBWThumbnailGrid : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keys_data()
    {
        // acted: the elements of any operation
        const Rows<QString, int, Indexes, Indexes> row;
        const Indexes none;
        row("right continues in the next row", u"Right|Right"_s, 2, Indexes{2}, none);
        row("up stays in the first row", u"Right|Up"_s, 1, Indexes{1}, none);
        row("page down", u"Right|PgDown"_s, 9, Indexes{9}, none);
        row("down to a cell that is not there", u"Right|PgDown|PgDown|PgDown|Down"_s, 24, Indexes{24}, none);
        row("shift extends and shrinks", u"Right|Shift+Down|Shift+Left"_s, 2, Indexes{1, 2}, none);
        row("and turns round the anchor", u"Down|Down|Shift+Right|Shift+Up|Shift+Left"_s, 2, Indexes{2, 3, 4}, none);
        row("space adds", u"Right|Ctrl+Down|Space"_s, 3, Indexes{1, 3}, none);
        row("space takes away", u"Right|Space"_s, 1, none, none);
        row("escape", u"Ctrl+A|Escape"_s, 0, none, none);
        row("enter opens the focus", u"Right|Ctrl+Down|Return"_s, 3, Indexes{1}, Indexes{3});
        row("enter opens the selection", u"Right|Shift+Down|Enter"_s, 3, Indexes{1, 2, 3}, Indexes{1, 2, 3});
        row("one is shown", u"Right|Shift+Down|Ctrl+Return"_s, 3, Indexes{1, 2, 3}, Indexes{3});
        row("one is compared", u"Down|Ctrl+Shift+Return"_s, 2, Indexes{2}, Indexes{2});
        row("one is renamed", u"Right|Shift+Down|F2"_s, 3, Indexes{1, 2, 3}, Indexes{3});
        row("copy", u"Right|Shift+Right|Ctrl+C"_s, 2, Indexes{1, 2}, Indexes{1, 2});
        row("in the file manager", u"Right|Ctrl+Shift+O"_s, 1, Indexes{1}, Indexes{1});
        row("delete", u"Right|Shift+Right|Delete"_s, 2, Indexes{1, 2}, Indexes{1, 2});
        row("all are saved", u"Ctrl+A|Ctrl+E"_s, 0, numbers(0, 24), numbers(0, 24));
    }
    void keys()
    {
        const auto [keys, focus, selected, acted] = Rows<QString, int, Indexes, Indexes>::current();
        GridFixture grid(25);
        for (const QString &key : keys.split(u'|')) {
            const QKeyCombination combination = QKeySequence(key)[0];
            QTest::keyClick(&grid.view, combination.key(), combination.keyboardModifiers());
        }
        QCOMPARE(grid.view.focusIndex(), focus);
        QCOMPARE(grid.view.mouseEventHandler()->selectedIndexes(), selected);
        QCOMPARE(grid.album.opened + grid.album.shown + grid.album.compared + grid.album.removed + grid.album.saved
                     + grid.album.onClipboard + grid.album.renamed + grid.album.revealed,
                 acted);
        QVERIFY(grid.view.viewport()->rect().contains(grid.view.visualRect(grid.view.currentIndex())));
    }

    void requestsInOrder()
    {
        GridFixture grid(10000);
        QSignalSpy spy(&grid.view, &BWThumbnailTableView::thumbnailsWanted);
        const auto scroll = [&](int row) { grid.view.verticalScrollBar()->setValue(row * 120); };
        grid.clock.advance(std::chrono::seconds(1));
        QCOMPARE(spy.size(), 1);
        QCOMPARE(requested(spy), numbers(0, 23));
        QCOMPARE(spy.last().last().toSize().height(), 106);
        for (int row = 1; row <= 100; ++row)
            scroll(row);
        QCOMPARE(spy.size(), 1);
        grid.clock.advance(std::chrono::seconds(1));
        QCOMPARE(spy.size(), 2);
        QCOMPARE(requested(spy), numbers(200, 207) + numbers(208, 223) + numbers(199, 184));
        scroll(99);
        grid.clock.advance(std::chrono::seconds(1));
        QCOMPARE(requested(spy), numbers(198, 205) + numbers(197, 182) + numbers(206, 221));
        scroll(100);
        scroll(99); // nothing has changed but the direction
        scroll(5000);
        grid.clock.advance(std::chrono::seconds(1));
        QCOMPARE(requested(spy), numbers(9992, 9999) + numbers(9991, 9976));
        grid.view.hide();
        grid.view.reloadData();
        grid.clock.advance(std::chrono::seconds(1));
        QCOMPARE(spy.size(), 4);
        grid.view.show(); // requests again in any case: the files may be others
        grid.clock.advance(std::chrono::seconds(1));
        QCOMPARE(spy.size(), 5);
    }

    void requestsAreImmediateButLimited()
    {
        using std::chrono_literals::operator""ms;
        GridFixture grid(10000);
        QSignalSpy spy(&grid.view, &BWThumbnailTableView::thumbnailsWanted);
        grid.clock.advance(0ms);
        QCOMPARE(spy.size(), 1);
        grid.clock.advance(10ms);
        grid.view.reloadData();
        grid.clock.advance(19ms);
        QCOMPARE(spy.size(), 1);
        grid.clock.advance(1ms);
        QCOMPARE(spy.size(), 2);
    }

    void onlyVisibleCellsArePainted()
    {
        GridFixture grid(10000);
        grid.view.verticalScrollBar()->setValue(120 * 10);
        QCoreApplication::processEvents();
        grid.album.painted.clear();
        grid.view.reloadData();
        grid.view.viewport()->repaint();
        const Indexes seen = numbers(20, 27);
        QCOMPARE(grid.album.painted, QSet<int>(seen.begin(), seen.end()));
        grid.album.painted.clear();
        const QList<QUrl> elements = grid.view.elements();
        grid.view.redrawElements({elements[3], elements[23], elements[5000]});
        QCoreApplication::processEvents();
        QCOMPARE(grid.album.painted, QSet<int>{23});
    }

    void rowHeights()
    {
        for (const auto &[height, row] : {std::pair{300, 75}, {499, 124}, {800, 125}}) {
            GridFixture grid(1000);
            grid.view.verticalScrollBar()->setValue(120 * 50);
            grid.view.resize(300, height);
            QCOMPARE(grid.view.rowHeight(0), row);
            QCOMPARE(grid.view.rowAt(0), 50); // the same row is still at the top
        }
    }

    void reloadKeepsTheFocusOnItsFile()
    {
        GridFixture grid(100);
        grid.view.verticalScrollBar()->setValue(120 * 20);
        grid.view.setFocusIndex(50);
        grid.album.insertFirst(u"a snapshot.jpg"_s);
        grid.view.reloadData();
        QCOMPARE(grid.view.focusIndex(), 51);
        QCOMPARE(grid.view.verticalScrollBar()->value(), 120 * 20);
        grid.album.setCount(10);
        grid.view.reloadData();
        QCOMPARE(grid.view.focusIndex(), 9);
        grid.album.setCount(0);
        grid.view.reloadData();
        QCOMPARE(grid.view.focusIndex(), -1);
    }

    void selectionMark()
    {
        GridFixture grid(7);
        grid.view.mouseEventHandler()->selectOnly(1);
        const QImage seen = grid.view.viewport()->grab().toImage();
        const auto isGreen = [&](int cell) {
            const QRect rect = grid.view.visualRect(grid.view.model()->index(cell / 2, cell % 2));
            const QColor colour = seen.pixelColor(BWThumbnailCellGeometry::markRect(rect).center().toPoint());
            return colour.green() > colour.red() + 40 && colour.green() > colour.blue() + 40;
        };
        QVERIFY(isGreen(1));
        QVERIFY(!isGreen(0));
        QCOMPARE(BWThumbnailCellGeometry::markRect(QRect(160, 80, 160, 80)), QRectF(170, 150, 5, 5));
    }

    void pictureRect()
    {
        // A cell of 140 x 120, in which pictures have 126 x 106.
        for (const auto &[pixels, scale, rect] :
             std::initializer_list<std::tuple<QSize, double, QRectF>>{{{2000, 1000}, 1, {7, 29, 126, 63}},
                                                                      {{1000, 2000}, 1, {44, 7, 53, 106}}, // wide, high
                                                                      {{20, 10}, 2, {65, 57.5, 10, 5}}, // not enlarged
                                                                      {{}, 1, {7, 13, 126, 94}},
                                                                      {{1, 5000}, 1, {70, 7, 1, 106}}})
            QCOMPARE(BWThumbnailCellGeometry::pictureRect(QRect(0, 0, 140, 120), pixels, scale), rect);
    }

    void lengths()
    {
        for (const auto &[milliseconds, text] : {std::pair{3, u"0:01"_s}, {59600, u"1:00"_s}, {3723000, u"1:02:03"_s}})
            QCOMPARE(BWThumbnailCellPainter::lengthText(std::chrono::milliseconds(milliseconds)), text);
    }

    void draggedData()
    {
        QImage image(8, 6, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QList<QUrl> files{QUrl::fromLocalFile(u"/album/a b.jpg"_s), QUrl::fromLocalFile(u"/album/ü.jpg"_s)};
        const BWThumbnailMimeData data({{files[0], u"public.jpeg"_s, image.size(), image}, {files[1], {}, {}, {}}});
        QCOMPARE(data.urls(), files);
        QVERIFY(data.data(u"text/uri-list"_s).startsWith("file:///album/a%20b.jpg\r\n"));
        QCOMPARE(data.imageData().value<QImage>(), image);
        const QString encoded = data.hasFormat(u"image/tiff"_s) ? u"image/tiff"_s : u"image/png"_s;
        QCOMPARE(QImage::fromData(data.data(encoded)).convertToFormat(image.format()), image);
        QVERIFY(!BWThumbnailMimeData({{files[0], {}, {}, {}}}).hasImage());
    }
};

QTEST_MAIN(TestBWThumbnailGrid)
#include "tst_BWThumbnailGrid.moc"
