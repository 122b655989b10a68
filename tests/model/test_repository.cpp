#include "Model/BWAlbumManager.h"
#include "Model/BWApplicationDelegate.h"
#include "Model/BWConfigManager.h"
#include "Model/BWLocalizationManager.h"
#include "Model/BWRepository.h"
#include "Model/BWSettingsFile.h"
#include "TestFolder.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

struct Delegate : BWApplicationDelegate {
    BWCameraPtr camera;

    BWCameraPtr currentCamera() const override { return camera; }
    bool pendingDevices() const override { return false; }
};

} // namespace

class TestRepository : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everythingLivesInTheGivenHome()
    {
        const TestFolder folder;
        BWRepository::Options options{folder.path(u"settings.conf"_s),
                                      folder.path(),
                                      {u"de-DE"_s},
                                      folder.file(u"texts.json"_s, "[]").toLocalFile()};
        {
            BWSettingsFile defaults(options.settingsFile);
            BWConfigManager(defaults).setDefaultAlbumName(u"Standardalbum"_s);
        }
        BWRepository::setOptions(options);
        BWRepository &repository = BWRepository::singleton();
        QCOMPARE(&BWRepository::singleton(), &repository);
        QCOMPARE(repository.localizationManager().preferredLanguage(), u"de"_s);
        QCOMPARE(repository.localizationManager().strings().size(), 19);
        QVERIFY(!repository.albumManager().faulty());
        QCOMPARE(repository.albumManager().currentAlbum()->path(), folder.url(u"BrimwellPro/Standardalbum"_s));

        QVERIFY(!repository.appDelegate());
        QVERIFY(repository.configManager().productIdentifier().isNull());
        {
            Delegate delegate;
            QCOMPARE(repository.appDelegate(), &delegate);
            QVERIFY(repository.configManager().productIdentifier().isNull());
        }
        QVERIFY(!repository.appDelegate());
    }
};

QTEST_GUILESS_MAIN(TestRepository)
#include "test_repository.moc"
