// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Import/BWOldSettingsImporter.h"

#include "BWACUDriver/BWCameraSetting.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <QFile>
#include <QHash>

using namespace Qt::StringLiterals;

using Result = BWOldSettingsImporter::Result;

namespace {

/// From the products' names in the previous generation, English and German, to their identifiers.
QHash<QString, QString> oldProductNames(const BWConfigManager &config)
{
    QHash<QString, QString> names;
    for (const BWCameraProductPtr &product : config.allProducts()) {
        names.insert(product->oldEnglishName(), product->identifier());
        if (!product->oldGermanName().isNull())
            names.insert(product->oldGermanName(), product->identifier());
    }
    return names;
}

/// Null for an unknown type of camera.
QString cameraType(const QString &oldName)
{
    static const QHash<QString, QString> cameras{
        {u"Brimwell Camera"_s, u"wired_regular"_s},
        {u"Brimwell High Resolution Camera"_s, u"wired_high"_s},
        {u"Brimwell Ultra Resolution Camera"_s, u"wired_ultra"_s},
        {u"Brimwell Wireless Camera"_s, u"wireless"_s},
    };
    return cameras.value(oldName);
}

void setProduct(BWCameraProduct &product, const BWOldCameraSettings::Product &old)
{
    const QList<int> available = product.availableSettings();
    for (const int setting : available) {
        const auto value = old.values.constFind(BWCameraSetting::stringForSettingIdentifier(setting));
        if (value != old.values.constEnd() && setting != BWSettingVideoNorm) // which is stored elsewhere
            product.setValue(*value, setting);
    }
    if (old.videoNorm && product.cameraTypeIdentifier() == "wireless"_L1)
        product.setValue(*old.videoNorm, BWSettingVideoNorm);
    const auto resolution = BWResolution::fromResolutionString(old.resolution);
    if (resolution && product.availableResolutions().contains(*resolution))
        product.setCurrentResolution(*resolution);
    product.save();
}

void setCameras(const BWOldCameraSettings &old, BWConfigManager &config, Result &result)
{
    const QHash<QString, QString> products = oldProductNames(config);
    // The products first: whoever is notified of a choice then finds their values.
    for (const BWOldCameraSettings::Product &record : old.products) {
        const BWCameraProductPtr product = config.productByIdentifier(products.value(record.name));
        if (product)
            setProduct(*product, record);
        ++(product ? result.products : result.unknownProducts);
    }
    for (auto it = old.productForCamera.begin(); it != old.productForCamera.end(); ++it) {
        const QString camera = cameraType(it.key());
        const QString product = products.value(*it);
        const bool isKnown = !camera.isNull() && !product.isNull();
        if (isKnown)
            config.setCurrentProductIdentifier(product, camera);
        ++(isKnown ? result.cameras : result.unknownCameras);
    }
}

/// The folder's name, if it can be that of a folder among the albums; null otherwise.
QString folderName(const BWOldAlbum &album)
{
    const QString name = album.path.section(u'/', -1, -1, QString::SectionSkipEmpty);
    return BWAlbum::isName(name) ? name : QString();
}

bool isDefault(const BWOldAlbum &album)
{
    return (album.name == "Standard Album"_L1 || album.name == "Default Album"_L1) && !folderName(album).isNull();
}

/// The folders by the paths that were stored, which have to be absolute to mean anything.
QList<QUrl> foldersOf(const QList<BWOldAlbum> &albums)
{
    QList<QUrl> folders;
    for (const BWOldAlbum &album : albums) {
        if (album.path.startsWith(u'/'))
            folders.append(BWFilePath::url(QFile::encodeName(album.path)));
    }
    return folders;
}

void addAlbums(const QList<BWOldAlbum> &old, const QList<QUrl> &there, BWConfigManager &config, BWAlbumManager &albums,
               Result &result)
{
    result.missingFolders = static_cast<int>(old.size() - there.size());
    result.albums = albums.addAlbumsFromPaths(there);
    result.knownAlbums = static_cast<int>(there.size()) - result.albums;
    for (const BWOldAlbum &album : old) {
        // Only where that does not make the next start create a folder of that name.
        if (isDefault(album) && there.contains(albums.pathForAlbumName(folderName(album))))
            config.setDefaultAlbumName(folderName(album));
    }
}

} // namespace

BWOldSettingsImporter::BWOldSettingsImporter(BWUserDefaults &defaults) : m_defaults(defaults) { }

void BWOldSettingsImporter::importSettingsIfNecessary(BWConfigManager &config, BWAlbumManager &albums)
{
    if (config.oldSettingsImported())
        return;
    importSettings(config, albums);
    config.setOldSettingsImported(true); // also with a damaged archive, which will not get any better
}

void BWOldSettingsImporter::importSettings(BWConfigManager &config, BWAlbumManager &albums)
{
    importAlbums(config, albums);
    importCameraSettings(config);
}

void BWOldSettingsImporter::importAlbums(BWConfigManager &config, BWAlbumManager &albums)
{
    const QByteArray archive = m_defaults.data(BWOldSettings::albumsKey());
    if (archive.isNull())
        return;
    QString problem;
    const auto old = BWOldAlbum::decode(archive, problem);
    if (!old) {
        qCWarning(bwModel).noquote() << "The old list of albums is not taken over:" << problem;
        return;
    }
    for (const BWOldAlbum &album : *old) {
        if (isDefault(album))
            config.setDefaultAlbumName(folderName(album));
    }
    const QList<QUrl> folders = foldersOf(*old);
    if (!folders.isEmpty())
        albums.setImportOldAlbums(folders);
    qCInfo(bwModel) << "Old albums taken over:" << folders.size();
}

void BWOldSettingsImporter::importCameraSettings(BWConfigManager &config)
{
    const QByteArray archive = m_defaults.data(BWOldSettings::camerasKey());
    if (archive.isNull())
        return;
    QString problem;
    const auto old = BWOldCameraSettings::decode(archive, problem);
    if (!old) {
        qCWarning(bwModel).noquote() << "The old settings of cameras are not taken over:" << problem;
        return;
    }
    Result result;
    setCameras(*old, config, result);
    qCInfo(bwModel) << "Old settings taken over: cameras" << result.cameras << "products" << result.products
                    << "- not known: cameras" << result.unknownCameras << "products" << result.unknownProducts;
}

QList<QUrl> BWOldSettingsImporter::foldersThere(const BWOldSettings &settings)
{
    return settings.albums ? BWFilePath::foldersAmong(foldersOf(*settings.albums)) : QList<QUrl>();
}

Result BWOldSettingsImporter::importByHand(const BWOldSettings &settings, const QList<QUrl> &there,
                                           BWConfigManager &config, BWAlbumManager &albums)
{
    Result result;
    if (settings.cameras)
        setCameras(*settings.cameras, config, result);
    if (settings.albums)
        addAlbums(*settings.albums, there, config, albums, result);
    return result;
}
