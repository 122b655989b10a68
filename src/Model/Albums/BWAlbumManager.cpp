// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumManager.h"

#include "Model/Settings/BWSettingsFile.h"
#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWMainQueue.h"

#include <algorithm>
#include <filesystem>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <utility>

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

/// A folder's name up to its last dot, which may not be its first character.
QString nameWithoutExtension(const BWAlbum &album)
{
    const qsizetype dot = album.name().lastIndexOf(u'.');
    return dot > 0 ? album.name().left(dot) : album.name();
}

} // namespace

/// What is asked of the disks at the start, in the background, as they may take long to answer.
struct BWAlbumManager::Question {
    QUrl base;
    QUrl defaultFolder;
    QList<QUrl> stored;
    bool scan = false;
};

struct BWAlbumManager::Answer {
    QUrl failed; ///< the folder that could not be made or listed; empty if all is well
    QList<QUrl> folders; ///< that exist, in the order in which they are listed
};

BWAlbumManager::Answer BWAlbumManager::ask(const Question &question)
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
    return {{}, BWFilePath::foldersAmong(folders)};
}

BWAlbumManager::BWAlbumManager(BWUserDefaults &defaults, QString home, BWAlbum::Today today)
    : m_defaults(defaults),
      m_home(std::move(home)),
      m_today(std::move(today)),
      m_moves([this] { notify(&Listener::contentsChanged); }),
      m_intake([this] { return currentAlbum(); }, [this] { notify(&Listener::contentsChanged); })
{
}

/// The folders that are stored now, whether they exist or not.
QList<QUrl> BWAlbumManager::readList(bool *damaged) const
{
    const QString text = m_defaults.string(albumsKey);
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (damaged)
        *damaged = !text.isNull() && !document.isArray();
    QList<QUrl> folders;
    const QJsonArray paths = document.array();
    for (const QJsonValue value : paths) {
        if (const QString path = value.toString(); path.startsWith(u'/'))
            folders.append(BWFilePath::url(QFile::encodeName(path)));
    }
    return folders;
}

/// Reads the stored list. If there is none the base folder is to be searched.
BWAlbumManager::Question BWAlbumManager::load()
{
    Question question{basePath(), pathForAlbumName(defaultName()), {}, false};
    if (m_importedAlbums) {
        m_defaults.setString(albumsKey, {});
        m_validPaths = *m_importedAlbums;
        save();
        question.stored = m_validPaths;
        return question;
    }
    bool damaged = false;
    m_knownPaths = readList(&damaged);
    if (damaged)
        qCWarning(bwModel) << "The stored list of albums is damaged; the albums' folder is searched instead";
    question.stored = m_validPaths = m_knownPaths;
    question.scan = QJsonDocument::fromJson(m_defaults.string(albumsKey).toUtf8()).array().isEmpty();
    return question;
}

void BWAlbumManager::take(const Question &question, const Answer &answer)
{
    m_isPrepared = true;
    m_faulty = !answer.failed.isEmpty();
    if (m_faulty) {
        qCWarning(bwModel).noquote() << "Albums cannot be prepared in" << answer.failed.toDisplayString();
        notify(&Listener::albumsChanged);
    } else {
        takeFolders(answer.folders, question.scan);
        reload(0);
    }
    m_intake.release();
    for (const auto &callback : std::exchange(m_whenPrepared, {}))
        callback();
}

/// Makes the albums. A scan stores folders only up to the default album; those after it are shown, and found again by a
/// later scan.
void BWAlbumManager::takeFolders(const QList<QUrl> &folders, bool scan)
{
    if (!m_importedAlbums)
        m_validPaths = scan ? QList<QUrl>() : folders;
    m_albums.clear();
    bool defaultFound = false;
    for (const QUrl &folder : folders) {
        const auto album = std::make_shared<BWAlbum>(folder, m_today);
        if (!defaultFound) {
            defaultFound = nameWithoutExtension(*album) == defaultName();
            album->setIsDefaultAlbum(defaultFound);
            if (scan)
                m_validPaths.append(folder);
        }
        m_albums.append(album);
    }
    if (m_albums.isEmpty())
        addDefaultAlbum();
}

/// Captures must always have somewhere to go, even when every remembered folder has vanished. Its folder exists.
void BWAlbumManager::addDefaultAlbum()
{
    const QUrl folder = pathForAlbumName(defaultName());
    m_albums.append(std::make_shared<BWAlbum>(folder, m_today));
    m_albums.first()->setIsDefaultAlbum(true);
    if (!m_validPaths.contains(folder))
        m_validPaths.append(folder);
}

/// Stores the list, together with what another program has added to it or taken off it since it was read.
void BWAlbumManager::save()
{
    m_defaults.synchronize();
    const QList<QUrl> stored = m_defaults.string(albumsKey).isNull() ? m_validPaths : readList();
    QList<QUrl> folders;
    for (const QUrl &folder : stored) {
        if (m_validPaths.contains(folder) || !m_knownPaths.contains(folder))
            folders.append(folder);
    }
    for (const QUrl &folder : std::as_const(m_validPaths)) {
        if (!folders.contains(folder) && !m_knownPaths.contains(folder))
            folders.append(folder);
    }
    m_knownPaths = m_validPaths;
    QJsonArray paths;
    for (const QUrl &folder : std::as_const(folders))
        paths.append(folder.toLocalFile());
    m_defaults.setString(albumsKey, QString::fromUtf8(QJsonDocument(paths).toJson(QJsonDocument::Compact)));
    m_defaults.synchronize();
}

void BWAlbumManager::reload(int index)
{
    m_selected = m_albums.isEmpty() ? -1 : index;
    notify(&Listener::albumsChanged);
}

void BWAlbumManager::setImportOldAlbums(const QList<QUrl> &folders)
{
    m_importedAlbums.emplace();
    for (const QUrl &folder : folders)
        m_importedAlbums->append(BWFilePath::normalized(folder));
}

void BWAlbumManager::setOldDefaultAlbumName(const QString &name)
{
    if (BWAlbum::isName(name))
        m_oldDefaultName = name;
    else
        qCWarning(bwModel).noquote() << "The default album cannot be called" << name << "- it is called"
                                     << defaultName();
}

void BWAlbumManager::prepare()
{
    const Question question = load();
    take(question, ask(question));
}

void BWAlbumManager::prepareInBackground()
{
    m_intake.hold();
    m_disks.run([this, question = load(), alive = m_intake.alive()] {
        BWMainQueue::post(alive, [this, question, answer = ask(question)] { take(question, answer); });
    });
}

void BWAlbumManager::whenPrepared(std::function<void()> callback)
{
    if (m_isPrepared)
        callback();
    else
        m_whenPrepared.push_back(std::move(callback));
}

QUrl BWAlbumManager::basePath() const
{
    return BWFilePath::fromLocal(m_home + u"/BrimwellPro"_s);
}

QString BWAlbumManager::defaultName() const
{
    return m_oldDefaultName.isEmpty() ? standardDefaultName : m_oldDefaultName;
}

QUrl BWAlbumManager::pathForAlbumName(const QString &name) const
{
    return BWFilePath::entry(basePath(), QFile::encodeName(name));
}

void BWAlbumManager::addListener(const BWAliveToken &listener, ChangeCallback albumsChanged,
                                 ChangeCallback contentsChanged)
{
    std::erase_if(m_listeners, [](const Listener &other) { return other.alive.expired(); });
    m_listeners.push_back({listener.watch(), std::move(albumsChanged), std::move(contentsChanged)});
}

void BWAlbumManager::notify(ChangeCallback Listener::*what) const
{
    const std::vector<Listener> listeners = m_listeners; // one may add another
    for (const Listener &listener : listeners) {
        if (!listener.alive.expired() && listener.*what)
            (listener.*what)();
    }
}

QUrl BWAlbumManager::albumsBasePath() const
{
    makeFolder(basePath());
    return basePath();
}

QUrl BWAlbumManager::defaultAlbumBasePath() const
{
    return pathForAlbumName(standardDefaultName);
}

void BWAlbumManager::setSelectedIndex(int index)
{
    if (index < 0 || index >= m_albums.size())
        return;
    m_selected = index;
    notify(&Listener::contentsChanged);
}

BWAlbumPtr BWAlbumManager::albumOfFile(const QUrl &file) const
{
    const QUrl folder = BWFilePath::normalized(file.adjusted(QUrl::RemoveFilename));
    const auto found = std::find_if(m_albums.cbegin(), m_albums.cend(),
                                    [&folder](const BWAlbumPtr &album) { return album->path() == folder; });
    return found != m_albums.cend() ? *found : nullptr;
}

void BWAlbumManager::removeFile(const QUrl &file, BWMediaType type)
{
    Q_UNUSED(type)
    BWMainQueue::post(m_intake.alive(), [this, file] { removeFiles({file}, {}); });
}

void BWAlbumManager::removeFiles(const QList<QUrl> &files, std::function<void(const BWTrash::Moved &)> finished)
{
    m_trash.move(files, [this, finished = std::move(finished)](const BWTrash::Moved &result) {
        notify(&Listener::contentsChanged);
        if (finished)
            finished(result);
    });
}

void BWAlbumManager::undoRemoving(std::function<void(const BWTrash::Restored &)> finished)
{
    m_trash.undo([this, finished = std::move(finished)](const BWTrash::Restored &result) {
        notify(&Listener::contentsChanged);
        if (finished)
            finished(result);
    });
}

void BWAlbumManager::waitUntilPrepared()
{
    QEventLoop loop;
    whenPrepared([&loop] { loop.quit(); });
    if (!m_isPrepared)
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
    if (!path.isLocalFile() || m_validPaths.contains(path))
        return;
    // A folder that a scan found but did not store is listed once, not twice.
    m_albums.removeIf([&path](const BWAlbumPtr &album) { return album->path() == path; });
    m_albums.append(std::make_shared<BWAlbum>(path, m_today));
    m_validPaths.append(path);
    reload(static_cast<int>(m_albums.size()) - 1);
    save();
}

int BWAlbumManager::addAlbumsFromPaths(const QList<QUrl> &folders)
{
    int added = 0;
    for (const QUrl &folder : folders) {
        const QUrl path = BWFilePath::normalized(folder);
        if (!path.isLocalFile() || m_validPaths.contains(path))
            continue;
        const bool isListed = std::any_of(m_albums.cbegin(), m_albums.cend(),
                                          [&path](const BWAlbumPtr &album) { return album->path() == path; });
        if (!isListed) // a scan may have found it without storing it
            m_albums.append(std::make_shared<BWAlbum>(path, m_today));
        m_validPaths.append(path);
        ++added;
    }
    if (added > 0) {
        reload(std::max(m_selected, 0));
        save();
    }
    return added;
}

bool BWAlbumManager::canRemoveCurrentAlbum() const
{
    const BWAlbumPtr album = currentAlbum();
    return album && !album->isDefaultAlbum();
}

void BWAlbumManager::removeCurrentAlbum()
{
    if (!canRemoveCurrentAlbum())
        return;
    const BWAlbumPtr album = m_albums.takeAt(m_selected);
    m_validPaths.removeAll(album->path());
    if (m_albums.isEmpty() && makeFolder(pathForAlbumName(defaultName())))
        addDefaultAlbum();
    reload(0);
    save();
}
