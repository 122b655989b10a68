#include "AbortCheck.h"
#include "Model/BWAlbumManager.h"
#include "Model/BWLocalizationManager.h"
#include "Model/BWSettingsFile.h"
#include "TestFolder.h"
#include "Utils/BWAlertPresenter.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWAlbumFooter.h"
#include "Views/Albums/BWAlbumManagerWindowController.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"
#include "Views/Utils/BWDialogFilePanels.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

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
        m_opened.clear();
        m_answer = true;
        m_window = std::make_unique<BWAlbumManagerWindowController>(
            *m_albums, *m_defaults,
            BWAlbumManagerWindowController::Surroundings{*this, [this](const QUrl &file) { m_opened << file; }},
            nullptr);
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

        m_answer = false;
        m_window->onRemoveAlbum();
        QCOMPARE(popUp->count(), 3);
        m_answer = true;
        m_window->onRemoveAlbum();
        QCOMPARE(m_alerts.last(), u"Delete album"_s);
        QCOMPARE(titles(*popUp), u"Default Album|Third"_s);
        QTRY_COMPARE(shown(), u"d.jpg|c.jpg|b.jpg|a.jpg"_s); // the first
        QVERIFY(BWFilePath::exists(m_folder->url(u"Others/Second/e.jpg"_s)));
    }

    void saving_data()
    {
        QTest::addColumn<bool>("videos");
        QTest::addColumn<QList<int>>("indexes");
        QTest::addColumn<QString>("panel");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QByteArray>("begins"); // what the saved file begins with
        QTest::newRow("image") << false << QList{1}
                               << u"Saving image as JPG file|Please select where to save a JPG file with your selected "
                                  "image|jpg|c.jpg"_s
                               << u"saved.jpg"_s << "c.jpg"_ba;
        QTest::newRow("video") << true << QList{0}
                               << u"Saving video as MOV file|Please select where to save a MOV file with your selected "
                                  "video|mov|v.mov"_s
                               << u"saved.mov"_s << "v.mov"_ba;
        QTest::newRow("images")
            << false << QList{0, 3}
            << u"Saving images as ZIP file|Please select where to save a ZIP file with your selected "
               "images|zip|Default Album.zip"_s
            << u"saved.zip"_s << "PK"_ba;
        QTest::newRow("cannot be saved")
            << false << QList{1}
            << u"Saving image as JPG file|Please select where to save a JPG file with your selected image|jpg|c.jpg"_s
            << u"gone/saved.jpg"_s << QByteArray();
    }
    void saving()
    {
        QFETCH(bool, videos);
        QFETCH(QList<int>, indexes);
        QFETCH(QString, target);
        QFETCH(QByteArray, begins);
        BWThumbnailTableView &grid = *(videos ? m_videos : m_images);
        m_chosen = m_folder->url(target);
        grid.modelDelegate()->saveIndexesOfModel(grid, indexes);
        QTEST(m_panel, "panel");
        if (begins.isNull()) {
            QTRY_COMPARE(m_alerts, QStringList{u"Error while saving over its window"_s});
        } else {
            QTRY_VERIFY(TestFolder::read(m_chosen).startsWith(begins));
            QVERIFY(m_alerts.isEmpty());
        }
        QTRY_VERIFY(!m_window->isSaving());
    }

    void savedNames_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QString>("name");
        const auto row = [](const char *title, const QString &typed, const QString &extension, const QString &name) {
            QTest::newRow(title) << typed << extension << name;
        };
        row("none", u"bild"_s, u"jpg"_s, u"bild.jpg"_s);
        row("the right one", u"bild.jpg"_s, u"jpg"_s, u"bild.jpg"_s);
        row("in capitals", u"BILD.JPG"_s, u"jpg"_s, u"BILD.JPG"_s);
        row("another for the same", u"bild.jpeg"_s, u"jpg"_s, u"bild.jpg"_s);
        row("another picture's", u"bild.PNG"_s, u"jpg"_s, u"bild.jpg"_s);
        row("a movie's", u"film.mp4"_s, u"mov"_s, u"film.mov"_s);
        row("two", u"bild.jpg.png"_s, u"jpg"_s, u"bild.jpg"_s);
        row("a number", u"Proben 12.3"_s, u"zip"_s, u"Proben 12.3.zip"_s);
        row("a date", u"22.11.2026"_s, u"zip"_s, u"22.11.2026.zip"_s);
        row("a full stop", u"Proben Nr. 3."_s, u"zip"_s, u"Proben Nr. 3.zip"_s);
        row("a space behind", u"bild.jpg "_s, u"jpg"_s, u"bild.jpg"_s);
        row("nothing else", u".jpg"_s, u"jpg"_s, u".jpg.jpg"_s);
        row("dots of folders", u"/a.png/b.zip/bild"_s, u"jpg"_s, u"/a.png/b.zip/bild.jpg"_s);
    }
    void savedNames()
    {
        QFETCH(QString, typed);
        QFETCH(QString, extension);
        QTEST(BWDialogFilePanels::withExtension(typed, extension), "name");
    }

    void savePanel_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("asks");
        QTest::newRow("suggested") << QString() << u"Default Album.zip"_s << false;
        QTest::newRow("without") << u"Proben"_s << u"Proben.zip"_s << false;
        QTest::newRow("number") << u"Proben 12.3"_s << u"Proben 12.3.zip"_s << false;
        QTest::newRow("another") << u"Proben.png"_s << u"Proben.zip"_s << false;
        QTest::newRow("quotes") << u"Probe \"A\""_s << u"Probe \"A\".zip"_s << false;
        QTest::newRow("exists as typed") << u"there.zip"_s << u"there.zip"_s << true;
        QTest::newRow("exists as it will be") << u"there.jpeg"_s << u"there.zip"_s << true;
        QTest::newRow("the typed one exists, the other does not") << u"taken"_s << u"taken.zip"_s << false;
        QTest::newRow("too long with it") << QString(253, u'n') << QString(253, u'n') + u".zip"_s << false;
    }
    void savePanel()
    {
        QFETCH(QString, typed);
        QFETCH(QString, name);
        QFETCH(bool, asks);
        m_folder->file(u"there.zip"_s);
        m_folder->file(u"taken"_s);
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
        select({1, 2});
        QCOMPARE(footerText(), u"Selected: 2 of 4"_s);
        m_answer = false;
        button(u"Move the selection to the Trash"_s)->click();
        QCOMPARE(m_alerts, QStringList{u"Move selected images to the Trash"_s});
        QCOMPARE(footerText(), u"Selected: 2 of 4"_s);
        m_answer = true;
        button(u"Move the selection to the Trash"_s)->click();
        QTRY_COMPARE(shown(), u"d.jpg|a.jpg"_s);
        QTRY_COMPARE(footerText(), u"Moved to the Trash: 2"_s);
        button(u"Undo"_s)->click();
        QTRY_COMPARE(shown(), u"d.jpg|c.jpg|b.jpg|a.jpg"_s);
        QTRY_COMPARE(footerText(), u"Back from the Trash: 2"_s);

        m_videos->modelDelegate()->removeIndexesOfModel(*m_videos, {0});
        QCOMPARE(m_alerts.last(), u"Move video to the Trash"_s);
        QTRY_COMPARE(footerText(), u"Moved to the Trash: v.mov"_s);
    }

    void whatIsSelectedWhenTheFolderChanges()
    {
        select({1, 2});
        m_folder->file(u"BrimwellPro/Default Album/z.jpg"_s); // another program
        QTRY_COMPARE(shown(), u"z.jpg|d.jpg|c.jpg|b.jpg|a.jpg"_s);
        QCOMPARE(m_images->mouseEventHandler()->selectedIndexes(), (QList{2, 3}));
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
        for (int i = 0; i < 20; ++i)
            m_folder->file(u"BrimwellPro/Default Album/many%1.jpg"_s.arg(i));
        QTRY_COMPARE(m_images->elementCount(), 24);
        m_answer = false;
        QList<int> all;
        for (int i = 0; i < 24; ++i)
            all << i;
        m_images->modelDelegate()->openIndexesOfModel(*m_images, all);
        QCOMPARE(m_alerts, QStringList{u"Open 24 files?"_s});
        QCOMPARE(m_opened.size(), 2);
    }

    void rowsAndPlaces()
    {
        for (const auto &[visible, row] : {std::pair{300, 75}, {499, 124}, {500, 125}, {800, 125}})
            QCOMPARE(BWAlbumGridModel::rowHeight(visible), row);
        QCOMPARE(m_images->modelDelegate()->dragTypeForElementAt(*m_images, 0), u"public.jpeg"_s);
        QCOMPARE(m_videos->modelDelegate()->dragTypeForElementAt(*m_videos, 0), u"com.apple.quicktime-movie"_s);
        BWThumbnailTableView stranger;
        QVERIFY(aborts([&] { m_images->modelDelegate()->elementsForThumbnailTableView(stranger); }));

        QWidget camera;
        camera.setGeometry(20, 30, 400, 600);
        camera.show();
        m_window->resetLayout(camera);
        QCOMPARE(m_window->size(), QSize(287, 550));
        QCOMPARE(m_window->frameGeometry().left(), camera.frameGeometry().right() + 1);
        QCOMPARE(m_window->frameGeometry().bottom(), camera.frameGeometry().bottom());
    }

private:
    void presentOK(const QString &title, const QString &) override { m_alerts << title; }
    void presentOKOver(QObject &window, const QString &title, const QString &) override
    {
        m_alerts << (&window == m_window.get() ? title + u" over its window"_s : title);
    }
    bool presentOKCancel(const QString &title, const QString &) override
    {
        m_alerts << title;
        return m_answer;
    }
    bool presentChoice(const QString &title, const QString &, const QString &, const QString &) override
    {
        m_alerts << title;
        return m_answer;
    }
    void save(QWidget *, const Save &panel, Chosen chosen) override
    {
        m_panel = QStringList{panel.title, panel.message, panel.extension, panel.name}.join(u'|');
        chosen(m_chosen);
    }
    void chooseFile(QWidget *, const File &, Chosen) override { }
    void chooseFolder(QWidget *, const Folder &panel, Chosen chosen) override
    {
        m_panel = QStringList{panel.title, panel.message}.join(u'|');
        chosen(m_chosen);
    }

    QString shown() const { return TestFolder::names(m_images->elements()); }
    static QString titles(const QComboBox &popUp)
    {
        QStringList titles;
        for (int i = 0; i < popUp.count(); ++i)
            titles << popUp.itemText(i);
        return titles.join(u'|');
    }
    void select(const QSet<int> &indexes) const
    {
        m_images->mouseEventHandler()->adoptSelection(indexes);
        m_images->showSelection();
    }
    QToolButton *button(const QString &name) const
    {
        const auto buttons = m_window->findChildren<QToolButton *>();
        for (QToolButton *button : buttons) {
            if (button->accessibleName() == name || button->text() == name)
                return button;
        }
        qFatal("No button %s", qPrintable(name));
    }
    QString footerText() const
    {
        const auto labels = m_window->findChild<BWAlbumFooter *>()->findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->isVisible())
                return label->text();
        }
        return {};
    }

    std::unique_ptr<TestFolder> m_folder;
    std::unique_ptr<BWSettingsFile> m_defaults;
    std::unique_ptr<BWAlbumManager> m_albums;
    std::unique_ptr<BWAlbumManagerWindowController> m_window;
    BWLocalizationManager m_texts{QString(), {u"en"_s}};
    BWThumbnailTableView *m_images = nullptr;
    BWThumbnailTableView *m_videos = nullptr;
    QStringList m_alerts;
    QList<QUrl> m_opened;
    QString m_panel;
    QUrl m_chosen;
    bool m_answer = true;
};

QTEST_MAIN(TestBWAlbumWindow)
#include "tst_BWAlbumWindow.moc"
