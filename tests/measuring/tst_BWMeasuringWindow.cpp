// SPDX-License-Identifier: GPL-3.0-or-later
#include "ActiveWindow.h"
#include "MeasuringBench.h"

class TestBWMeasuringWindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void otherWaysToPlace()
    {
        Bench bench;
        bench.pick(u"length"_s);
        bench.window.menu().measuring->tools().at(1)->setChecked(false); // as a screen reader can
        bench.mouse(QEvent::MouseButtonPress, bench.at(100, 100)); // from end to end in one go
        bench.mouse(QEvent::MouseMove, bench.at(190, 230));
        bench.mouse(QEvent::MouseButtonRelease, bench.at(200, 100));
        bench.click(bench.at(100, 110));
        bench.click(bench.at(200, 113), Qt::ShiftModifier); // nearly level
        for (const bool accepts : {false, true}) {
            bench.measure(u"arrow"_s, {{50, 300}, {80, 320}});
            auto *field = bench.layer().findChild<QLineEdit *>();
            QTest::keyClicks(field, u"edge"_s);
            QTest::keyClick(field, accepts ? Qt::Key_Return : Qt::Key_Escape);
            QTRY_VERIFY(!bench.layer().findChild<QLineEdit *>());
        }
        QCOMPARE(bench.list(), u"length 100,100 200,100; length 100,110 200,110; arrowedge 50,300 80,320"_s);
    }

    void arrowKeysFollowTheScreen()
    {
        Bench bench;
        bench.liveView.onRotate(u"90"_s);
        bench.waitForPicture();
        bench.pick(u"length"_s);
        bench.mouse(QEvent::MouseMove, bench.at(100.5, 100.5));
        QTest::keyClick(&bench.layer(), Qt::Key_Space);
        QTest::keyClick(&bench.layer(), Qt::Key_Down, Qt::ShiftModifier);
        QTest::keyClick(&bench.layer(), Qt::Key_Left);
        QTest::keyClick(&bench.layer(), Qt::Key_Return);
        QCOMPARE(bench.list(), u"length 100,100 90,99"_s);
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Tab})
            QTest::keyClick(&bench.layer(), key);
        QTest::keyClick(&bench.layer(), Qt::Key_Space, Qt::ShiftModifier); // levels the line
        QCOMPARE(bench.list(), u"length 100,100 90,100"_s);
        bench.window.menu().measuring->undo->trigger();
        QCOMPARE(bench.list(), u"length 100,100 90,99"_s);
        QTest::keyClick(&bench.layer(), Qt::Key_Tab);
        QVERIFY(!bench.layer().hasFocus()); // behind the last point the keyboard goes on
    }

    void halfTypedTextIsKept()
    {
        for (const char *const way : {"closed", "album", "640x480", "tool", "undone", "quit"}) {
            Bench bench;
            for (const QString &text : {u"edge"_s, u" "_s}) { // what is blank says nothing
                bench.measure(u"arrow"_s, {{50, 300}, {80, 320}});
                QTest::keyClicks(bench.layer().findChild<QLineEdit *>(), text);
                bench.act(QLatin1String(way));
                QTRY_VERIFY(!bench.layer().findChild<QLineEdit *>());
                bench.measuring.setOpen(true);
                bench.show(u"a.jpg"_s);
                if (bench.window.menu().measuring->redo->isEnabled())
                    bench.window.menu().measuring->redo->trigger();
                QCOMPARE(bench.list(), u"arrowedge 50,300 80,320"_s);
            }
        }
    }

    void oddOrders()
    {
        Bench bench;
        bench.pick(u"length"_s);
        bench.click(bench.at(100, 100));
        bench.measure(u"radius"_s, {{200, 200}, {250, 200}}); // while placing: a new beginning
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
        bench.pick({});
        bench.mouse(QEvent::MouseButtonPress, bench.at(200, 200));
        bench.mouse(QEvent::MouseMove, bench.at(300, 300));
        bench.window.menu().measuring->undo->trigger(); // while dragging: takes the drag back, and no more
        bench.mouse(QEvent::MouseMove, bench.at(310, 300));
        bench.mouse(QEvent::MouseButtonRelease, bench.at(310, 300));
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
        bench.mouse(QEvent::MouseButtonPress, bench.at(200, 200));
        bench.mouse(QEvent::MouseMove, bench.at(300, 300));
        bench.measuring.setOpen(false);
        bench.mouse(QEvent::MouseMove, bench.at(310, 300));
        bench.mouse(QEvent::MouseButtonRelease, bench.at(310, 300));
        QCOMPARE(bench.list(), u"radius 200,200 250,200"_s);
        QVERIFY(bench.layer().isVisible() && bench.layer().testAttribute(Qt::WA_TransparentForMouseEvents));
    }

    void clicksTakeNoPictureWhileMeasuring()
    {
        Bench bench;
        bench.view.setLeftButtonClicks([] { return true; });
        const QSignalSpy pressed(&bench.view, &BWCenteringClipView::mousePressed);
        const auto click = [&] {
            QTest::qWait(250); // the program counts as just brought to the front
            const QPoint at = bench.view.viewport()->mapTo(&bench.window, QPoint(100, 100));
            QTest::mouseClick(bench.window.windowHandle(), Qt::LeftButton, {}, at);
            return pressed.count();
        };
        QCOMPARE(click(), 0);
        bench.measuring.setOpen(false);
        QCOMPARE(click(), 1);
    }

    void everyPictureHasItsOwn()
    {
        Bench bench;
        bench.measure(u"length"_s, {{100, 100}, {150, 100}});
        bench.scene.showAlbumPicture({}, u"b.jpg"_s); // it takes long to read
        QVERIFY(!bench.window.menu().measuring->undo->isEnabled());
        bench.freeze({640, 480});
        for (const QString &camera : {u"twin"_s, u"other camera"_s}) {
            bench.act(u"line"_s);
            bench.act(u"live"_s);
            bench.act(camera);
            bench.freeze({640, 480});
            QCOMPARE(bench.list(), QString());
        }
        // Of this one, resolutions of one shape see the same.
        bench.measure(u"length"_s, {{300, 100}, {350, 100}});
        bench.freeze({1600, 1200}); // of the same shape
        QCOMPARE(bench.list(), u"length 300,100 350,100"_s);
        QCOMPARE(bench.measuring.ofCamera().field, u"4:3"_s);
        bench.show(u"a.jpg"_s);
        QCOMPARE(bench.list(), u"length 100,100 150,100"_s);
    }

    void scaleIsChosenInStripAndMenu()
    {
        Bench bench;
        bench.freeze({640, 480});
        auto &strip = *bench.strip().findChild<QComboBox *>();
        const QMenu *menu = nullptr;
        for (const QMenu *one : bench.window.findChildren<QMenu *>())
            menu = one->title() == "Sc&ale"_L1 ? one : menu;
        const auto checked = [menu] {
            QStringList all;
            for (const QAction *action : menu->actions())
                all << (action->isChecked() ? action->text() : QString());
            return all.join(u'|');
        };
        const auto pick = [&strip](int index) {
            strip.setCurrentIndex(index);
            Q_EMIT strip.activated(index);
        };
        QCOMPARE(titles(strip), u"No scale: pixels|5 × 5 mm||Calibrate...|Calibrations..."_s);
        bench.measure(u"length"_s, {{100, 100}, {455, 100}});
        QCOMPARE(bench.said(), u"Length 1: 5.00 mm"_s);
        pick(0);
        QVERIFY(!bench.measuring.scale().isCalibrated());
        QCOMPARE(checked(), u"No scale: pixels|"_s);
        menu->actions().at(1)->trigger();
        QVERIFY(bench.measuring.scale().isCalibrated());
        QCOMPARE(checked() + strip.currentText(), u"|5 × 5 mm5 × 5 mm"_s);

        pick(3); // no scale, but a new one
        QCOMPARE(strip.currentText(), u"5 × 5 mm"_s);
        auto *dialog = bench.window.findChild<BWCalibrationDialog *>();
        const auto fields = dialog->findChildren<QLineEdit *>();
        fields.first()->setText(u"7.1 mm"_s);
        fields.last()->setText(u"R&D"_s);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save)->click();
        QCOMPARE(checked() + strip.currentText(), u"||R&&DR&D"_s);
        QCOMPARE(bench.measuring.scale().millimetresPerWidth(), 7.1 * 640 / 355);
        const auto actions = bench.window.findChildren<QAction *>();
        for (QAction *unit : actions) {
            if (unit->text() == "in"_L1)
                unit->trigger();
        }
        bench.measure(u"length"_s, {{100, 200}, {455, 200}});
        QCOMPARE(bench.said(), u"Length 2: 0.2795 in"_s);
        BWCalibrations stored; // for the next start
        QVERIFY(stored.fromJson(BWConfigManager(bench.defaults).calibrations()));
        QCOMPARE(stored.chosen(u"dx10"_s).name, u"R&D"_s);
        QCOMPARE(stored.unit(), BWLengthUnit::Inch);
    }

    void calibrationsAreManaged()
    {
        Bench bench(u"mx61"_s);
        bench.freeze({640, 480});
        bench.window.menu().measuring->calibrations->trigger();
        auto *dialog = bench.window.findChild<BWCalibrationsDialog *>();
        activateAtOnce(dialog);
        auto *list = dialog->findChild<QTreeWidget *>();
        const auto shown = [list] {
            const QTreeWidgetItem *first = list->topLevelItem(0);
            return first ? first->text(0) + u' ' + first->text(1).replace(QChar::Nbsp, u' ') : QString();
        };
        QCOMPARE(shown(), u"50x 1.000 cm"_s);
        for (const auto &[typed, name] : {std::pair(u" "_s, u"50x"_s), std::pair(u"60x"_s, u"60x"_s)}) {
            QTest::keyClick(list, Qt::Key_F2);
            auto *field = list->findChild<QLineEdit *>();
            field->setText(typed);
            QTest::keyClick(field, Qt::Key_Return);
            QTRY_COMPARE(shown(), name + u" 1.000 cm"_s);
        }
        QCoreApplication::processEvents(); // the editor has gone
        QVERIFY(dialog->isVisible());
        QCOMPARE(bench.measuring.scale().calibration.name, u"60x"_s);
        for (const bool agrees : {false, true}) {
            bench.agrees = agrees;
            QTest::keyClick(list, Qt::Key_Delete);
            QVERIFY2(bench.asked.contains(u"“60x” for good? It is in use"_s), qPrintable(bench.asked));
            QCOMPARE(shown(), agrees ? QString() : u"60x 1.000 cm"_s);
        }
        QVERIFY(hasLabel(*dialog, u"“60x” was removed. No calibration is in use now: lengths are in pixels."_s));
        QVERIFY(!bench.measuring.scale().isCalibrated());
        // What came with a product stays.
        bench.act(u"dx10"_s);
        QVERIFY(!bench.measuring.scale().calibration.name.isEmpty());
        bench.asked.clear();
        bench.window.menu().measuring->calibrations->trigger();
        dialog = bench.window.findChildren<BWCalibrationsDialog *>().last();
        activateAtOnce(dialog);
        list = dialog->findChild<QTreeWidget *>();
        QTest::keyClick(list, Qt::Key_Delete);
        QVERIFY(bench.asked.isEmpty() && list->topLevelItem(0));
    }

    /// A line of half a picture's width, by MX61 with a scale of 10 mm; then, or before, something else becomes true.
    void scaleIsNeverWrongSilently_data()
    {
        const auto now = u"The scale is now “50x”"_s;
        const auto following = u"The scale is now “50x”; existing measurements follow it"_s;
        const auto pixels = u"No scale is chosen: lengths are now in pixels"_s;
        const auto withheld = u"“50x” was made in pictures of another size or shape"_s;
        const auto made = u"The scale is now “new”; existing measurements follow it"_s;
        const Rows<QString, double, QString> row; // what happens; millimetres, 0 for pixels; what is said
        row("as it was", u"line"_s, 5, {});
        row("another resolution", u"line, 1600x1200, 640x480"_s, 5, withheld);
        row("another field", u"1600x1200, line"_s, 0, withheld);
        row("another field, chosen again", u"1600x1200, choose, line"_s, 5, now);
        row("known fields", u"dx10, line, 1600x1200, line"_s, 800 * 5 / 710.0, u"The scale is now “5 × 5 mm”"_s);
        row("unknown field", u"dx10, 800x600, line"_s, 0, u"“5 × 5 mm” was made in pictures of another"_s);
        row("in an album", u"line, album, line, choose"_s, 5, following);
        row("in an album's cut picture", u"cut, line, choose"_s, 5, withheld);
        row("only the scale bar shows", u"bar, closed, mx63, line"_s, 2, now);
        row("another product while asked", u"line, ask, dx11t, answer, mx61"_s, 8, made);
        row("another picture while asked", u"line, album, line, ask, 640x480, answer"_s, 5, {});
        row("a picture while asked", u"line, ask, album, line, answer, 640x480"_s, 8, made);
        row("another product", u"line, dx11t"_s, 0, pixels);
        row("another one of the same name", u"line, mx63"_s, 2, following);
        row("nothing measured yet", u"mx63, line"_s, 2, now);
        row("while the album shows", u"line, album, mx63, 640x480"_s, 2, following);
        row("imported", u"line, import"_s, 2, following);
        row("the camera goes", u"line, unplug"_s, 5, {});
        row("another camera comes", u"line, other camera"_s, 5, {});
        row("picture of another camera", u"live, other camera, 640x480, line"_s, 0, {});
        row("another shape", u"1280x720, line"_s, 0, withheld);
        row("another shape, chosen again", u"1280x720, choose, line"_s, 5, now);
        row("and back", u"1280x720, choose, 640x480, line"_s, 5, now);
        row("picture of another product", u"album, file"_s, 2, {});
        row("its scale left and chosen again", u"album, file, none, choose"_s, 2, following);
        row("picture of nobody knows what", u"album, line"_s, 0, {});
    }
    void scaleIsNeverWrongSilently()
    {
        const auto [steps, millimetres, said] = Rows<QString, double, QString>::current();
        Bench bench(u"mx61"_s);
        bench.freeze({640, 480});
        const auto all = steps.split(u", "_s);
        for (const QString &step : all)
            bench.act(step);
        const auto quantity = bench.measuring.measurements().first().results(bench.measuring.scale()).first().quantity;
        QCOMPARE(quantity.value * BWLengths::millimetres(quantity.unit), millimetres);
        QCOMPARE(bench.strip().findChild<QComboBox *>()->currentIndex() > 0, millimetres > 0);
        const QString status = bench.window.currentCameraLabel().text();
        QVERIFY2(said.isNull() ? status.isEmpty() : status.startsWith(said), qPrintable(status));
    }

    /// Points belong to the main picture: beside it, nothing is drawn and nothing is clicked.
    void comparingLeavesTheOtherPictureAlone_data()
    {
        const Rows<BWScene::Mode, bool> row; // and whether the right of the window belongs to the other picture alone
        row("side by side", BWScene::Mode::SideBySide, true);
        row("dividing line", BWScene::Mode::Divider, true);
        row("overlay", BWScene::Mode::Overlay, false);
    }
    void comparingLeavesTheOtherPictureAlone()
    {
        const auto [mode, isOther] = Rows<BWScene::Mode, bool>::current();
        Bench bench(u"mx61"_s);
        bench.view.setLeftButtonClicks([] { return true; });
        const QSignalSpy snapshots(&bench.view, &BWCenteringClipView::mousePressed);
        bench.scene.compareWith(picture());
        bench.liveView.setComparison(mode, 0.5);
        bench.waitForPicture();
        const QSize size = bench.view.viewport()->size();
        const QRect right(size.width() / 2 + 20, 0, size.width() / 2 - 20, size.height());
        const auto red = [&] { return bench.view.viewport()->grab(right).toImage().pixelColor(200, 200).red(); };
        QTRY_VERIFY(std::abs(red() - 128) <= 1);
        const QImage before = bench.view.viewport()->grab(right).toImage();
        QTest::qWait(250); // the program counts as just brought to the front
        bench.pick(u"length"_s);
        bench.mouse(QEvent::MouseMove, {size.width() - 250.0, 200});
        bench.click({size.width() - 250.0, 200});
        bench.click({size.width() - 200.0, 215});
        QCOMPARE(bench.measuring.measurements().size(), isOther ? 0 : 1);
        bench.mouse(QEvent::MouseButtonPress, {200, 230});
        bench.mouse(QEvent::MouseMove, {size.width() - 250.0, 230});
        bench.mouse(QEvent::MouseButtonRelease, {size.width() - 250.0, 230});
        const double end = bench.view.pictureToViewport()->map(bench.measuring.measurements().last().points[1]).x();
        QCOMPARE(end < right.left(), isOther);
        QCOMPARE(bench.view.viewport()->grab(right).toImage() == before, isOther);
        QCOMPARE(snapshots.count(), 0);
    }

    /// In the middle of the magnifier is the pixel below the pointer: in the picture's corners, too, and when the picture moves
    /// below a pointer that rests.
    void magnifierShowsThePointersPixel_data()
    {
        const Rows<QPoint, int> row; // a pixel, and how large the window becomes then
        row("middle", QPoint(320, 240), 977);
        row("upper left", QPoint(0, 0), 977);
        row("lower right", QPoint(639, 479), 977);
        row("window of another size", QPoint(300, 200), 1177);
    }
    void magnifierShowsThePointersPixel()
    {
        const auto [at, width] = Rows<QPoint, int>::current();
        QImage colors(pictureSize, QImage::Format_RGB32);
        for (int i = 0; i < colors.width() * colors.height(); ++i)
            colors.setPixel(i % 640, i / 640, colorAt({i % 640, i / 640}));
        Bench bench;
        bench.window.resize(977, 720);
        bench.scene.showAlbumPicture(colors, u"c.jpg"_s);
        bench.waitForPicture();
        bench.pick(u"length"_s);
        const double ratio = bench.view.devicePixelRatioF();
        const QPointF pointer = bench.at(at.x() + 0.5, at.y() + 0.5) * ratio;
        bench.mouse(QEvent::MouseMove, QPointF(std::floor(pointer.x()), std::floor(pointer.y())) / ratio);
        const QPointF before = bench.at(0, 0);
        bench.window.resize(width, 720);
        bench.waitForPicture();
        const QPoint pixel = at + (before - bench.at(0, 0)).toPoint();
        QImage screen;
        std::optional<QPoint> middle; // of the enlarged pixel
        const auto isShown = [&] {
            screen = bench.screen();
            const int side = qRound(BWMagnifier::factor * ratio);
            for (int i = 0; i < screen.width() * (screen.height() - side) - side; ++i) {
                const QPoint first(i % screen.width(), i / screen.width());
                const QPoint last = first + QPoint(side - 1, side - 1);
                if (screen.pixel(first) == colorAt(pixel) && screen.valid(last) && screen.pixel(last) == colorAt(pixel))
                    middle = first + QPoint(side, side) / 2;
            }
            return middle.has_value();
        };
        QTRY_VERIFY(isShown());
        const auto seen = [&](QPoint off) {
            return screen.pixel(*middle + (QPointF(off) * BWMagnifier::factor * ratio).toPoint());
        };
        for (const QPoint off : {QPoint(5, 5), QPoint(-5, 5), QPoint(5, -5), QPoint(-5, -5)}) {
            const bool isInside = QRect(QPoint(), pictureSize).contains(pixel + off);
            QCOMPARE(seen(off), isInside ? colorAt(pixel + off) : qRgb(0, 0, 0));
        }
        // Arms of the cross; the pointer may be anywhere over the pixel.
        for (const bool isUpright : {false, true}) {
            bool isCrossed = false;
            for (int i = 0; i < BWMagnifier::factor * ratio; ++i) {
                const QPoint arm = (QPointF(8, -0.5) * BWMagnifier::factor * ratio).toPoint() + QPoint(0, i);
                isCrossed |= screen.pixel(*middle + (isUpright ? arm.transposed() : arm)) == qRgb(255, 221, 64);
            }
            QVERIFY(isCrossed);
        }
    }

    /// A round length in every look, within the picture and clear of what lies over it.
    void scaleBarFollowsThePicture_data()
    {
        const Rows<QString> row;
        for (const char *const look : {"640x480", "zoomed", "fit", "turned", "mirrored", "small", "compared"})
            row(look, QString::fromLatin1(look));
    }
    void scaleBarFollowsThePicture()
    {
        Bench bench(u"mx61"_s);
        bench.freeze({640, 480});
        bench.act(std::get<0>(Rows<QString>::current()));
        bench.waitForPicture();
        QImage without;
        const auto isSettled = [&] { // no strip is on its way
            const QImage now = bench.screen();
            return now == std::exchange(without, now);
        };
        QTRY_VERIFY(isSettled());
        bench.window.menu().measuring->scaleBar->trigger();
        const QImage with = bench.screen();
        QRect drawn; // in device pixels
        for (int i = 0; i < with.width() * with.height(); ++i) {
            const QPoint at(i % with.width(), i / with.width());
            if (with.pixel(at) != without.pixel(at))
                drawn |= QRect(at, QSize(1, 1));
        }
        const double ratio = with.devicePixelRatio();
        const QRectF place(QPointF(drawn.topLeft()) / ratio, QSizeF(drawn.size()) / ratio);
        const double perPoint = 10 / QLineF(bench.at(0, 0), bench.at(640, 0)).length(); // millimetres
        constexpr double line = 3;
        const double length = (place.width() - line) * perPoint;
        const double power = std::pow(10, std::floor(std::log10(length * 1.1)));
        const double off = std::abs(length - power * (length < 1.5 * power ? 1 : length < 3.5 * power ? 2 : 5));
        QVERIFY2(off <= 2 * perPoint, qPrintable(QString::number(length)));
        QRectF room = bench.view.scene().mainClip(bench.view.viewport()->size());
        for (const QWidget *over : {static_cast<const QWidget *>(&bench.window.comparisonStrip()),
                                    static_cast<const QWidget *>(&bench.window.currentCameraLabel())}) {
            if (over->isVisible())
                room.setBottom(
                    std::min(room.bottom(), bench.view.viewport()->mapFromGlobal(over->mapToGlobal(QPointF())).y()));
        }
        QVERIFY2(room.contains(place) && place.width() > 40, qPrintable(QDebug::toString(place)));
        QVERIFY(bench.view.pictureToViewport()->mapRect(QRectF(0, 0, 1, 0.75)).contains(place));
    }
};

QTEST_MAIN(TestBWMeasuringWindow)
#include "tst_BWMeasuringWindow.moc"
