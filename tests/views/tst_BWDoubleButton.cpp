#include "Views/Utils/BWDoubleButton.h"

#include "Views/Utils/BWDoubleButtonHalf.h"

#include <QAccessible>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
void sendPress(QWidget &widget, QPointF position, Qt::MouseButton button = Qt::LeftButton,
               QEvent::Type type = QEvent::MouseButtonPress)
{
    QMouseEvent event(type, position, widget.mapToGlobal(position), button, button, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}
} // namespace

class TestBWDoubleButton : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pressChoosesHalf_data()
    {
        QTest::addColumn<double>("x");
        QTest::addColumn<int>("width");
        QTest::addColumn<bool>("right");
        QTest::newRow("left edge") << 0.0 << 120 << false;
        QTest::newRow("exact middle is left") << 60.0 << 120 << false;
        QTest::newRow("fraction past the middle is cut") << 60.99 << 120 << false;
        QTest::newRow("one past the middle") << 61.0 << 120 << true;
        QTest::newRow("odd width, cut below half") << 60.9 << 121 << false;
        QTest::newRow("odd width, first whole point past half") << 61.0 << 121 << true;
        QTest::newRow("right edge") << 119.5 << 120 << true;
    }
    void pressChoosesHalf()
    {
        QFETCH(double, x);
        QFETCH(int, width);
        QFETCH(bool, right);
        BWDoubleButton button;
        button.setText(u"100%"_s);
        button.resize(width, 40);
        button.setLastRight(!right);
        bool seen = !right;
        connect(&button, &BWDoubleButton::triggered, &button,
                [&seen](BWDoubleButton *sender) { seen = sender->lastRight(); });
        sendPress(button, {x, 20});
        QCOMPARE(seen, right); // already at the press, with the half set before
    }

    void ruleOnNarrowButton()
    {
        QVERIFY(!BWDoubleButton::isRightHalf(40.9, 81));
        QVERIFY(BWDoubleButton::isRightHalf(41, 81));
        QVERIFY(!BWDoubleButton::isRightHalf(-3, 81));
    }

    void onlyTheLeftMouseButtonActs()
    {
        BWDoubleButton button;
        button.resize(100, 40);
        QSignalSpy spy(&button, &BWDoubleButton::triggered);
        sendPress(button, {80, 20}, Qt::RightButton);
        QCOMPARE(spy.count(), 0);
        sendPress(button, {80, 20});
        sendPress(button, {80, 20}, Qt::LeftButton, QEvent::MouseButtonDblClick);
        QCOMPARE(spy.count(), 2); // two fast presses are two steps
        button.setEnabled(false);
        sendPress(button, {80, 20});
        QCOMPARE(spy.count(), 2);
    }

    void pressOnTheIconsAndTheTextReachesTheButton()
    {
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *button = new BWDoubleButton;
        button->setText(u"100%"_s);
        layout->addWidget(button);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy spy(button, &BWDoubleButton::triggered);
        for (const int x : {3, button->width() / 2 - 5, button->width() / 2 + 5, button->width() - 3}) {
            const QPoint inWindow = button->mapTo(&window, QPoint(x, button->height() / 2));
            QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, inWindow);
            QCOMPARE(button->lastRight(), x > button->width() / 2);
        }
        QCOMPARE(spy.count(), 4);
    }

    void keyboard()
    {
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *before = new QPushButton(u"before"_s);
        auto *button = new BWDoubleButton;
        auto *after = new QPushButton(u"after"_s);
        for (QWidget *widget : std::initializer_list<QWidget *>{before, button, after})
            layout->addWidget(widget);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QSignalSpy spy(button, &BWDoubleButton::triggered);
        const auto press = [](Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); };

        before->setFocus();
        press(Qt::Key_Tab);
        press(Qt::Key_Space);
        QCOMPARE(spy.count(), 1);
        QVERIFY(!button->lastRight());
        press(Qt::Key_Right);
        press(Qt::Key_Return);
        QCOMPARE(spy.count(), 2);
        QVERIFY(button->lastRight());
        press(Qt::Key_Left);
        press(Qt::Key_Tab);
        press(Qt::Key_Enter);
        QCOMPARE(spy.count(), 3);
        QVERIFY(button->lastRight());
        press(Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), after);
    }

    void screenReaderSeesTwoNamedButtons()
    {
        BWDoubleButton button;
        button.setLeftName(u"Zoom out"_s);
        button.setRightName(u"Zoom in"_s);
        QSignalSpy spy(&button, &BWDoubleButton::triggered);
        QAccessibleInterface *group = QAccessible::queryAccessibleInterface(&button);
        QStringList names;
        for (int i = 0; i < group->childCount(); ++i) {
            QAccessibleInterface *child = group->child(i);
            if (child->role() != QAccessible::Button)
                continue;
            names << child->text(QAccessible::Name);
            child->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
            QTRY_COMPARE(spy.count(), names.count());
            QCOMPARE(button.lastRight(), names.count() == 2);
        }
        QCOMPARE(names, QStringList({u"Zoom out"_s, u"Zoom in"_s}));
    }

    void shorterTextMovesNothing()
    {
        BWDoubleButton button;
        button.setWidestText(u"200%"_s);
        button.setText(u"200%"_s);
        const QSize widest = button.sizeHint();
        button.setText(u"50%"_s);
        QCOMPARE(button.sizeHint(), widest);
    }
};

QTEST_MAIN(TestBWDoubleButton)
#include "tst_BWDoubleButton.moc"
