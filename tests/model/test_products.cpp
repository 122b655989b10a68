#include "Model/BWConfigManager.h"
#include "Model/BWSettingsFile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList identifiers(const QList<BWCameraProductPtr> &products)
{
    QStringList result;
    for (const BWCameraProductPtr &product : products)
        result.append(product->identifier());
    return result;
}

/// "0:12 1:50 ..." in the order of the available settings.
QString valuesOf(const BWCameraProduct &product)
{
    QStringList result;
    for (int setting : product.availableSettings())
        result.append(u"%1:%2"_s.arg(setting).arg(product.valueForSetting(setting).value_or(-1)));
    return result.join(u' ');
}

} // namespace

class TestProducts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_dir.emplace();
        m_defaults.emplace(m_dir->filePath(u"settings.conf"_s));
    }

    void cleanup()
    {
        m_defaults.reset(); // may still write
    }

    void orderAndDefaults_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("products");
        QTest::newRow("ultra") << u"wired_ultra"_s << u"mx62 mx51 mx24 dx20"_s;
        QTest::newRow("regular") << u"wired_regular"_s << u"dx15_16 dx14 dx70"_s;
        QTest::newRow("high") << u"wired_high"_s << u"dx10 mx50_40 mx61 mx63 dx11t"_s;
        QTest::newRow("wireless") << u"wireless"_s << u"dx12 dx17_18 mx30_31 mx32 mx33 dx72 wx90"_s;
        QTest::newRow("unknown") << u"wired"_s << QString();
    }

    void orderAndDefaults()
    {
        QFETCH(QString, type);
        QFETCH(QString, products);
        const BWConfigManager manager(*m_defaults);
        QCOMPARE(identifiers(manager.productsByCameraIdentifier(type)).join(u' '), products);
        QCOMPARE(manager.defaultProductIdentifierForCameraIdentifier(type), products.section(u' ', 0, 0));
        QCOMPARE(identifiers(manager.allProducts()).join(u' '),
                 u"mx62 mx51 mx24 dx15_16 dx14 dx70 dx10 mx50_40 mx61 mx63 dx11t dx12 dx17_18 mx30_31 mx32 mx33 dx72 "
                 "wx90 dx20"_s);
    }

    void namesThatMustNotBeTidied()
    {
        const BWConfigManager manager(*m_defaults);
        QVERIFY(!manager.productByIdentifier(u"mx30_41"_s));
        QCOMPARE(manager.productByIdentifier(u"mx30_31"_s)->name(), u"Wireless Microscope MX30/MX31"_s);
        QCOMPARE(manager.productByIdentifier(u"mx30_31"_s)->oldGermanName(), u"Drahtloses Mikroskop MX30 / MX31"_s);
        QCOMPARE(manager.productByIdentifier(u"wx90"_s)->oldGermanName(), u"Drahtlos Digitalkamera WX90"_s);
        QCOMPARE(manager.productByIdentifier(u"mx63"_s)->oldEnglishName(), u"Digital U/V Polarizing Microscope MX63"_s);
        QVERIFY(manager.productByIdentifier(u"dx20"_s)->oldGermanName().isNull());
    }

    void factoryValues_data()
    {
        QTest::addColumn<QStringList>("products");
        QTest::addColumn<QString>("values");
        QTest::addColumn<int>("resolutions");
        const QString ultra = u"0:0 1:32 2:64 3:0 4:3 5:100 7:4600 8:1 9:0 10:1 11:1 12:157"_s;
        QTest::newRow("ultra A") << QStringList{u"mx62"_s, u"mx51"_s} << ultra << 7;
        QTest::newRow("ultra A, ten sizes") << QStringList{u"dx20"_s} << ultra << 10;
        QTest::newRow("ultra B") << QStringList{u"mx24"_s}
                                 << u"0:12 1:50 2:60 3:35 4:4 5:90 7:3750 8:1 9:0 10:1 11:0 12:625"_s << 7;
        QTest::newRow("high") << QStringList{u"dx10"_s, u"mx50_40"_s, u"mx61"_s, u"mx63"_s, u"dx11t"_s}
                              << u"0:0 1:15 2:15 3:160 4:13 5:78 7:128 8:1"_s << 3;
        QTest::newRow("regular A") << QStringList{u"dx15_16"_s} << u"0:0 1:13 2:15 3:152 4:15 5:64 7:120 8:0"_s << 3;
        QTest::newRow("regular B") << QStringList{u"dx14"_s} << u"0:0 1:8 2:16 3:120 4:12 5:92 7:128 8:1"_s << 3;
        QTest::newRow("regular C") << QStringList{u"dx70"_s} << u"0:0 1:13 2:15 3:167 4:15 5:75 7:90 8:0"_s << 3;
        QTest::newRow("wireless A") << QStringList{u"dx12"_s, u"mx30_31"_s, u"mx32"_s, u"mx33"_s, u"dx72"_s, u"wx90"_s}
                                    << u"0:63 1:28 2:56 3:130 4:10 13:1"_s << 2;
        QTest::newRow("wireless B") << QStringList{u"dx17_18"_s} << u"0:63 1:32 2:56 3:100 4:11 13:1"_s << 2;
    }

    void factoryValues()
    {
        QFETCH(QStringList, products);
        QFETCH(int, resolutions);
        const BWConfigManager manager(*m_defaults);
        for (const QString &identifier : products) {
            const BWCameraProductPtr product = manager.productByIdentifier(identifier);
            QTEST(valuesOf(*product), "values");
            QCOMPARE(product->currentResolution(), BWResolution(640, 480));
            QCOMPARE(product->availableResolutions().size(), resolutions);
            QVERIFY(!product->valueForSetting(6));
        }
        QVERIFY(!QFile::exists(m_dir->filePath(u"settings.conf"_s)));
    }

    void savedValuesComeBack()
    {
        {
            const BWConfigManager manager(*m_defaults);
            const BWCameraProductPtr product = manager.productByIdentifier(u"dx12"_s);
            product->setValue(200, 3);
            product->setValue(0.5, 4);
            product->setValue(7, 99);
            product->setCurrentResolution({720, 480});
            product->save();
        }
        const QString text = m_defaults->string(u"bwp2x_product_dx12"_s);
        QCOMPARE(text, u"{\"0\":63,\"1\":28,\"13\":1,\"2\":56,\"3\":200,\"4\":0.5,\"resolution\":\"720x480\"}"_s);
        const BWConfigManager manager(*m_defaults);
        const BWCameraProductPtr product = manager.productByIdentifier(u"dx12"_s);
        QCOMPARE(valuesOf(*product), u"0:63 1:28 2:56 3:200 4:0.5 13:1"_s);
        QCOMPARE(product->currentResolution(), BWResolution(720, 480));
        product->setDefaults();
        QCOMPARE(valuesOf(*product), u"0:63 1:28 2:56 3:130 4:10 13:1"_s);
        QCOMPARE(product->currentResolution(), BWResolution(640, 480));
        QCOMPARE(m_defaults->string(u"bwp2x_product_dx12"_s), text);
    }

    void storedValues_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("values");
        QTest::addColumn<QString>("resolution");
        QTest::addColumn<bool>("logged");
        const QString factory = u"0:63 1:28 2:56 3:130 4:10 13:1"_s;
        const QString size = u"640x480"_s;
        QTest::newRow("cut off") << u"{\"3\":200,\"resol"_s << factory << size << true;
        QTest::newRow("not an object") << u"[200]"_s << factory << size << true;
        QTest::newRow("empty") << u""_s << factory << size << true;
        QTest::newRow("some members") << u"{\"3\":200}"_s << u"0:63 1:28 2:56 3:200 4:10 13:1"_s << size << false;
        QTest::newRow("one wrong type") << u"{\"2\":\"a\",\"3\":200,\"4\":null}"_s
                                        << u"0:63 1:28 2:56 3:200 4:10 13:1"_s << size << true;
        QTest::newRow("too large") << u"{\"2\":1e300,\"3\":2147483648,\"4\":-9}"_s
                                   << u"0:63 1:28 2:56 3:130 4:-9 13:1"_s << size << true;
        QTest::newRow("huge exponent") << u"{\"2\":1e999}"_s << factory << size << true;
        QTest::newRow("no size") << u"{\"resolution\":\"640x\",\"3\":1}"_s << u"0:63 1:28 2:56 3:1 4:10 13:1"_s << size
                                 << true;
        QTest::newRow("size of wrong type") << u"{\"resolution\":640}"_s << factory << size << true;
        // What only the camera offers was chosen from the camera's own menu.
        QTest::newRow("size of the camera") << u"{\"resolution\":\"1024x768\"}"_s << factory << u"1024x768"_s << false;
        QTest::newRow("names read as numbers")
            << u"{\" 3x\":5,\"hue\":7}"_s << u"0:7 1:28 2:56 3:5 4:10 13:1"_s << size << false;
    }

    void storedValues()
    {
        QFETCH(QString, text);
        QFETCH(bool, logged);
        m_defaults->setString(u"bwp2x_product_dx12"_s, text);
        if (logged)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"values of dx12 are damaged"_s));
        const BWConfigManager manager(*m_defaults);
        QTEST(valuesOf(*manager.productByIdentifier(u"dx12"_s)), "values");
        QTEST(manager.productByIdentifier(u"dx12"_s)->currentResolution().resolutionString(), "resolution");
    }

    void unknownCodesAreReadButNotStored()
    {
        m_defaults->setString(u"bwp2x_product_dx10"_s, u"{\"99\":5,\"3\":1}"_s);
        const BWConfigManager manager(*m_defaults);
        const BWCameraProductPtr product = manager.productByIdentifier(u"dx10"_s);
        QCOMPARE(product->valueForSetting(99), 5);
        product->save();
        const QJsonObject stored =
            QJsonDocument::fromJson(m_defaults->string(u"bwp2x_product_dx10"_s).toUtf8()).object();
        QVERIFY(!stored.contains(u"99"_s));
        QCOMPARE(stored.size(), 9);
        QCOMPARE(stored[u"3"_s].toDouble(), 1);
    }

private:
    std::optional<QTemporaryDir> m_dir;
    std::optional<BWSettingsFile> m_defaults;
};

QTEST_GUILESS_MAIN(TestProducts)
#include "test_products.moc"
