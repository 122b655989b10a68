// SPDX-License-Identifier: GPL-3.0-or-later
#include "AttachedCameras.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "Utils/BWVersion.h"
#include "Views/Albums/BWThumbnailKeyboard.h"
#include "Views/Help/BWHelpContact.h"
#include "Views/Help/BWShortcutTable.h"
#include "Views/Help/BWSimpleHelpWindowController.h"
#include "Views/MainWindow/BWMainMenu.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

class TestBWHelpWindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void mail()
    {
        for (const QString &text : {u"Mikroskop 1"_s, u"a&b=c?d#e+f%20g;h,i:/'k"_s, u"Größe – 顕微鏡 🔬"_s}) {
            const BWSupportMail mail{u"help+me@maker.example"_s, text, text, {u"BrimwellPro"_s, text + u"\r\n 2"_s}};
            const QUrl url = mail.url();
            QVERIFY2(url.isValid(), qPrintable(url.errorString()));
            const QByteArray bytes = url.toEncoded(); // what the mail program is given
            QVERIFY(bytes.startsWith("mailto:help%2Bme@maker.example?subject="));
            for (const char mark : {'+', ' ', '#', '\n'})
                QVERIFY(!bytes.contains(mark));
            const QUrlQuery query(url);
            QCOMPARE(query.queryItems().size(), 2);
            QCOMPARE(query.queryItemValue(u"subject"_s, QUrl::FullyDecoded), text);
            QCOMPARE(query.queryItemValue(u"body"_s, QUrl::FullyDecoded),
                     text + u"\r\n\r\n\r\nBrimwellPro\r\n"_s + text + u" 2"_s);
        }
    }

    void longMailIsCutAtALine()
    {
        // how many cameras, and how long their names are, in characters of two units
        for (const auto &[count, length] : {std::pair{100, 5}, {1, 5000}, {100, 5000}}) {
            const QString name = u"x"_s + u"🔬"_s.repeated(length);
            const QUrl url = BWSupportMail{u"a@b.example"_s, u"Help"_s, u"Tell us"_s, QStringList(count, name)}.url();
            QVERIFY(url.isValid());
            QVERIFY(url.toEncoded().size() <= BWSupportMail::maxLength);
            const QString body = QUrlQuery(url).queryItemValue(u"body"_s, QUrl::FullyDecoded);
            QVERIFY(body.startsWith(u"Tell us\r\n\r\n\r\nx🔬"_s) && body.endsWith(u'…'));
            QVERIFY(!body.contains(u'?') && !body.contains(QChar::ReplacementCharacter));
        }
    }

    void shortcutsAreThoseOfTheMenus()
    {
        QMainWindow window;
        BWMainMenu menu(window);
        BWLocalizationManager texts(QStringLiteral(BW_RESOURCES "/localization.json"), {u"ja"_s});
        menu.localizeWithManager(texts);
        menu.fullScreen->setVisible(false);
        menu.rotate->setShortcut({});
        menu.quit->setText(u"Drag && &drop…"_s);
        QStringList shown;
        const auto sections = BWShortcutSection::ofActions(window.menuBar()->actions());
        for (const BWShortcutSection &section : sections) {
            for (const BWShortcutSection::Shortcut &shortcut : section.shortcuts)
                shown << section.title + u": "_s + shortcut.name + u" "_s + shortcut.keys.join(u'|');
        }
        for (const QString &text : {u"表示: 拡大 Ctrl++|Ctrl+="_s, u"ファイル: Drag & drop Ctrl+Q"_s})
            QVERIFY2(shown.contains(text), qPrintable(shown.join(u'\n')));
        QVERIFY(shown.filter(u"F11"_s).isEmpty() && shown.filter(u"Ctrl+R"_s).isEmpty());
        QCOMPARE(BWKeyCaps::keys(u"Ctrl++"_s), QStringList({u"Ctrl"_s, u"+"_s}));
        QCOMPARE(BWKeyCaps::keys(u"Ctrl+Shift+S"_s), QStringList({u"Ctrl"_s, u"Shift"_s, u"S"_s}));
    }

    /// Who gives an album command a key adds a row to the help.
    void albumKeysAreAllThere()
    {
        BWLocalizationManager texts(QStringLiteral(BW_RESOURCES "/localization.json"), {u"en"_s});
        QStringList shown;
        for (const BWShortcutSection &section : BWShortcutSection::ofViews(texts)) {
            for (const BWShortcutSection::Shortcut &shortcut : section.shortcuts)
                shown << (section.title == u"Albums"_s ? shortcut.keys : QStringList());
        }
        for (const auto command : BWThumbnailKeyboard::commands()) {
            const QString key = BWThumbnailKeyboard::keyFor(command).toString(QKeySequence::NativeText);
            QVERIFY2(shown.contains(key), qPrintable(key));
        }
    }

    void window()
    {
        const BWHelpContact known = BWHelpContact::fromFile(QStringLiteral(BW_RESOURCES "/contact.json"));
        BWLocalizationManager texts(QStringLiteral(BW_RESOURCES "/localization.json"), {u"de"_s});
        const AttachedCameras cameras({AttachedCameras::Type::High, AttachedCameras::Type::DX20});
        QMainWindow camera;
        BWMainMenu menu(camera);
        menu.localizeWithManager(texts);
        QList<QUrl> opened;
        bool opens = true;
        BWSimpleHelpWindowController help(known,
                                          {[&](const QUrl &url) {
                                               opened << url;
                                               return opens;
                                           },
                                           [&] { return cameras.list(); }, [&] { return camera.menuBar()->actions(); }},
                                          &camera);
        help.localizeWithManager(texts);
        help.makeKeyAndOrderFront();
        QTRY_COMPARE(QApplication::activeWindow(), &help);
        const auto buttons = help.findChildren<QPushButton *>();
        for (QPushButton *button : buttons)
            QTest::keyClick(button, Qt::Key_Space);
        QCOMPARE(opened.size(), 2);
        QCOMPARE(opened[0], known.faqPage);
        const QString body = QUrlQuery(opened[1]).queryItemValue(u"body"_s, QUrl::FullyDecoded);
        for (const BWCameraPtr &attached : cameras.list())
            QVERIFY(body.contains(attached->detectedCamera()->description()));
        QVERIFY(body.contains(QStringLiteral(BW_VERSION)) && !body.endsWith(u'…'));

        const auto problem = [&] {
            const auto labels = help.findChildren<QLabel *>();
            return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) {
                return label->isVisible() && label->text().indexOf(known.supportAddress) > 0;
            });
        };
        QVERIFY(!problem());
        opens = false;
        help.onWriteToSupport();
        QVERIFY(problem());
        QTest::keyClick(&help, Qt::Key_Escape);
        help.makeKeyAndOrderFront();
        QVERIFY(!problem());
    }
};

QTEST_MAIN(TestBWHelpWindow)
#include "tst_BWHelpWindow.moc"
