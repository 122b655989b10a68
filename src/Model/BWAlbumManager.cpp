#include "Model/BWAlbumManager.h"

#include "Model/BWAlbumIntake.h"
#include "Model/BWUserDefaults.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWFolderCheck.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <algorithm>
#include <optional>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

const QString albumsKey = u"bwp2x_albums"_s;
const QString standardDefaultName = u"Default Album"_s;

bool makeFolder(const QUrl &folder)
{
    return QDir().mkpath(folder.toLocalFile());
}

/// A folder's name up to its last dot, which may not be its first character.
QString nameWithoutExtension(const BWAlbum &album)
{
    const qsizetype dot = album.name().lastIndexOf(u'.');
    return dot > 0 ? album.name().left(dot) : album.name();
}

} // namespace

struct BWAlbumManager::Private {
    Private(BWUserDefaults &userDefaults, QString homeFolder, BWAlbum::Today todayFunction)
        : defaults(userDefaults),
          home(std::move(homeFolder)),
          today(std::move(todayFunction)),
          intake([this] { return currentAlbum(); }, [this] { tell(onContentsChanged); })
    {
    }

    static void tell(const ChangeCallback &callback)
    {
        if (callback)
            callback();
    }

    QUrl basePath() const { return BWFilePath::normalized(QUrl::fromLocalFile(home + u"/BrimwellPro"_s)); }
    QUrl pathForName(const QString &name) const { return BWFilePath::entry(basePath(), QFile::encodeName(name)); }
    QString defaultName() const { return oldDefaultName.isEmpty() ? standardDefaultName : oldDefaultName; }
    BWAlbumPtr currentAlbum() const { return albums.value(selected); }

    void fail(const QUrl &folder)
    {
        faulty = true;
        qCWarning(bwModel).noquote() << "Albums cannot be prepared in" << folder.toDisplayString();
    }

    bool load();
    void prepareAlbums(bool scan);
    void keepOneAlbum();
    void save();
    void reload(int index);

    BWUserDefaults &defaults;
    QString home;
    BWAlbum::Today today;
    bool faulty = false;
    std::optional<QList<QUrl>> importedAlbums;
    QString oldDefaultName;
    QList<BWAlbumPtr> albums;
    QList<QUrl> validPaths;
    int selected = -1;
    ChangeCallback onAlbumsChanged;
    ChangeCallback onContentsChanged;
    BWTrash trash;
    BWAlbumIntake intake; // last, so that it ends first
};

/// Reads the stored list. True when there is none, so that the base folder must be scanned.
bool BWAlbumManager::Private::load()
{
    if (importedAlbums) {
        validPaths = *importedAlbums;
        save();
        return false;
    }
    validPaths.clear();
    const QString text = defaults.string(albumsKey);
    if (text.isNull())
        return true;
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray())
        qCWarning(bwModel) << "The stored list of albums is damaged; the albums' folder is searched instead";
    const QJsonArray paths = document.array();
    QList<QUrl> stored;
    for (const QJsonValue &value : paths) {
        if (const QString path = value.toString(); path.startsWith(u'/'))
            stored.append(BWFilePath::url(QFile::encodeName(path)));
    }
    // The default album's folder is about to be made again if it has vanished.
    validPaths = BWFolderCheck::folders(stored, {pathForName(defaultName())});
    return paths.isEmpty();
}

/// Makes the albums from the stored list or from the folders in the base folder. A scan stores folders only up to
/// the default album; those after it are shown, and found again by a later scan.
void BWAlbumManager::Private::prepareAlbums(bool scan)
{
    QList<QUrl> folders = validPaths;
    if (scan) {
        const auto names = BWFilePath::entries(basePath());
        if (!names) {
            fail(basePath());
            return;
        }
        folders.clear();
        for (const QByteArray &name : *names)
            folders.append(BWFilePath::entry(basePath(), name));
    }
    albums.clear();
    bool defaultFound = false;
    folders = BWFolderCheck::folders(folders);
    for (const QUrl &folder : std::as_const(folders)) {
        const auto album = std::make_shared<BWAlbum>(folder, today);
        if (!defaultFound) {
            defaultFound = nameWithoutExtension(*album) == defaultName();
            album->setIsDefaultAlbum(defaultFound);
            if (scan)
                validPaths.append(folder);
        }
        albums.append(album);
    }
    keepOneAlbum();
}

/// Captures must always have somewhere to go, even when every remembered folder has vanished.
void BWAlbumManager::Private::keepOneAlbum()
{
    const QUrl folder = pathForName(defaultName());
    if (!albums.isEmpty() || !makeFolder(folder))
        return;
    albums.append(std::make_shared<BWAlbum>(folder, today));
    albums.first()->setIsDefaultAlbum(true);
    if (!validPaths.contains(folder))
        validPaths.append(folder);
}

void BWAlbumManager::Private::save()
{
    QJsonArray paths;
    for (const QUrl &folder : std::as_const(validPaths))
        paths.append(folder.toLocalFile());
    defaults.setString(albumsKey, QString::fromUtf8(QJsonDocument(paths).toJson(QJsonDocument::Compact)));
    defaults.synchronize();
}

void BWAlbumManager::Private::reload(int index)
{
    selected = albums.isEmpty() ? -1 : index;
    tell(onAlbumsChanged);
}

BWAlbumManager::BWAlbumManager(BWUserDefaults &defaults, QString home, BWAlbum::Today today)
    : d(std::make_unique<Private>(defaults, std::move(home), std::move(today)))
{
}

BWAlbumManager::~BWAlbumManager() = default;

void BWAlbumManager::setImportOldAlbums(const QList<QUrl> &folders)
{
    d->importedAlbums.emplace();
    for (const QUrl &folder : folders)
        d->importedAlbums->append(BWFilePath::normalized(folder));
}

void BWAlbumManager::setOldDefaultAlbumName(const QString &name)
{
    d->oldDefaultName = name;
}

void BWAlbumManager::prepare()
{
    const bool scan = d->load();
    for (const QUrl &folder : {d->basePath(), d->pathForName(d->defaultName())}) {
        if (!makeFolder(folder)) {
            d->fail(folder);
            return;
        }
    }
    d->prepareAlbums(scan);
    if (!d->faulty)
        d->reload(0);
}

bool BWAlbumManager::faulty() const
{
    return d->faulty;
}

QUrl BWAlbumManager::albumsBasePath() const
{
    makeFolder(d->basePath());
    return d->basePath();
}

QUrl BWAlbumManager::pathForAlbumName(const QString &name) const
{
    return d->pathForName(name);
}

QUrl BWAlbumManager::defaultAlbumBasePath() const
{
    return d->pathForName(standardDefaultName);
}

const QList<BWAlbumPtr> &BWAlbumManager::albums() const
{
    return d->albums;
}

const QList<QUrl> &BWAlbumManager::validAlbumPaths() const
{
    return d->validPaths;
}

int BWAlbumManager::selectedIndex() const
{
    return d->selected;
}

void BWAlbumManager::setSelectedIndex(int index)
{
    if (index < 0 || index >= d->albums.size())
        return;
    d->selected = index;
    Private::tell(d->onContentsChanged);
}

BWAlbumPtr BWAlbumManager::currentAlbum() const
{
    return d->currentAlbum();
}

void BWAlbumManager::addFile(const QUrl &file, BWMediaType type, AddCompletion completion, AddProgress progress)
{
    d->intake.add(file, type, std::move(completion), std::move(progress));
}

void BWAlbumManager::removeFile(const QUrl &file, BWMediaType type)
{
    Q_UNUSED(type)
    BWMainQueue::post(d->intake.alive(), [this, file] { removeFiles({file}, {}); });
}

void BWAlbumManager::removeFiles(const QList<QUrl> &files, std::function<void(const BWTrash::Moved &)> finished)
{
    d->trash.move(files, [this, finished = std::move(finished)](const BWTrash::Moved &result) {
        Private::tell(d->onContentsChanged);
        if (finished)
            finished(result);
    });
}

bool BWAlbumManager::canUndoRemoving() const
{
    return d->trash.canUndo();
}

void BWAlbumManager::undoRemoving(std::function<void(const BWTrash::Restored &)> finished)
{
    d->trash.undo([this, finished = std::move(finished)](const BWTrash::Restored &result) {
        Private::tell(d->onContentsChanged);
        if (finished)
            finished(result);
    });
}

void BWAlbumManager::whenAdded(std::function<void()> done)
{
    d->intake.whenDone(std::move(done));
}

void BWAlbumManager::abandonAdding()
{
    d->intake.abandon();
}

void BWAlbumManager::addAlbumFromPath(const QUrl &folder)
{
    const QUrl path = BWFilePath::normalized(folder);
    if (!path.isLocalFile() || d->validPaths.contains(path))
        return;
    // A folder that a scan found but did not store is listed once, not twice.
    d->albums.removeIf([&path](const BWAlbumPtr &album) { return album->path() == path; });
    d->albums.append(std::make_shared<BWAlbum>(path, d->today));
    d->validPaths.append(path);
    d->reload(static_cast<int>(d->albums.size()) - 1);
    d->save();
}

int BWAlbumManager::addAlbumsFromPaths(const QList<QUrl> &folders)
{
    int added = 0;
    for (const QUrl &folder : folders) {
        const QUrl path = BWFilePath::normalized(folder);
        if (!path.isLocalFile() || d->validPaths.contains(path))
            continue;
        const bool isListed = std::any_of(d->albums.cbegin(), d->albums.cend(),
                                          [&path](const BWAlbumPtr &album) { return album->path() == path; });
        if (!isListed) // a scan may have found it without storing it
            d->albums.append(std::make_shared<BWAlbum>(path, d->today));
        d->validPaths.append(path);
        ++added;
    }
    if (added > 0) {
        d->reload(std::max(d->selected, 0));
        d->save();
    }
    return added;
}

bool BWAlbumManager::canRemoveCurrentAlbum() const
{
    const BWAlbumPtr album = d->currentAlbum();
    return album && !album->isDefaultAlbum();
}

void BWAlbumManager::removeCurrentAlbum()
{
    if (!canRemoveCurrentAlbum())
        return;
    const BWAlbumPtr album = d->albums.takeAt(d->selected);
    d->validPaths.removeAll(album->path());
    d->keepOneAlbum();
    d->reload(0);
    d->save();
}

void BWAlbumManager::setOnAlbumsChanged(ChangeCallback callback)
{
    d->onAlbumsChanged = std::move(callback);
}

void BWAlbumManager::setOnAlbumContentsChanged(ChangeCallback callback)
{
    d->onContentsChanged = std::move(callback);
}
