#include "Model/Import/BWOldSettingsImporter.h"

#include "BWACUDriver/BWCameraSetting.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Import/BWOldSettingsKeys.h"
#include "Model/Import/BWOldSettingsMapping.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWUserDefaults.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWFolderCheck.h"
#include "Utils/BWLogging.h"

#include <QFile>

using namespace Qt::StringLiterals;

using Result = BWOldSettingsImporter::Result;

namespace {

void setProduct(BWCameraProduct &product, const BWOldCameraSettings::Product &old)
{
    const QList<int> available = product.availableSettings();
    for (auto it = old.values.begin(); it != old.values.end(); ++it) {
        const auto setting = BWOldSettingsMapping::setting(it.key());
        if (setting && available.contains(*setting))
            product.setValue(*it, *setting);
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
    const BWOldSettingsMapping mapping(config);
    // The products first: whoever is told of a choice then finds their values.
    for (const BWOldCameraSettings::Product &record : old.products) {
        const BWCameraProductPtr product = config.productByIdentifier(mapping.product(record.name));
        if (product)
            setProduct(*product, record);
        ++(product ? result.products : result.unknownProducts);
    }
    for (auto it = old.productForCamera.begin(); it != old.productForCamera.end(); ++it) {
        const QString camera = BWOldSettingsMapping::camera(it.key());
        const QString product = mapping.product(*it);
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
    if (!config.oldSettingsImported() && importSettings(config, albums))
        config.setOldSettingsImported(true);
}

bool BWOldSettingsImporter::importSettings(BWConfigManager &config, BWAlbumManager &albums)
{
    return importAlbums(config, albums) && importCameraSettings(config);
}

bool BWOldSettingsImporter::importAlbums(BWConfigManager &config, BWAlbumManager &albums)
{
    const QByteArray archive = m_defaults.data(BWOldSettingsKeys::albums());
    if (archive.isNull())
        return true;
    QString problem;
    const auto old = BWOldAlbum::decode(archive, problem);
    if (!old) {
        qCWarning(bwModel).noquote() << "The old list of albums is not taken over:" << problem;
        return true; // it will not get any better
    }
    for (const BWOldAlbum &album : *old) {
        if (isDefault(album))
            config.setDefaultAlbumName(folderName(album));
    }
    const QList<QUrl> folders = foldersOf(*old);
    if (!folders.isEmpty())
        albums.setImportOldAlbums(folders);
    qCInfo(bwModel) << "Old albums taken over:" << folders.size();
    return true;
}

bool BWOldSettingsImporter::importCameraSettings(BWConfigManager &config)
{
    const QByteArray archive = m_defaults.data(BWOldSettingsKeys::cameras());
    if (archive.isNull())
        return true;
    QString problem;
    const auto old = BWOldCameraSettings::decode(archive, problem);
    if (!old) {
        qCWarning(bwModel).noquote() << "The old settings of cameras are not taken over:" << problem;
        return true;
    }
    Result result;
    setCameras(*old, config, result);
    qCInfo(bwModel) << "Old settings taken over: cameras" << result.cameras << "products" << result.products
                    << "- not known: cameras" << result.unknownCameras << "products" << result.unknownProducts;
    return true;
}

QList<QUrl> BWOldSettingsImporter::foldersThere(const BWOldSettings &settings)
{
    return settings.albums ? BWFolderCheck::folders(foldersOf(*settings.albums)) : QList<QUrl>();
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
