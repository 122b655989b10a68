#include "Views/Utils/BWMessageBoxAlertPresenter.h"

#include "Model/BWLocalizationManager.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

class TestBWMessageBoxAlertPresenter : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answers_data()
    {
        QTest::addColumn<bool>("withCancel");
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("ok");
        QTest::newRow("return is OK") << true << int(Qt::Key_Return) << true;
        QTest::newRow("escape is Cancel") << true << int(Qt::Key_Escape) << false;
        QTest::newRow("escape dismisses") << false << int(Qt::Key_Escape) << true;
    }
    void answers()
    {
        QFETCH(bool, withCancel);
        QFETCH(int, key);
        QFETCH(bool, ok);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(R"([{"parent": "general", "identifier": "option_ok", "localizations": {"de": "Ist gut"}},
                       {"parent": "general", "identifier": "option_cancel", "localizations": {"de": "Abbrechen"}}])");
        file.close();
        BWLocalizationManager texts(file.fileName(), {u"de-CH"_s});
        BWMessageBoxAlertPresenter presenter(texts);

        QString message;
        QStringList buttons;
        QTimer::singleShot(0, this, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            message = box->informativeText();
            const auto shown = box->buttons();
            for (const QAbstractButton *button : shown)
                buttons << button->text();
            QTest::keyClick(box, static_cast<Qt::Key>(key));
        });
        const QString markup = u"<b>Album</b>"_s;
        if (withCancel)
            QCOMPARE(presenter.presentOKCancel(u"Delete album"_s, markup), ok);
        else
            presenter.presentOK(u"Delete album"_s, markup);
        QCOMPARE(message, markup);
        QCOMPARE(buttons, withCancel ? QStringList({u"Ist gut"_s, u"Abbrechen"_s}) : QStringList{u"Ist gut"_s});
    }
};

QTEST_MAIN(TestBWMessageBoxAlertPresenter)
#include "tst_BWMessageBoxAlertPresenter.moc"
