// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbumIntake.h"
#include "Model/Albums/BWFileMoves.h"
#include "Model/Albums/BWTrash.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <optional>
#include <QString>
#include <vector>

class BWUserDefaults;

/// The list of albums, which of them is current, and the place where new captures come in. Whoever shows
/// them listens for changes. GUI thread only, except addFile() and removeFile().
class BWAlbumManager {
public:
    using ChangeCallback = std::function<void()>;
    using AddCompletion = BWAlbumIntake::Completion;
    using AddProgress = BWAlbumIntake::Progress;

    /// `home` is the folder that holds the albums' base folder. The store must outlive the manager. At its end the manager
    /// finishes the requested copies without calling their completions.
    BWAlbumManager(BWUserDefaults &defaults, QString home, BWAlbum::Today today = {});
    BWAlbumManager(const BWAlbumManager &) = delete;
    BWAlbumManager &operator=(const BWAlbumManager &) = delete;

    /// Before prepare(): folders that replace the stored list once, and the default album's name instead of
    /// "Default Album", if it can be an album's name.
    void setImportOldAlbums(const QList<QUrl> &folders);
    void setOldDefaultAlbumName(const QString &name);

    /// Once, at start: reads the list, makes the folders that must exist and selects the first album. Waits for the
    /// disks, but not for long.
    void prepare();
    /// The same without waiting: there are no albums until isPrepared(), which counts as a change of the list. Captures
    /// that come earlier are added then.
    void prepareInBackground();
    bool isPrepared() const { return m_isPrepared; }
    /// Calls back once it is prepared; immediately if it is already.
    void whenPrepared(std::function<void()> callback);
    /// Runs an event loop until then.
    void waitUntilPrepared();
    /// The folders or the list could not be prepared. Stays set.
    bool faulty() const { return m_faulty; }

    /// The folder that holds the albums; each call makes it if it is missing.
    QUrl albumsBasePath() const;
    QUrl pathForAlbumName(const QString &name) const;
    /// Where an album named "Default Album" lies.
    QUrl defaultAlbumBasePath() const;

    const QList<BWAlbumPtr> &albums() const { return m_albums; }
    /// The folders that are remembered from one start to the next.
    const QList<QUrl> &validAlbumPaths() const { return m_validPaths; }
    /// Position of the current album in albums(); -1 without albums.
    int selectedIndex() const { return m_selected; }
    /// The user picked another album. Reports changed contents; an index out of range changes nothing.
    void setSelectedIndex(int index);
    BWAlbumPtr currentAlbum() const { return m_albums.value(m_selected); }
    /// The album in whose folder the file lies; null if there is none.
    BWAlbumPtr albumOfFile(const QUrl &file) const;

    /// Takes a finished capture into the album that is current when the GUI thread gets to it, and reports changed contents;
    /// or into `album`, which whoever shows it watches. Then calls the completion. Any thread; returns at once; in order.
    void addFile(const QUrl &file, BWMediaType type, AddCompletion completion = {}, AddProgress progress = {},
                 const BWAlbumPtr &album = {})
    {
        m_intake.add(file, type, std::move(completion), std::move(progress), album);
    }
    /// Moves a file of the current album to the Trash, then reports changed contents. Returns at once; any thread.
    void removeFile(const QUrl &file, BWMediaType type);
    /// Moves files of the current album to the Trash in the background; reports changed contents, then calls `finished`.
    void removeFiles(const QList<QUrl> &files, std::function<void(const BWTrash::Moved &result)> finished);
    /// Whether there are files to put back: those of the last move to the Trash.
    bool canUndoRemoving() const { return m_trash.canUndo(); }
    /// Puts them back, then reports changed contents, then calls `finished`. Once only.
    void undoRemoving(std::function<void(const BWTrash::Restored &result)> finished);
    /// Gives files other names and other albums; reports changed contents.
    BWFileMoves &moves() { return m_moves; }
    /// Calls `done` once all captures are added or have failed; while the last completion runs, at once. For the end.
    void whenAdded(std::function<void()> done) { m_intake.whenDone(std::move(done)); }
    /// Ends all copies without calling their completions; the captures stay where they are.
    void abandonAdding() { m_intake.abandon(); }

    enum class FolderProblem {
        None,
        Name, ///< no album can have that name
        Taken, ///< by a file
        NotAllowed,
        Failed, ///< anything else; logged
    };
    /// Makes a folder for a new album, and those above it, if they are missing.
    static FolderProblem makeAlbumFolder(const QUrl &folder);

    /// Adds a folder as the last album, selects it and stores the list. Does nothing for one that is remembered already.
    void addAlbumFromPath(const QUrl &folder);

    /// Adds folders as the last albums and stores the list; the current album stays current. Returns how many were new.
    int addAlbumsFromPaths(const QList<QUrl> &folders);

    /// False for the default album, and without an album.
    bool canRemoveCurrentAlbum() const;
    /// If canRemoveCurrentAlbum(): takes it off the list (its folder stays), selects the first and stores the list.
    void removeCurrentAlbum();

    /// Calls back while `listener` lives: `albumsChanged` when the list or the selection changed (a new list shows a new
    /// current album, too), `contentsChanged` when another album is current, or files came into it or left it.
    void addListener(const BWAliveToken &listener, ChangeCallback albumsChanged, ChangeCallback contentsChanged);

private:
    struct Listener {
        std::weak_ptr<void> alive;
        ChangeCallback albumsChanged;
        ChangeCallback contentsChanged;
    };
    struct Question;
    struct Answer;
    static Answer ask(const Question &question);
    void notify(ChangeCallback Listener::*what) const;
    QUrl basePath() const;
    QString defaultName() const;
    Question load();
    void take(const Question &question, const Answer &answer);
    void takeFolders(const QList<QUrl> &folders, bool scan);
    void addDefaultAlbum();
    QList<QUrl> readList(bool *damaged = nullptr) const;
    void save();
    void reload(int index);

    BWUserDefaults &m_defaults;
    const QString m_home;
    const BWAlbum::Today m_today;
    bool m_faulty = false;
    bool m_isPrepared = false;
    std::vector<std::function<void()>> m_whenPrepared;
    std::optional<QList<QUrl>> m_importedAlbums;
    QString m_oldDefaultName;
    QList<BWAlbumPtr> m_albums;
    QList<QUrl> m_validPaths;
    QList<QUrl> m_knownPaths; // the list as it was last read or stored
    int m_selected = -1;
    std::vector<Listener> m_listeners;
    BWTrash m_trash;
    BWFileMoves m_moves;
    BWWorkerPool m_disks{1, std::chrono::milliseconds(0)}; // at the end nobody needs their answers
    BWAlbumIntake m_intake; // last, so that it ends first
};
