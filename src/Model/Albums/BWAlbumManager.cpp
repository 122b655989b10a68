#include "Model/Albums/BWAlbumManager.h"

#include "Model/Albums/BWAlbumIntake.h"
#include "Model/Settings/BWUserDefaults.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWFolderCheck.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QString albumsKey = u"bwp2x_albums"_s;
const QString standardDefaultName = u"Default Album"_s;

bool makeFolder(const QUrl &folder)
{
    return QDir().mkpath(folder.toLocalFile());
}

bool isHidden(const QUrl &folder)
{
    return BWFilePath::lastComponent(folder).startsWith('.');
}

/// By name, whether the letters are capital or not.
bool isListedBefore(const QByteArray &left, const QByteArray &right)
{
    const int order = QString::compare(QFile::decodeName(left), QFile::decodeName(right), Qt::CaseInsensitive);
    return order != 0 ? order < 0 : left < right;
}

/// What is asked of the disks at the start, in the background, as they may take long to answer.
struct Question {
    QUrl base;
    QUrl defaultFolder;
    QList<QUrl> stored;
    bool scan = false;
};

struct Answer {
    QUrl failed; ///< the folder that could not be made or listed; empty if all is well
    QList<QUrl> folders; ///< that exist, in the order in which they are listed
};

Answer ask(const Question &question)
{
    for (const QUrl &folder : {question.base, question.defaultFolder}) {
        if (!makeFolder(folder))
            return {folder, {}};
    }
    QList<QUrl> folders = question.stored;
    if (question.scan) {
        auto names = BWFilePath::entries(question.base);
        if (!names)
            return {question.base, {}};
        std::sort(names->begin(), names->end(), isListedBefore);
        folders.clear();
        for (const QByteArray &name : std::as_const(*names))
            folders.append(BWFilePath::entry(question.base, name));
    }
    folders.removeIf(isHidden);
    return {{}, BWFolderCheck::folders(folders)};
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
          intake([this] { return currentAlbum(); }, [this] { notify(onContentsChanged); })
    {
    }

    static void notify(const ChangeCallback &callback)
    {
        if (callback)
            callback();
    }

    QUrl basePath() const { return BWFilePath::fromLocal(home + u"/BrimwellPro"_s); }
    QUrl pathForName(const QString &name) const { return BWFilePath::entry(basePath(), QFile::encodeName(name)); }
    QString defaultName() const { return oldDefaultName.isEmpty() ? standardDefaultName : oldDefaultName; }
    BWAlbumPtr currentAlbum() const { return albums.value(selected); }

    void fail(const QUrl &folder)
    {
        faulty = true;
        qCWarning(bwModel).noquote() << "Albums cannot be prepared in" << folder.toDisplayString();
    }

    Question load();
    void take(const Question &question, const Answer &answer);
    void takeFolders(const QList<QUrl> &folders, bool scan);
    void addDefaultAlbum();
    QList<QUrl> readList(bool *damaged = nullptr) const;
    void save();
    void reload(int index);

    BWUserDefaults &defaults;
    QString home;
    BWAlbum::Today today;
    bool faulty = false;
    bool isPrepared = false;
    std::vector<std::function<void()>> whenPrepared;
    std::optional<QList<QUrl>> importedAlbums;
    QString oldDefaultName;
    QList<BWAlbumPtr> albums;
    QList<QUrl> validPaths;
    QList<QUrl> knownPaths; ///< the list as it was last read or stored
    int selected = -1;
    ChangeCallback onAlbumsChanged;
    ChangeCallback onContentsChanged;
    BWTrash trash;
    BWWorkerPool disks{1, std::chrono::milliseconds(0)}; // at the end nobody needs their answers
    BWAlbumIntake intake; // last, so that it ends first
};

/// The folders that are stored now, whether they exist or not.
QList<QUrl> BWAlbumManager::Private::readList(bool *damaged) const
{
    const QString text = defaults.string(albumsKey);
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (damaged)
        *damaged = !text.isNull() && !document.isArray();
    QList<QUrl> folders;
    const QJsonArray paths = document.array();
    for (const QJsonValue &value : paths) {
        if (const QString path = value.toString(); path.startsWith(u'/'))
            folders.append(BWFilePath::url(QFile::encodeName(path)));
    }
    return folders;
}

/// Reads the stored list. If there is none the base folder is to be searched.
Question BWAlbumManager::Private::load()
{
    Question question{basePath(), pathForName(defaultName()), {}, false};
    if (importedAlbums) {
        defaults.setString(albumsKey, {});
        validPaths = *importedAlbums;
        save();
        question.stored = validPaths;
        return question;
    }
    bool damaged = false;
    knownPaths = readList(&damaged);
    if (damaged)
        qCWarning(bwModel) << "The stored list of albums is damaged; the albums' folder is searched instead";
    question.stored = validPaths = knownPaths;
    question.scan = QJsonDocument::fromJson(defaults.string(albumsKey).toUtf8()).array().isEmpty();
    return question;
}

void BWAlbumManager::Private::take(const Question &question, const Answer &answer)
{
    isPrepared = true;
    if (!answer.failed.isEmpty()) {
        fail(answer.failed);
        notify(onAlbumsChanged);
    } else {
        takeFolders(answer.folders, question.scan);
        reload(0);
    }
    intake.release();
    for (const auto &callback : std::exchange(whenPrepared, {}))
        callback();
}

/// Makes the albums. A scan stores folders only up to the default album; those after it are shown, and found again by a
/// later scan.
void BWAlbumManager::Private::takeFolders(const QList<QUrl> &folders, bool scan)
{
    if (!importedAlbums)
        validPaths = scan ? QList<QUrl>() : folders;
    albums.clear();
    bool defaultFound = false;
    for (const QUrl &folder : folders) {
        const auto album = std::make_shared<BWAlbum>(folder, today);
        if (!defaultFound) {
            defaultFound = nameWithoutExtension(*album) == defaultName();
            album->setIsDefaultAlbum(defaultFound);
            if (scan)
                validPaths.append(folder);
        }
        albums.append(album);
    }
    if (albums.isEmpty())
        addDefaultAlbum();
}

/// Captures must always have somewhere to go, even when every remembered folder has vanished. Its folder exists.
void BWAlbumManager::Private::addDefaultAlbum()
{
    const QUrl folder = pathForName(defaultName());
    albums.append(std::make_shared<BWAlbum>(folder, today));
    albums.first()->setIsDefaultAlbum(true);
    if (!validPaths.contains(folder))
        validPaths.append(folder);
}

/// Stores the list, together with what another program has added to it or taken off it since it was read.
void BWAlbumManager::Private::save()
{
    defaults.synchronize();
    const QList<QUrl> stored = defaults.string(albumsKey).isNull() ? validPaths : readList();
    QList<QUrl> folders;
    for (const QUrl &folder : stored) {
        if (validPaths.contains(folder) || !knownPaths.contains(folder))
            folders.append(folder);
    }
    for (const QUrl &folder : std::as_const(validPaths)) {
        if (!folders.contains(folder) && !knownPaths.contains(folder))
            folders.append(folder);
    }
    knownPaths = validPaths;
    QJsonArray paths;
    for (const QUrl &folder : std::as_const(folders))
        paths.append(folder.toLocalFile());
    defaults.setString(albumsKey, QString::fromUtf8(QJsonDocument(paths).toJson(QJsonDocument::Compact)));
    defaults.synchronize();
}

void BWAlbumManager::Private::reload(int index)
{
    selected = albums.isEmpty() ? -1 : index;
    notify(onAlbumsChanged);
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
    if (BWAlbum::isName(name))
        d->oldDefaultName = name;
    else
        qCWarning(bwModel).noquote() << "The default album cannot be called" << name << "- it is called"
                                     << d->defaultName();
}

void BWAlbumManager::prepare()
{
    const Question question = d->load();
    d->take(question, ask(question));
}

void BWAlbumManager::prepareInBackground()
{
    d->intake.hold();
    d->disks.run([this, question = d->load(), alive = d->intake.alive()] {
        BWMainQueue::post(alive, [this, question, answer = ask(question)] { d->take(question, answer); });
    });
}

bool BWAlbumManager::isPrepared() const
{
    return d->isPrepared;
}

void BWAlbumManager::whenPrepared(std::function<void()> callback)
{
    if (d->isPrepared)
        callback();
    else
        d->whenPrepared.push_back(std::move(callback));
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
    Private::notify(d->onContentsChanged);
}

BWAlbumPtr BWAlbumManager::currentAlbum() const
{
    return d->currentAlbum();
}

BWAlbumPtr BWAlbumManager::albumOfFile(const QUrl &file) const
{
    const QUrl folder = BWFilePath::normalized(file.adjusted(QUrl::RemoveFilename));
    const auto found = std::find_if(d->albums.cbegin(), d->albums.cend(),
                                    [&folder](const BWAlbumPtr &album) { return album->path() == folder; });
    return found != d->albums.cend() ? *found : nullptr;
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
        Private::notify(d->onContentsChanged);
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
        Private::notify(d->onContentsChanged);
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

void BWAlbumManager::waitUntilPrepared()
{
    QEventLoop loop;
    whenPrepared([&loop] { loop.quit(); });
    if (!d->isPrepared)
        loop.exec();
}

BWAlbumManager::FolderProblem BWAlbumManager::makeAlbumFolder(const QUrl &folder)
{
    if (!BWAlbum::isName(QFile::decodeName(BWFilePath::lastComponent(folder))))
        return FolderProblem::Name;
    std::error_code error;
    std::filesystem::create_directories(BWFilePath::native(folder).toStdString(), error);
    if (BWFilePath::isFolder(folder))
        return FolderProblem::None;
    if (BWFilePath::exists(folder))
        return FolderProblem::Taken;
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted
        || error == std::errc::read_only_file_system)
        return FolderProblem::NotAllowed;
    qCWarning(bwModel).noquote() << "Cannot make" << folder.toDisplayString() << "-"
                                 << QString::fromStdString(error.message());
    return FolderProblem::Failed;
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
    if (d->albums.isEmpty() && makeFolder(d->pathForName(d->defaultName())))
        d->addDefaultAlbum();
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
