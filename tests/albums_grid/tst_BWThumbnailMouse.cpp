// SPDX-License-Identifier: GPL-3.0-or-later
#include "GridFixture.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "Views/Albums/BWThumbnailMenu.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>

using namespace Qt::StringLiterals;

using Indexes = QList<int>;

class TestBWThumbnailMouse : public QObject {
    Q_OBJECT

private:
    /// One step: a letter and a number.
    static void act(GridFixture &grid, const QString &step)
    {
        const int number = step.mid(1).toInt();
        const QPoint place = grid.place(number);
        QWidget *viewport = grid.view.viewport();
        const auto click = [&](Qt::KeyboardModifiers modifiers = {}) {
            QTest::mousePress(viewport, Qt::LeftButton, modifiers, place);
            QTest::mouseRelease(viewport, Qt::LeftButton, modifiers, place);
        };
        switch (step[0].unicode()) {
        case 'c': // click
            return click();
        case 's': // with Shift
            return click(Qt::ShiftModifier);
        case 'k': // with Ctrl
            return click(Qt::ControlModifier);
        case 'd': // double click
            click();
            QTest::mouseDClick(viewport, Qt::LeftButton, {}, place);
            return;
        case 'p': // press
            return QTest::mousePress(viewport, Qt::LeftButton, {}, place);
        case 'r': // release
            return QTest::mouseRelease(viewport, Qt::LeftButton, {}, place);
        case 'm': { // menu
            QContextMenuEvent event(QContextMenuEvent::Mouse, place, viewport->mapToGlobal(place));
            QCoreApplication::sendEvent(viewport, &event);
            return;
        }
        case 'w': // wait
            return grid.clock.advance(std::chrono::milliseconds(number));
        case 'a': // fingers laid down, and all lifted
        case 'b':
            return grid.screen.touch(u"%1%2,%3"_s.arg(step[0]).arg(place.x()).arg(place.y()));
        case 'A':
        case 'B':
            return grid.screen.touch(step[0].toLower() + u"-"_s);
        case 'R':
            return grid.view.reloadData();
        default:
            QFAIL("no such step");
        }
    }

private Q_SLOTS:
    void gestures_data()
    {
        const Rows<QString, Indexes, Indexes, Indexes, Indexes> row;
        const Indexes none;
        row("a click waits for a second one", u"c3 w299"_s, none, none, none, none);
        row("and selects", u"c3 w300"_s, Indexes{3}, Indexes{3}, none, none);
        row("shift extends and adds", u"c3 w300 s5 w300 s1 w300"_s, Indexes{1, 2, 3, 4, 5}, Indexes{1}, none, none);
        row("clicked twice slowly", u"c3 w300 c3 w300"_s, none, Indexes{3}, none, none);
        row("shift after the anchor is gone", u"c3 w300 c3 w300 s5 w300"_s, Indexes{5}, Indexes{5}, none, none);
        row("a range in a hurry", u"c3 w50 s5 w300"_s, Indexes{3, 4, 5}, Indexes{5}, none, none);
        row("ctrl adds", u"c3 w300 k5 w300"_s, Indexes{3, 5}, Indexes{5}, none, none);
        row("ctrl takes away", u"c3 w300 s5 w300 k4 w300"_s, Indexes{3, 5}, Indexes{3, 4, 5}, none, none);
        row("a double click selects nothing", u"d3 w1000"_s, none, Indexes{3}, Indexes{3}, none);
        row("on the selection it opens all", u"c3 w300 s5 w300 d4 w1000"_s, Indexes{3, 4, 5}, Indexes{3, 4, 5},
            Indexes{3, 4, 5}, none);
        row("beside it, one", u"c3 w300 d1 w1000"_s, Indexes{3}, Indexes{1}, Indexes{1}, none);
        row("a third quick click is no single one", u"d3 c3 w1000"_s, none, Indexes{3}, Indexes{3}, none);
        row("nor is it the start of a drag", u"d3 p3 w1000"_s, none, Indexes{3}, Indexes{3}, none);
        row("but on another cell it is", u"d3 c5 w300"_s, Indexes{5}, Indexes{5}, Indexes{3}, none);
        row("nothing beyond the last", u"c3 w300 c7 w300 d7 w300 p7 w900"_s, Indexes{3}, Indexes{3}, none, none);
        row("menu on the selection", u"c3 w300 s5 w300 m4"_s, Indexes{3, 4, 5}, Indexes{3, 4, 5}, none, none);
        row("menu before the click has selected", u"c3 w100 m5 w300"_s, Indexes{3}, Indexes{5}, none, none);
        row("held a little", u"p3 w499"_s, none, none, none, none);
        row("held: dragged, not selected", u"p3 w500 r3 w300"_s, none, Indexes{3}, none, Indexes{3});
        row("held on the selection", u"c3 w300 s5 w300 p3 w500 r3 w300"_s, Indexes{3, 4, 5}, Indexes{3, 4, 5}, none,
            Indexes{3, 4, 5});
        row("held beside it", u"c3 w300 p1 w500"_s, Indexes{3}, Indexes{1}, none, Indexes{1});
        row("a tap selects", u"a3 A w300"_s, Indexes{3}, Indexes{3}, none, none);
        row("two quick taps open", u"a3 A w200 a3 A w1000"_s, none, Indexes{3}, Indexes{3}, none);
        row("a finger held a little", u"a3 w799 A w300"_s, Indexes{3}, Indexes{3}, none, none);
        row("a long press is for the menu", u"a3 w800 A w300"_s, none, Indexes{3}, none, none);
        row("two fingers do nothing, nor does one that bounces", u"a3 b5 A B w200 a3 A w1000"_s, none, none, none,
            none);
        row("but one that comes later", u"a3 b5 A B w250 a3 A w1000"_s, Indexes{3}, Indexes{3}, none, none);
        row("a reload forgets a click", u"c3 w100 R0 w1000"_s, none, none, none, none);
        row("a reload forgets a drag", u"p3 w100 R0 w1000 r3 w1000"_s, none, none, none, none);
        row("a reload within a double click", u"c3 R0 d3 w1000"_s, none, Indexes{3}, Indexes{3}, none);
    }
    void gestures()
    {
        const auto [steps, selected, operation, opened, dragged] =
            Rows<QString, Indexes, Indexes, Indexes, Indexes>::current();
        GridFixture grid(7); // the last row has one cell
        for (const QString &step : steps.split(u' '))
            act(grid, step);
        const auto handler = grid.view.mouseEventHandler();
        QCOMPARE(handler->selectedIndexes(), selected);
        QCOMPARE(handler->operationIndexes(), operation);
        QCOMPARE(grid.album.opened, opened);
        QCOMPARE(grid.view.dragged, dragged);
        for (int cell = 0; cell < 7; ++cell) // what a screen reader sees
            QCOMPARE(grid.view.selectionModel()->isSelected(grid.view.model()->index(cell / 2, cell % 2)),
                     handler->isSelected(cell));
    }

    void fingersScroll()
    {
        GridFixture grid(400);
        const QScrollBar &bar = *grid.view.verticalScrollBar();
        for (const QString &step : {u"a70,400"_s, u"a70,390"_s, u"a70,380"_s, u"a70,350"_s, u"a70,300"_s}) {
            grid.screen.touch(step);
            grid.clock.advance(std::chrono::milliseconds(10));
        }
        QTRY_COMPARE(bar.value(), 100);
        grid.screen.touch(u"a-"_s);
        QTRY_VERIFY(bar.value() > 200); // on by itself
    }

    void keyFollowsThePendingClick()
    {
        GridFixture grid(7);
        act(grid, u"c3"_s);
        QTest::keyClick(&grid.view, Qt::Key_A, Qt::ControlModifier);
        act(grid, u"w1000"_s);
        QCOMPARE(grid.view.mouseEventHandler()->selectedIndexes().size(), 7);
    }

    void everyOperationMayReload_data()
    {
        const Rows<QString, QString> row;
        row("opening", u"c2 w300 d3 w1000"_s, QString());
        row("dragging", u"c2 w300 p3 w500 r3 w1000"_s, QString());
        row("key that opens", u"c2 w300"_s, u"Return"_s);
        row("Trash", u"c2 w300"_s, u"Delete"_s);
    }
    void everyOperationMayReload()
    {
        const auto [steps, key] = Rows<QString, QString>::current();
        GridFixture grid(7);
        int reloads = 0;
        grid.album.onOperation = grid.view.onDrag = [&] {
            ++reloads;
            grid.album.setCount(1); // the others are gone
            grid.view.reloadData();
        };
        for (const QString &step : steps.split(u' '))
            act(grid, step);
        if (!key.isEmpty())
            QTest::keyClick(&grid.view, QKeySequence(key)[0].key(), QKeySequence(key)[0].keyboardModifiers());
        QCOMPARE(reloads, 1);
        QCOMPARE(grid.view.mouseEventHandler()->selectedIndexes(), Indexes());
        QCOMPARE(grid.view.focusIndex(), 0);
        grid.view.onTrash(); // no elements left to act on
        QCOMPARE(reloads, 1);
    }

    void dropInAFolder()
    {
        GridFixture grid(7);
        for (const QString &step : {u"c2"_s, u"w300"_s, u"s3"_s, u"w300"_s, u"p2"_s, u"w500"_s})
            act(grid, step);
        const QStringList names =
            grid.view.mouseEventHandler()->completeDragOperationAtDestination(QUrl(u"file:///somewhere"_s));
        QCOMPARE(names, QStringList({u"2.jpg"_s, u"3.jpg"_s}));
        QCOMPARE(grid.album.copied, grid.view.elements().mid(2, 2));
    }

    void menu()
    {
        BWLocalizationManager texts(u"/nonexistent"_s, {u"en"_s});
        GridFixture grid(7);
        grid.view.localizeWithManager(texts);
        QMenu *menu = grid.view.rightMenu();
        act(grid, u"m7"_s);
        QVERIFY(!menu->isVisible());
        act(grid, u"m5"_s);
        QVERIFY(menu->isVisible());
        const QList<QAction *> items = menu->actions();
        QStringList names;
        for (const QAction *item : items)
            names.append(item->text().section(u'\t', 0, 0));
        QCOMPARE(names,
                 QStringList({u"Select All"_s, u"Deselect All"_s, QString(), u"Open"_s, u"Show in the Main Window"_s,
                              u"Compare with the Live Image"_s, u"Show in the File Manager"_s, QString(), u"Copy"_s,
                              u"Rename..."_s, u"Move to Album"_s, u"Save as..."_s, u"Trash"_s}));
        QCOMPARE(grid.album.movable, Indexes{5});
        items[0]->trigger();
        QCOMPARE(grid.view.mouseEventHandler()->selectedIndexes().size(), 7);
        items[12]->trigger(); // still acts on the clicked element
        QCOMPARE(grid.album.removed, Indexes{5});
        act(grid, u"m4"_s);
        items[1]->trigger();
        QCOMPARE(grid.view.mouseEventHandler()->selectedIndexes(), Indexes());
        for (const int item : {3, 6, 8, 9, 11})
            items[item]->trigger();
        QCOMPARE(grid.album.renamed, Indexes{4});
        for (const Indexes &acted : {grid.album.opened, grid.album.revealed, grid.album.onClipboard})
            QCOMPARE(acted, Indexes({0, 1, 2, 3, 4, 5, 6}));
        QCOMPARE(grid.album.saved, Indexes({0, 1, 2, 3, 4, 5, 6}));
        menu->close();
        act(grid, u"m2"_s);
        grid.album.insertFirst(u"new.jpg"_s); // while the menu is open
        grid.view.reloadData();
        items[12]->trigger();
        QCOMPARE(grid.album.removed, Indexes{3});
    }
};

QTEST_MAIN(TestBWThumbnailMouse)
#include "tst_BWThumbnailMouse.moc"
