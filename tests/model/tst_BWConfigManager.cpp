// SPDX-License-Identifier: GPL-3.0-or-later
#include "AbortCheck.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Rows.h"
#include "TestFolder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QTest>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

struct Listener : BWConfigManagerListener {
    std::function<void()> onUpdate;

    void configManagerUpdatedSettings(BWConfigManager &) override { onUpdate(); }
};

/// "0:12 1:50 ... 640x480": the available settings in their order, and the chosen size.
QString valuesOf(const BWCameraProduct &product)
{
    QStringList result;
    for (int setting : product.availableSettings())
        result.append(u"%1:%2"_s.arg(setting).arg(product.valueForSetting(setting).value_or(-1)));
    return result.join(u' ') + u' ' + product.currentResolution().resolutionString();
}

using Change = std::function<void(BWConfigManager &)>;

const QString albumName = u"Päckchen, \"50 %\"; =\n[x]\\ @é日本 "_s;
const QString factoryOfDX12 = u"0:63 1:28 2:56 3:130 4:10 13:1 640x480"_s;

} // namespace

class TestSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_dir.emplace();
        m_path = m_dir->path(u"new folder/settings.conf"_s);
        m_defaults.emplace(m_path);
    }

    void cleanup()
    {
        m_defaults.reset(); // may still write
    }

    void readingWritesNothing()
    {
        const BWConfigManager manager(*m_defaults);
        m_defaults->synchronize();
        QVERIFY(!QFile::exists(m_path));
    }

    void settersStoreAtOnce_data()
    {
        const Rows<Change, QString, QString> stored;
        const auto row = [&stored](const char *key, const QString &text, const Change &change) {
            stored(key, change, u"bwp2x_"_s + QLatin1String(key), text);
        };
        row("remember_layout", u"no"_s, [](BWConfigManager &m) { m.setRememberLayout(false); });
        row("video_button", u"yes"_s, [](BWConfigManager &m) { m.setSaveVideoOnHardwareButton(true); });
        row("snapshot_click", u"no"_s, [](BWConfigManager &m) { m.setSaveSnapshotOnClick(false); });
        row("show_statistics", u"yes"_s, [](BWConfigManager &m) { m.setShowStatistics(true); });
        row("smaller_movie", u"high"_s, [](BWConfigManager &m) {
            m.setMovieChoices({BWSmallerMovie::Quality::High, 10});
        });
        row("movie_rate", u"24"_s, [](BWConfigManager &m) {
            m.setMovieChoices({BWSmallerMovie::Quality::Medium, 24});
        });
        row("recent_files", u"yes"_s, [](BWConfigManager &m) { m.setShowInRecentFiles(true); });
        row("first_time", u"no"_s, [](BWConfigManager &m) { m.setFirstTime(false); });
        row("old_settings_imported", u"yes"_s, [](BWConfigManager &m) { m.setOldSettingsImported(true); });
        row("default_album_name", albumName, [](BWConfigManager &m) { m.setDefaultAlbumName(albumName); });
        row("product_for_camera", u"{\"wired_high\":\"mx61\",\"wireless\":\"mx33\"}"_s,
            [](BWConfigManager &m) { m.setCurrentProductIdentifier(u"mx61"_s, u"wired_high"_s); });
        row("product_dx12", u"{\"0\":63,\"1\":28,\"13\":1,\"2\":9,\"3\":77,\"4\":10,\"resolution\":\"720x480\"}"_s,
            [](BWConfigManager &m) {
                const BWCameraProductPtr product = m.productByIdentifier(u"dx12"_s);
                product->setValue(77, 3);
                product->save();
            });
    }
    /// A setter keeps everything else that another program has stored in the meantime.
    void settersStoreAtOnce()
    {
        const auto [change, key, text] = Rows<Change, QString, QString>::current();
        BWConfigManager manager(*m_defaults);
        QMap<QString, QString> stored{{u"bwp2x_remember_layout"_s, u"no"_s},
                                      {u"bwp2x_video_button"_s, u"yes"_s},
                                      {u"bwp2x_snapshot_click"_s, u"no"_s},
                                      {u"bwp2x_show_statistics"_s, u"yes"_s},
                                      {u"bwp2x_recent_files"_s, u"no"_s},
                                      {u"bwp2x_smaller_movie"_s, u"small"_s},
                                      {u"bwp2x_movie_rate"_s, u"60"_s},
                                      {u"bwp2x_first_time"_s, u"no"_s},
                                      {u"bwp2x_old_settings_imported"_s, u"yes"_s},
                                      {u"bwp2x_default_album_name"_s, u"Other"_s},
                                      {u"bwp2x_product_for_camera"_s, u"{\"wireless\":\"mx33\"}"_s},
                                      {u"bwp2x_product_dx12"_s, u"{\"2\":9,\"3\":8,\"resolution\":\"720x480\"}"_s}};
        if (!key.contains(u"product"_s))
            stored.remove(key);
        const QString other = m_dir->path(u"other.conf"_s);
        {
            BWSettingsFile file(other);
            for (auto it = stored.cbegin(); it != stored.cend(); ++it)
                file.setString(it.key(), it.value());
        }
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()) && QFile::copy(other, m_path));
        change(manager);
        stored.insert(key, text);

        const QString copy = m_dir->path(u"copy.conf"_s); // of the file itself, not of what is cached
        QVERIFY(QFile::copy(m_path, copy));
        const BWSettingsFile defaults(copy);
        for (auto it = stored.cbegin(); it != stored.cend(); ++it)
            QCOMPARE(it.key() + defaults.string(it.key()), it.key() + it.value());
    }

    void storedSettingsComeBack()
    {
        BWConfigManager(*m_defaults).setDefaultAlbumName(albumName);
        BWConfigManager manager(*m_defaults);
        QVERIFY(manager.rememberLayout() && manager.firstTime());
        QCOMPARE(m_defaults->string(u"bwp2x_remember_layout"_s), u"yes"_s); // unchanged settings, too
        manager.setDefaultAlbumName(QString());
        QVERIFY(manager.defaultAlbumName().isNull());
        QCOMPARE(BWConfigManager(*m_defaults).defaultAlbumName(), albumName); // null does not erase it
    }

    void damagedProductChoice()
    {
        for (const QString &text : {u"{\"wired_high\":\"mx61\""_s, u"[\"wired_high\"]"_s, u""_s,
                                    u"{\"wired_high\":\"mx61\",\"wireless\":5}"_s}) {
            m_defaults->setString(u"bwp2x_product_for_camera"_s, text);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"choice of products is damaged"_s));
            const BWConfigManager manager(*m_defaults);
            QCOMPARE(manager.currentProductIdentifierForCameraIdentifier(u"wired_high"_s),
                     text.contains(u"wireless"_s) ? u"mx61"_s : QString());
            QVERIFY(manager.currentProductIdentifierForCameraIdentifier(u"wireless"_s).isNull());
        }
    }

    void damagedFile()
    {
        const QUrl file = m_dir->file(
            u"damaged.conf"_s,
            "\xff\xfe\x01garbage\nbwp2x_video_button=yes\nbwp2x_snapshot_click=@Variant(\\0\\0\\0\\x7f\\xff)\n"
            "bwp2x_default_album_name=Haut, Haare\n");
        const QString path = file.toLocalFile();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"is damaged"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"QVariant::load"_s));
        BWSettingsFile defaults(path);
        BWConfigManager manager(defaults);
        QVERIFY(manager.saveVideoOnHardwareButton() && manager.saveSnapshotOnClick());
        QCOMPARE(manager.defaultAlbumName(), u"Haut, Haare"_s);
        manager.setSaveSnapshotOnClick(false);
        BWSettingsFile again(path);
        QVERIFY(!BWConfigManager(again).saveSnapshotOnClick());
    }

    void unwritableStoresAreLoggedOnce()
    {
        const QString pipe = m_dir->path(u"pipe"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path : {u"/proc/no/settings.conf"_s, pipe, m_dir->path(), u"/dev/zero"_s}) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be (stored|kept) in"_s));
            BWSettingsFile defaults(path);
            BWConfigManager manager(defaults);
            manager.setRememberLayout(false);
            manager.setFirstTime(false);
            QVERIFY2(!manager.rememberLayout() && !manager.isStored(), qPrintable(path));
        }
    }

    void listenersAreNotifiedInOrder()
    {
        BWConfigManager manager(*m_defaults);
        QString calls;
        Listener a, b;
        a.onUpdate = [&] {
            calls += manager.mustResetLayout() ? u'A' : u'a';
            if (manager.firstTime())
                manager.setFirstTime(false); // notifies again, from within
        };
        b.onUpdate = [&] { calls += u'b'; };
        manager.addListener(&a);
        manager.addListener(&b);
        manager.addListener(&a);
        manager.setRememberLayout(false);
        QCOMPARE(calls, u"aabb"_s);
        m_defaults->setString(u"bwp2x_remember_layout"_s, u"as it was"_s);
        manager.resetLayout(); // one pulse, and nothing is stored
        QVERIFY(!manager.mustResetLayout());
        QCOMPARE(m_defaults->string(u"bwp2x_remember_layout"_s), u"as it was"_s);
        QCOMPARE(calls, u"aabbAb"_s);
        manager.removeListener(&a);
        manager.setRememberLayout(true);
        QCOMPARE(calls, u"aabbAbb"_s);

        // Changing the listeners during a notification is fatal.
        b.onUpdate = [&] { manager.addListener(&a); };
        QVERIFY(aborts([&] { manager.resetLayout(); }));
        b.onUpdate = [&] { manager.removeListener(&b); };
        QVERIFY(aborts([&] { manager.resetLayout(); }));
    }

    void currentProduct_data()
    {
        const Rows<QString, QString, QString> row;
        row("chosen", u"mx61"_s, u"wired_high"_s, u"mx61"_s);
        row("none chosen", QString(), u"wired_high"_s, u"dx10"_s);
        row("not made any more", u"gone"_s, u"wired_high"_s, u"dx10"_s);
        row("of another type", u"dx12"_s, u"wired_high"_s, u"dx10"_s);
        row("unknown type", u"mx61"_s, u"unheard of"_s, QString());
        row("no camera", u"mx61"_s, QString(), QString());
    }
    void currentProduct()
    {
        const auto [chosen, camera, product] = Rows<QString, QString, QString>::current();
        BWConfigManager manager(*m_defaults, [&] { return camera; });
        if (!chosen.isNull())
            manager.setCurrentProductIdentifier(chosen, camera);
        QCOMPARE(manager.productIdentifier(), product);
        QCOMPARE(manager.currentProductForCameraIdentifier(camera), manager.productByIdentifier(product));
        QCOMPARE(manager.currentProductIdentifierForCameraIdentifier(camera), chosen); // kept as it is
    }

    /// Stored settings and those of older versions depend on every name, odd ones included, on the order and the values.
    void catalogue()
    {
        const BWConfigManager manager(*m_defaults);
        QStringList rows;
        QStringList defaults;
        for (const BWCameraProductPtr &product : manager.allProducts()) {
            QStringList sizes;
            for (const BWResolution resolution : product->availableResolutions())
                sizes.append(resolution.resolutionString());
            rows << u"%1|%2|%3|%4|%5|%6|%7"_s.arg(product->identifier(), product->name(), product->oldEnglishName(),
                                                  product->oldGermanName(), product->cameraTypeIdentifier(),
                                                  valuesOf(*product), sizes.join(u' '));
            defaults << manager.defaultProductIdentifierForCameraIdentifier(product->cameraTypeIdentifier());
        }
        defaults.removeDuplicates();
        QCOMPARE(defaults, QStringList({u"mx62"_s, u"dx15_16"_s, u"dx10"_s, u"dx12"_s}));
        const QByteArray text = rows.join(u'\n').toUtf8();
        QVERIFY2(QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex() == "d3e47733b5cd3b461ffd207fc5a20711",
                 text.constData());
    }

    void onlySavedValuesAreStored()
    {
        m_defaults->setString(u"bwp2x_product_dx12"_s, u"{\"99\":5,\"2\":57}"_s); // 99 is not stored again
        const BWConfigManager manager(*m_defaults);
        const BWCameraProductPtr product = manager.productByIdentifier(u"dx12"_s);
        product->setValue(200, 3);
        product->setValue(0.5, 4);
        product->setCurrentResolution({720, 480});
        product->save();
        const QString text = m_defaults->string(u"bwp2x_product_dx12"_s);
        QCOMPARE(text, u"{\"0\":63,\"1\":28,\"13\":1,\"2\":57,\"3\":200,\"4\":0.5,\"resolution\":\"720x480\"}"_s);
        product->setDefaults();
        QCOMPARE(valuesOf(*product), factoryOfDX12);
        QCOMPARE(m_defaults->string(u"bwp2x_product_dx12"_s), text);
    }

    void storedValues_data()
    {
        const Rows<QString, QString, bool> row;
        row("cut off", u"{\"3\":200,\"resol"_s, factoryOfDX12, true);
        row("not an object", u"[200]"_s, factoryOfDX12, true);
        row("wrong types", u"{\"2\":\"a\",\"3\":200,\"4\":null,\"resolution\":640}"_s,
            u"0:63 1:28 2:56 3:200 4:10 13:1 640x480"_s, true);
        row("too large", u"{\"2\":1e300,\"3\":2147483648,\"4\":-9}"_s, u"0:63 1:28 2:56 3:130 4:-9 13:1 640x480"_s,
            true);
        row("no size", u"{\"resolution\":\"640x\",\"3\":1}"_s, u"0:63 1:28 2:56 3:1 4:10 13:1 640x480"_s, true);
        // A size that only the camera offers came from the camera's own menu.
        row("size of the camera, names read as numbers",
            u"{\"resolution\":\"1024x768\",\" 3x\":5,\"4\":0.5,\"hue\":7}"_s,
            u"0:7 1:28 2:56 3:5 4:0.5 13:1 1024x768"_s, false);
    }
    void storedValues()
    {
        const auto [text, values, logged] = Rows<QString, QString, bool>::current();
        m_defaults->setString(u"bwp2x_product_dx12"_s, text);
        if (logged)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"values of dx12 are damaged"_s));
        const BWConfigManager manager(*m_defaults);
        QCOMPARE(valuesOf(*manager.productByIdentifier(u"dx12"_s)), values);
    }

private:
    std::optional<TestFolder> m_dir;
    QString m_path;
    std::optional<BWSettingsFile> m_defaults;
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_BWConfigManager.moc"
