// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWManualClock.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Session/BWSessionBus.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Rows.h"
#include "TestFolder.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Albums/BWAlbumNotice.h"
#include "Views/Albums/BWRenameDialog.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"
#include "Views/Utils/BWFilePanels.h"
#include "WidgetSearch.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// The album window with real albums, files and Trash; the test answers its alerts and panels.
class TestBWAlbumWindow : public QObject, private BWAlertPresenter, private BWFilePanels {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<TestFolder>();
        m_defaults = std::make_unique<BWSettingsFile>(m_folder->path(u"settings.conf"_s));
        m_albums = std::make_unique<BWAlbumManager>(*m_defaults, m_folder->path());
        for (const QString &name : {u"a.jpg"_s, u"b.jpg"_s, u"c.jpg"_s, u"d.jpg"_s, u"v.mov"_s})
            m_folder->file(u"BrimwellPro/Default Album/"_s + name, name.toUtf8());
        m_folder->file(u"Others/Second/e.jpg"_s);
        m_albums->prepare();
        m_albums->addAlbumFromPath(m_folder->url(u"Others/Second"_s));
        m_albums->setSelectedIndex(0);
        BWUIUtils::setAlertPresenter(this);
        m_alerts.clear();
        m_saving.clear();
        m_choices = {};
        m_message.clear();
        m_opened.clear();
        m_press = u"OK"_s;
        m_canOpen = true;
        m_window = std::make_unique<BWAlbumManagerWindowController>(
            *m_albums, *m_defaults,
            BWAlbumManagerWindowController::Callbacks{*this,
                                                      [this](const QUrl &file) {
                                                          m_opened << file;
                                                          return m_canOpen;
                                                      },
                                                      {},
                                                      {},
                                                      [this] { return m_choices; },
                                                      [this](const auto &choices) { m_choices = choices; },
                                                      [this](bool isSaving) { m_saving << isSaving; }},
            nullptr, m_clock);
        m_window->localizeWithManager(m_texts);
        m_window->show();
        const auto grids = m_window->findChildren<BWThumbnailTableView *>();
        for (BWThumbnailTableView *grid : grids)
            (grid->accessibleName() == u"Images"_s ? m_images : m_videos) = grid;
        QTRY_COMPARE(shown(), u"d.jpg|c.jpg|b.jpg|a.jpg"_s);
    }
    void cleanup()
    {
        m_window.reset();
        BWUIUtils::setAlertPresenter(nullptr);
        m_albums.reset();
    }

    void albumsComeAndGo()
    {
        auto *popUp = m_window->findChild<QComboBox *>();
        QCOMPARE(titles(*popUp), u"Default Album|Second"_s);
        m_window->onRemoveAlbum();
        QCOMPARE(m_alerts, QStringList{u"Cannot delete default album"_s});

        m_chosen = m_folder->folder(u"elsewhere/Third"_s);
        m_window->onAddAlbum();
        QCOMPARE(m_panel, u"Select directory for album|Please select a directory for the new album"_s);
        QCOMPARE(titles(*popUp), u"Default Album|Second|Third"_s);
        QCOMPARE(popUp->currentText(), u"Third"_s);
        QTRY_COMPARE(shown(), QString());
        popUp->setCurrentIndex(1);
        Q_EMIT popUp->activated(1);
        QTRY_COMPARE(shown(), u"e.jpg"_s);

        m_press = u"Cancel"_s;
        m_window->onRemoveAlbum();
        QCOMPARE(popUp->count(), 3);
        m_press = u"OK"_s;
        m_window->onRemoveAlbum();
        QCOMPARE(m_alerts.last(), u"Delete album"_s);
        QCOMPARE(titles(*popUp), u"Default Album|Third"_s);
        QTRY_COMPARE(shown(), u"d.jpg|c.jpg|b.jpg|a.jpg"_s); // the first
        QVERIFY(BWFilePath::exists(m_folder->url(u"Others/Second/e.jpg"_s)));
    }

    void typedFolders_data()
    {
        const Rows<QString, QString> row;
        row("new", u"Proben 12.3 \"neu\""_s, QString());
        row("there already", u"Default Album"_s, QString());
        row("file", u"Default Album/a.jpg"_s, u"There is already a file called “a.jpg”."_s);
        row("hidden", u".hidden"_s, u"An album cannot be called “.hidden”."_s);
    }
    /// In the real panel.
    void typedFolders()
    {
        const auto [name, alert] = Rows<QString, QString>::current();
        m_useRealPanel = true;
        m_window->onAddAlbum();
        m_useRealPanel = false;
        auto *panel = m_window->findChild<QFileDialog *>();
        auto *edit = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
        panel->activateWindow();
        edit->setFocus();
        QTRY_VERIFY(edit->hasFocus());
        edit->clear();
        QTest::keyClicks(edit, name);
        auto *choose = panel->findChild<QDialogButtonBox *>(u"buttonBox"_s)->button(QDialogButtonBox::Open);
        QVERIFY(choose->isEnabled());
        QTest::keyClick(edit, Qt::Key_Return);
        QCOMPARE(m_message.left(alert.size()), alert);
        QCOMPARE(panel->isVisible(), !alert.isEmpty());
        const auto albums = m_albums->albums();
        const bool isListed = std::any_of(albums.begin(), albums.end(), [&](const BWAlbumPtr &album) {
            return album->path() == m_folder->url(u"BrimwellPro/"_s + name);
        });
        QCOMPARE(isListed, alert.isEmpty());
    }

    void saving_data()
    {
        // begins: what the saved file begins with
        const Rows<bool, QList<int>, QString, QString, QByteArray> row;
        row("image", false, QList{1},
            u"Saving image as JPG file|Please select where to save a JPG file with your selected "
            "image|jpg|c.jpg"_s,
            u"saved.jpg"_s, "c.jpg"_ba);
        row("video", true, QList{0},
            u"Saving video as MOV file|Please select where to save a MOV file with your selected "
            "video|mov|v.mov"_s,
            u"saved.mov"_s, "v.mov"_ba);
        row("images", false, QList{0, 3},
            u"Saving images as ZIP file|Please select where to save a ZIP file with your selected "
            "images|zip|Default Album.zip"_s,
            u"saved.zip"_s, "PK"_ba);
    }
    void saving()
    {
        const auto [videos, indexes, panel, target, begins] =
            Rows<bool, QList<int>, QString, QString, QByteArray>::current();
        BWThumbnailTableView &grid = *(videos ? m_videos : m_images);
        m_chosen = m_folder->url(target);
        grid.modelDelegate()->saveIndexesOfModel(grid, indexes);
        QCOMPARE(m_panel, panel);
        QTRY_VERIFY(TestFolder::read(m_chosen).startsWith(begins));
        QTRY_VERIFY(!m_window->isSaving());
        QVERIFY(m_alerts.isEmpty());
    }

    /// By the real dialog and menu; what comes last is undone first.
    void filesAreRenamedAndMoved()
    {
        m_images->mouseEventHandler()->adoptSelection({1}, 1);
        m_images->modelDelegate()->renameIndexOfModel(*m_images, 1);
        auto *dialog = m_window->findChild<BWRenameDialog *>();
        auto *rename = dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save);
        auto *edit = dialog->findChild<QLineEdit *>();
        QCOMPARE(edit->text(), u"c"_s);
        for (const QString &typed : {u"x/y"_s, u"d"_s, u"n"_s}) {
            edit->selectAll();
            QTest::keyClicks(edit, typed);
            QCOMPARE(rename->isEnabled(), typed != u"x/y"_s);
            QTest::keyClick(edit, Qt::Key_Return);
            if (typed == u"d"_s) // taken
                QTRY_VERIFY(hasLabel(*dialog, u"There is already a file of this name. Please choose another one."_s));
        }
        QTRY_COMPARE(shown(), u"n.jpg|d.jpg|b.jpg|a.jpg"_s);
        QTRY_COMPARE(notice(), u"Renamed: n.jpg"_s);
        QCOMPARE(m_images->mouseEventHandler()->selectedIndexes(), {0});

        QMenu menu;
        m_images->modelDelegate()->offerAlbumsForIndexesOfModel(*m_images, menu, {0, 3});
        QCOMPARE(menu.actions().size(), 1);
        menu.actions().first()->trigger();
        QTRY_COMPARE(notice(), u"Moved to the album “Second”: 2"_s);
        QTRY_COMPARE(shown(), u"d.jpg|b.jpg"_s);
        button(u"Undo"_s)->click();
        QTRY_COMPARE(shown(), u"n.jpg|d.jpg|b.jpg|a.jpg"_s);
        QCOMPARE(TestFolder::read(m_folder->url(u"BrimwellPro/Default Album/n.jpg"_s)), "c.jpg");
    }

    void folderInPlaceOfFileManager_data()
    {
        const Rows<bool> row;
        row("no bus", false);
        row("nobody on it shows files", true);
    }
    void folderInPlaceOfFileManager()
    {
        const auto [hasBus] = Rows<bool>::current();
        for (const char *place : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"})
            qunsetenv(place);
        const std::unique_ptr<GTestDBus, BWSessionBus::Unref> bus(g_test_dbus_new(G_TEST_DBUS_NONE));
        if (hasBus)
            g_test_dbus_up(bus.get());
        m_images->modelDelegate()->revealIndexesOfModel(*m_images, {1, 2});
        QTRY_COMPARE(m_opened, QList{m_folder->url(u"BrimwellPro/Default Album"_s)});
        QVERIFY(m_alerts.isEmpty());
    }

    void movies_data()
    {
        const Rows<bool, QList<int>, QString> row; // videos?; which; the panel
        row("smaller", true, QList{0},
            u"Save as Smaller Movie|Please select where to save the smaller movie|mp4|v.mp4"_s);
        row("of pictures", false, QList{0, 2},
            u"Make a Movie of the Pictures|Please select where to save the movie|mov|Default Album.mov"_s);
    }
    /// These files are no pictures, which the user learns.
    void movies()
    {
        const auto [videos, indexes, panel] = Rows<bool, QList<int>, QString>::current();
        BWThumbnailTableView &grid = *(videos ? m_videos : m_images);
        m_chosen = m_folder->url(u"new"_s);
        grid.modelDelegate()->makeMovieOfIndexesOfModel(grid, indexes);
        const auto dialogs = m_window->findChildren<QDialog *>();
        QCOMPARE(dialogs.size(), 1);
        if (auto *quality = dialogs.first()->findChild<QRadioButton *>())
            quality->click(); // the first, high
        else
            dialogs.first()->findChild<QSpinBox *>()->setValue(24);
        dialogs.first()->accept();
        QCOMPARE(m_panel, panel);
        QVERIFY(m_window->isSaving());
        QTRY_COMPARE(m_alerts.size(), 1);
        QVERIFY2(m_alerts.first().startsWith(u"Error while saving over its window: There is no picture"_s),
                 qPrintable(m_alerts.first()));
        QCOMPARE(m_saving, (QList{true, false}));
        QCOMPARE(m_choices.quality, videos ? BWSmallerMovie::Quality::High : BWSmallerMovie::Quality::Medium);
        QCOMPARE(m_choices.rate, videos ? 10 : 24);
    }

    void savingInGerman()
    {
        m_window->localizeWithManager(m_german);
        m_chosen = m_folder->url(u"gone/saved.zip"_s);
        m_images->modelDelegate()->saveIndexesOfModel(*m_images, {0, 1});
        QVERIFY2(m_panel.endsWith(u"|Standardalbum.zip"_s), qPrintable(m_panel));
        QTRY_COMPARE(m_alerts,
                     QStringList{u"Fehler beim Speichern over its window: Diesen Ordner gibt es nicht. "
                                 "Bitte wählen Sie einen anderen.\n\n"_s
                                 + m_chosen.toLocalFile()});
        BWAlbumTexts texts;
        texts.localizeWithManager(m_german);
        for (int problem = 1; problem <= static_cast<int>(BWExportResult::Problem::Other); ++problem)
            QVERIFY(!texts.errorSaving.value(static_cast<BWExportResult::Problem>(problem)).isEmpty());
    }

    void savePanel_data()
    {
        const Rows<QString, QString, bool> row;
        row("suggested", QString(), u"Default Album.zip"_s, false);
        row("quotes", u"Probe \"A\""_s, u"Probe \"A\".zip"_s, false);
        row("exists as it will be", u"there.jpeg"_s, u"there.zip"_s, true);
        row("two others", u"x.mov.png"_s, u"x.zip"_s, false);
        row("in capitals", u"X.ZIP"_s, u"X.ZIP"_s, false);
        row("full stop", u"Nr. 3."_s, u"Nr. 3.zip"_s, false);
        row("nothing else", u".zip"_s, u".zip.zip"_s, false);
        row("too long with it", QString(253, u'n'), QString(253, u'n') + u".zip"_s, false);
    }
    void savePanel()
    {
        const auto [typed, name, asks] = Rows<QString, QString, bool>::current();
        m_folder->file(u"there.zip"_s);
        for (const bool byButton : {false, true}) {
            QList<QUrl> chosen;
            BWDialogFilePanels().save(m_window.get(),
                                      {u"Title"_s, u"Message"_s, u"zip"_s, m_folder->url(), u"Default Album.zip"_s},
                                      [&](const QUrl &file) { chosen << file; });
            const QPointer panel = m_window->findChild<QFileDialog *>();
            auto *field = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
            QTRY_VERIFY(field->hasFocus());
            field->selectAll();
            QTest::keyClicks(field, typed);
            if (byButton)
                panel->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save)->click();
            else
                QTest::keyClick(field, Qt::Key_Return);
            int questions = 0;
            while (auto *box = panel ? panel->findChild<QMessageBox *>() : nullptr) {
                QVERIFY2(box->text().startsWith(name + u" already exists."_s), qPrintable(box->text()));
                ++questions;
                box->button(QMessageBox::Yes)->click();
                delete box;
            }
            QCOMPARE(questions, asks ? 1 : 0);
            QCOMPARE(chosen, QList{m_folder->url(name)});
            QVERIFY(!panel || !panel->isVisible());
            delete panel;
        }
    }

    void trashAndBack()
    {
        m_images->mouseEventHandler()->moveRangeEnd(1, 2);
        QCOMPARE(footerText(), u"Selected: 2 of 4"_s);
        m_press = u"Cancel"_s;
        button(u"Move the selection to the Trash"_s)->click();
        QCOMPARE(m_alerts, QStringList{u"Move selected images to the Trash"_s});
        QCOMPARE(footerText(), u"Selected: 2 of 4"_s);
        m_press = u"OK"_s;
        button(u"Move the selection to the Trash"_s)->click();
        QTRY_COMPARE(shown(), u"d.jpg|a.jpg"_s);
        QTRY_COMPARE(notice(), u"Moved to the Trash: 2"_s);
        QCOMPARE(footerText(), u"Total: 2"_s);
        button(u"Undo"_s)->setFocus();
        QTest::keyClick(button(u"Undo"_s), Qt::Key_Space);
        QCOMPARE(m_window->focusWidget(), m_images);
        QTRY_COMPARE(shown(), u"d.jpg|c.jpg|b.jpg|a.jpg"_s);
        QTRY_COMPARE(notice(), u"Back from the Trash: 2"_s);
        QVERIFY(!button(u"Undo"_s)->isVisible());

        m_videos->modelDelegate()->removeIndexesOfModel(*m_videos, {0});
        QCOMPARE(m_alerts.last(), u"Move video to the Trash"_s);
        QTRY_COMPARE(notice(), u"Moved to the Trash: v.mov"_s);
        QVERIFY(button(u"Undo"_s)->isVisible());
        // The notice of a failed removal must not offer to undo the removal before it.
        QVERIFY(QFile::remove(m_folder->path(u"BrimwellPro/Default Album/d.jpg"_s)));
        m_images->modelDelegate()->removeIndexesOfModel(*m_images, {0});
        QTRY_COMPARE(notice(), u"Could not be moved to the Trash: d.jpg"_s);
        QVERIFY(!button(u"Undo"_s)->isVisible());
    }

    void noticeStaysForAWhile()
    {
        auto *popUp = m_window->findChild<QComboBox *>();
        const auto itStays = [&](const std::function<void()> &event) {
            m_albums->setSelectedIndex(0);
            m_window->findChild<QTabWidget *>()->setCurrentIndex(0);
            m_images->setFocus();
            m_chosen = m_folder->url(u"saved.jpg"_s);
            m_images->modelDelegate()->saveIndexesOfModel(*m_images, {1});
            const bool appeared = QTest::qWaitFor([&] { return notice() == u"Saved: saved.jpg"_s; })
                && !footerText().isEmpty() && button(u"Move the selection to the Trash"_s)->isVisible();
            event();
            return appeared && !notice().isNull();
        };
        using std::chrono_literals::operator""ms;
        QVERIFY(itStays([&] { m_clock.advance(11'999ms); }));
        QVERIFY(itStays([&] {
            m_folder->file(u"BrimwellPro/Default Album/z.jpg"_s); // another program
            QTRY_COMPARE(m_images->elementCount(), 5);
        }));
        QVERIFY(!itStays([&] { m_clock.advance(12'000ms); }));
        QVERIFY(!itStays([&] { QTest::keyClick(m_images, Qt::Key_Down); }));
        QVERIFY(!itStays([&] { m_window->findChild<QTabWidget *>()->setCurrentIndex(1); }));
        QVERIFY(!itStays([&] { Q_EMIT popUp->activated(1); }));
        QVERIFY(!itStays([&] { m_albums->addAlbumFromPath(m_folder->folder(u"Others/Third"_s)); }));
        QVERIFY(!itStays([&] { QTest::mouseClick(m_window->findChild<BWAlbumNotice *>(), Qt::LeftButton); }));
    }

    void selectionSurvivesChangesOfTheFolder()
    {
        m_images->mouseEventHandler()->selectOnly(1);
        m_folder->file(u"BrimwellPro/Default Album/z.jpg"_s); // another program
        QTRY_COMPARE(shown(), u"z.jpg|d.jpg|c.jpg|b.jpg|a.jpg"_s);
        QCOMPARE(m_images->mouseEventHandler()->selectedIndexes(), QList{2});
        m_images->setFocusIndex(0);
        QTest::keyClick(m_images, Qt::Key_End, Qt::ShiftModifier); // extends from the file selected first
        QCOMPARE(m_images->mouseEventHandler()->selectedIndexes(), (QList{2, 3, 4}));
        m_albums->addFile(m_folder->file(u"capture"_s), BWMediaType::Image); // a new capture
        QTRY_COMPARE(m_images->elementCount(), 6);
        QTRY_COMPARE(m_images->mouseEventHandler()->selectedIndexes(), QList<int>());
        QVERIFY(QDir(m_folder->path(u"BrimwellPro/Default Album"_s)).removeRecursively());
        QTRY_VERIFY(m_images->accessibleDescription().startsWith(u"The album’s folder cannot be read"_s));
    }

    void opening()
    {
        m_images->modelDelegate()->openIndexesOfModel(*m_images, {0, 3});
        QCOMPARE(TestFolder::names(m_opened), u"d.jpg|a.jpg"_s);
        QVERIFY(m_alerts.isEmpty());
        m_canOpen = false;
        m_images->modelDelegate()->openIndexesOfModel(*m_images, {1});
        m_images->modelDelegate()->openIndexesOfModel(*m_images, {0, 3});
        QCOMPARE(m_alerts,
                 (QStringList{u"Error while opening over its window: No program was found that can open this "
                              "file:\nc.jpg"_s,
                              u"Error while opening over its window: No program was found that can open these files. "
                              "Number of files: 2"_s}));
        m_canOpen = true;
        m_alerts.clear();
        m_opened.clear();
        for (int i = 0; i < 20; ++i)
            m_folder->file(u"BrimwellPro/Default Album/many%1.jpg"_s.arg(i));
        QTRY_COMPARE(m_images->elementCount(), 24);
        m_press = u"Cancel"_s;
        QList<int> all;
        for (int i = 0; i < 24; ++i)
            all << i;
        m_images->modelDelegate()->openIndexesOfModel(*m_images, all);
        QCOMPARE(m_alerts, QStringList{u"Open 24 files?"_s});
        QVERIFY(m_opened.isEmpty());
        m_images->modelDelegate()->openIndexesOfModel(*m_images, all.first(20));
        QCOMPARE(m_opened.size(), 20);
    }

    void maximizedCameraWindowStays()
    {
        QWidget camera;
        camera.setGeometry(20, 30, 400, 600);
        camera.show();
        BWAlbumManagerWindowController window(*m_albums, *m_defaults, {*this, {}, {}, {}}, &camera);
        camera.showMaximized(); // which is not moved
        const QRect maximized = camera.geometry();
        window.resetLayout();
        QCOMPARE(camera.geometry(), maximized);
        QVERIFY(window.screen()->availableGeometry().contains(window.frameGeometry()));
    }

private:
    void presentOK(const QString &title, const QString &message) override
    {
        m_alerts << title;
        m_message = message;
    }
    void presentOKOver(QObject &window, const QString &title, const QString &message) override
    {
        m_alerts << (&window == m_window.get() ? title + u" over its window: "_s + message : title);
    }
    bool presentOKCancel(const QString &title, const QString &message) override
    {
        return presentChoice(title, message, u"OK"_s, u"Cancel"_s);
    }
    bool presentChoice(const QString &title, const QString &, const QString &accept, const QString &reject) override
    {
        m_alerts << title;
        if (m_press != accept && m_press != reject)
            qFatal("No button %s in \"%s\"", qPrintable(m_press), qPrintable(title));
        return m_press == accept;
    }
    void save(QWidget *, const Save &panel, Chosen chosen) override
    {
        m_panel = QStringList{panel.title, panel.message, panel.extension, panel.name}.join(u'|');
        chosen(m_chosen);
    }
    void chooseFile(QWidget *, const File &, Chosen) override { }
    void chooseFolder(QWidget *window, const Folder &panel, Chosen chosen) override
    {
        if (m_useRealPanel) {
            BWDialogFilePanels().chooseFolder(window, panel, std::move(chosen));
            return;
        }
        m_panel = QStringList{panel.title, panel.message}.join(u'|');
        chosen(m_chosen);
    }

    QString shown() const { return TestFolder::names(m_images->elements()); }
    QAbstractButton *button(const QString &name) const { return buttonNamed(*m_window, name); }
    QString footerText() const
    {
        const auto labels = m_window->findChild<BWAlbumFooter *>()->findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->isVisible())
                return label->text();
        }
        return {};
    }

    QString notice() const { return m_window->findChild<BWAlbumNotice *>()->text(); }

    BWMovieExport::Choices m_choices;
    QList<bool> m_saving;
    std::unique_ptr<TestFolder> m_folder;
    std::unique_ptr<BWSettingsFile> m_defaults;
    std::unique_ptr<BWAlbumManager> m_albums;
    std::unique_ptr<BWAlbumManagerWindowController> m_window;
    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWLocalizationManager m_german{QStringLiteral(BW_RESOURCES "/localization.json"), {u"de"_s}};
    BWThumbnailTableView *m_images = nullptr;
    BWThumbnailTableView *m_videos = nullptr;
    QStringList m_alerts;
    QList<QUrl> m_opened;
    QString m_message;
    QString m_panel;
    bool m_useRealPanel = false;
    QUrl m_chosen;
    QString m_press; ///< the button that alerts are answered with
    bool m_canOpen = true;
    BWManualClock m_clock;
};

QTEST_MAIN(TestBWAlbumWindow)
#include "tst_BWAlbumWindow.moc"
