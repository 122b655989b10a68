#include "AbortCheck.h"
#include "Model/BWConfigManager.h"
#include "Model/BWSettingsFile.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Listener : BWConfigManagerListener {
    std::function<void(BWConfigManager &)> onUpdate;
    int updates = 0;

    void configManagerUpdatedSettings(BWConfigManager &manager) override
    {
        ++updates;
        if (onUpdate)
            onUpdate(manager);
    }
};

} // namespace

class TestSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_dir.emplace();
        m_path = m_dir->filePath(u"new folder/settings.conf"_s);
    }

    void emptyStoreGivesDefaultsAndIsNotWritten()
    {
        BWSettingsFile defaults(m_path);
        const BWConfigManager manager(defaults);
        QCOMPARE(manager.rememberLayout(), true);
        QCOMPARE(manager.firstTime(), true);
        QCOMPARE(manager.saveSnapshotOnClick(), true);
        QCOMPARE(manager.saveVideoOnHardwareButton(), false);
        QCOMPARE(manager.oldSettingsImported(), false);
        QCOMPARE(manager.mustResetLayout(), false);
        QVERIFY(manager.defaultAlbumName().isNull());
        QVERIFY(manager.currentProductIdentifierForCameraIdentifier(u"wired_high"_s).isNull());
        defaults.synchronize();
        QVERIFY(!QFile::exists(m_path));
    }

    void everySetterStoresEverything()
    {
        const QString name = u"Päckchen, \"50 %\"; =\n[x]\\ @é日本 "_s;
        {
            BWSettingsFile defaults(m_path);
            BWConfigManager manager(defaults);
            manager.setRememberLayout(false);
            manager.setSaveVideoOnHardwareButton(true);
            manager.setSaveSnapshotOnClick(false);
            manager.setFirstTime(false);
            manager.setOldSettingsImported(true);
            manager.setDefaultAlbumName(name);
            manager.setCurrentProductIdentifier(u"mx50_40"_s, u"wired_high"_s);
        }
        BWSettingsFile defaults(m_path);
        QStringList stored;
        for (const char *key : {"remember_layout", "video_button", "snapshot_click", "first_time",
                                "old_settings_imported", "default_album_name", "product_for_camera"})
            stored.append(defaults.string(u"bwp2x_"_s + QLatin1String(key)));
        QCOMPARE(stored,
                 QStringList({u"no"_s, u"yes"_s, u"no"_s, u"no"_s, u"yes"_s, name, u"{\"wired_high\":\"mx50_40\"}"_s}));
        const BWConfigManager manager(defaults);
        QVERIFY(!manager.rememberLayout() && manager.saveVideoOnHardwareButton() && !manager.saveSnapshotOnClick());
        QVERIFY(!manager.firstTime() && manager.oldSettingsImported());
        QCOMPARE(manager.defaultAlbumName(), name);
        QCOMPARE(manager.currentProductIdentifierForCameraIdentifier(u"wired_high"_s), u"mx50_40"_s);
    }

    void clearedAlbumNameComesBack()
    {
        BWSettingsFile defaults(m_path);
        BWConfigManager(defaults).setDefaultAlbumName(u"Proben"_s);
        BWConfigManager manager(defaults);
        manager.setDefaultAlbumName(QString());
        QVERIFY(manager.defaultAlbumName().isNull());
        QCOMPARE(BWConfigManager(defaults).defaultAlbumName(), u"Proben"_s);
    }

    void storedBooleans()
    {
        BWSettingsFile defaults(m_path);
        for (const QString &text : {u"yes"_s, u"YES"_s, u"Yes"_s, u"no"_s, u"1"_s, u"true"_s, u""_s, u" yes"_s}) {
            defaults.setString(u"bwp2x_snapshot_click"_s, text);
            defaults.setString(u"bwp2x_video_button"_s, text);
            const BWConfigManager manager(defaults);
            QCOMPARE(manager.saveSnapshotOnClick(), text.toLower() == u"yes"_s);
            QCOMPARE(manager.saveVideoOnHardwareButton(), text.toLower() == u"yes"_s);
        }
    }

    void damagedProductChoice()
    {
        BWSettingsFile defaults(m_path);
        for (const QString &text : {u"{\"wired_high\":\"mx61\""_s, u"[\"wired_high\"]"_s, u""_s,
                                    u"{\"wired_high\":\"mx61\",\"wireless\":5}"_s}) {
            defaults.setString(u"bwp2x_product_for_camera"_s, text);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"choice of products is damaged"_s));
            const BWConfigManager manager(defaults);
            QCOMPARE(manager.currentProductIdentifierForCameraIdentifier(u"wired_high"_s),
                     text.contains(u"wireless"_s) ? u"mx61"_s : QString());
            QVERIFY(manager.currentProductIdentifierForCameraIdentifier(u"wireless"_s).isNull());
        }
    }

    void damagedFile()
    {
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\xff\xfe\x01garbage\nbwp2x_video_button=yes\nbwp2x_snapshot_click=@Variant(\\0\\0\\0\\x7f\\xff)\n"
                   "bwp2x_default_album_name=Haut, Haare\n");
        file.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"is damaged"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"QVariant::load"_s));
        BWSettingsFile defaults(m_path);
        BWConfigManager manager(defaults);
        QVERIFY(manager.saveVideoOnHardwareButton());
        QVERIFY(manager.saveSnapshotOnClick());
        QCOMPARE(manager.defaultAlbumName(), u"Haut, Haare"_s);
        manager.setSaveSnapshotOnClick(false);
        BWSettingsFile again(m_path);
        QCOMPARE(BWConfigManager(again).saveSnapshotOnClick(), false);
    }

    void unwritableFileIsLoggedOnce()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be stored in"_s));
        BWSettingsFile defaults(u"/proc/no/settings.conf"_s);
        BWConfigManager manager(defaults);
        manager.setFirstTime(false);
        manager.setFirstTime(true);
        QVERIFY(manager.firstTime());
        QVERIFY(!defaults.synchronize());
    }

    void binaryValues()
    {
        const QByteArray bytes = QByteArray("bplist00\0\xff\r\n;\"\\", 15).repeated(2000);
        BWSettingsFile(m_path).setData(u"frame"_s, bytes);
        BWSettingsFile defaults(m_path);
        QCOMPARE(defaults.data(u"frame"_s), bytes);
        QVERIFY(defaults.string(u"frame"_s).isNull());
        defaults.setString(u"text"_s, u"a"_s);
        QVERIFY(defaults.data(u"text"_s).isNull());
        defaults.setString(u"text"_s, QString());
        QVERIFY(defaults.string(u"text"_s).isNull());
    }

    void listenersAreToldInOrder()
    {
        BWSettingsFile defaults(m_path);
        BWConfigManager manager(defaults);
        QStringList calls;
        Listener a, b;
        a.onUpdate = [&](BWConfigManager &changed) {
            calls.append(u"a"_s);
            if (changed.firstTime())
                changed.setFirstTime(false); // tells again, from within
        };
        b.onUpdate = [&](BWConfigManager &) { calls.append(u"b"_s); };
        manager.addListener(&a);
        manager.addListener(&b);
        manager.addListener(&a);
        manager.setRememberLayout(false);
        QCOMPARE(calls.join(QString()), u"aabb"_s);
        manager.removeListener(&a);
        manager.setRememberLayout(true);
        QCOMPARE(calls.join(QString()), u"aabbb"_s);
    }

    void resetLayoutIsOnePulse()
    {
        BWSettingsFile defaults(m_path);
        BWConfigManager manager(defaults);
        Listener listener;
        bool seen = false;
        listener.onUpdate = [&](BWConfigManager &changed) { seen = changed.mustResetLayout(); };
        manager.addListener(&listener);
        manager.resetLayout();
        QVERIFY(seen);
        QCOMPARE(listener.updates, 1);
        QVERIFY(!manager.mustResetLayout());
        QVERIFY(!QFile::exists(m_path));
    }

    void productOfTheCameraInUse()
    {
        BWSettingsFile defaults(m_path);
        QString camera;
        BWConfigManager manager(defaults, [&] { return camera; });
        QVERIFY(manager.productIdentifier().isNull());
        camera = u"wired_high"_s;
        QCOMPARE(manager.productIdentifier(), u"dx10"_s);
        manager.setCurrentProductIdentifier(u"mx61"_s, camera);
        QCOMPARE(manager.productIdentifier(), u"mx61"_s);
        manager.setCurrentProductIdentifier(u"gone"_s, camera);
        QCOMPARE(manager.productIdentifier(), u"gone"_s);
        QVERIFY(!manager.productByIdentifier(u"gone"_s));
        camera = u"unheard of"_s;
        QVERIFY(manager.productIdentifier().isNull());
    }

    void changingListenersWhileTellingEndsTheProgram()
    {
        QVERIFY(aborts("add listener"));
        QVERIFY(aborts("remove listener"));
    }

private:
    std::optional<QTemporaryDir> m_dir;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestSettings)
#include "test_settings.moc"
