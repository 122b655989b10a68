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
    BWCameraPtr currentCamera() const override { return {}; }
    bool pendingDevices() const override { return false; }
};

} // namespace

class TestRepository : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everythingLivesInTheGivenHome()
    {
        const TestFolder folder;
        const QString settings = folder.path(u"settings.conf"_s);
        {
            BWSettingsFile defaults(settings);
            BWConfigManager(defaults).setDefaultAlbumName(u"Standardalbum"_s);
        }
        const QString texts = folder.file(u"texts.json"_s, "[]").toLocalFile();
        BWRepository::setOptions({settings, folder.path(), {u"de-DE"_s}, texts});
        BWRepository &repository = BWRepository::singleton();
        QCOMPARE(&BWRepository::singleton(), &repository);
        QCOMPARE(repository.localizationManager().preferredLanguage(), u"de"_s);
        QVERIFY(!repository.localizationManager().strings().isEmpty()); // of the products
        QVERIFY2(!repository.albumManager().isPrepared(), "no disk is waited for");
        repository.albumManager().waitUntilPrepared();
        QCOMPARE(repository.albumManager().currentAlbum()->path(), folder.url(u"BrimwellPro/Standardalbum"_s));

        {
            Delegate delegate;
            QCOMPARE(repository.appDelegate(), &delegate);
            QVERIFY(repository.configManager().productIdentifier().isNull()); // no camera yet
        }
        QVERIFY(!repository.appDelegate());
    }
};

QTEST_GUILESS_MAIN(TestRepository)
#include "test_repository.moc"
