#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Model/Albums/BWTrash.h"

#include <functional>
#include <memory>
#include <QList>
#include <QString>
#include <QUrl>

class BWUserDefaults;

/// The list of albums, which of them is current, and the place where new captures come in. Its window watches it
/// through the two callbacks. GUI thread only, except addFile() and removeFile().
class BWAlbumManager {
public:
    using ChangeCallback = std::function<void()>;
    /// Called on the GUI thread: whether the file is in the album, and where.
    using AddCompletion = std::function<void(bool added, const QUrl &file)>;
    /// How much of a file is copied, from 0 to 1. Called on the GUI thread, for long copies only.
    using AddProgress = std::function<void(double done)>;

    /// `home` is the folder that holds the albums' base folder. The store must outlive the manager.
    BWAlbumManager(BWUserDefaults &defaults, QString home, BWAlbum::Today today = {});
    /// Finishes the requested copies without calling their completions.
    ~BWAlbumManager();
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
    bool isPrepared() const;
    /// Calls back once it is prepared; immediately if it is already.
    void whenPrepared(std::function<void()> callback);
    /// Runs an event loop until then.
    void waitUntilPrepared();
    /// The folders or the list could not be prepared. Stays set.
    bool faulty() const;

    /// The folder that holds the albums; each call makes it if it is missing.
    QUrl albumsBasePath() const;
    QUrl pathForAlbumName(const QString &name) const;
    /// Where an album named "Default Album" lies.
    QUrl defaultAlbumBasePath() const;

    const QList<BWAlbumPtr> &albums() const;
    /// The folders that are remembered from one start to the next.
    const QList<QUrl> &validAlbumPaths() const;

    /// Position of the current album in albums(); -1 without albums.
    int selectedIndex() const;
    /// The user picked another album. Reports changed contents; an index out of range changes nothing.
    void setSelectedIndex(int index);
    BWAlbumPtr currentAlbum() const;
    /// The album in whose folder the file lies; null if there is none.
    BWAlbumPtr albumOfFile(const QUrl &file) const;

    /// Takes a finished capture into the album that is current when the GUI thread gets to it; then reports changed
    /// contents, then calls the completion. Returns at once; any thread. Captures are added one after the other, in
    /// order, and copied without holding up the GUI thread.
    void addFile(const QUrl &file, BWMediaType type, AddCompletion completion = {}, AddProgress progress = {});
    /// Moves a file of the current album to the Trash, then reports changed contents. Returns at once; any thread.
    void removeFile(const QUrl &file, BWMediaType type);
    /// Moves files of the current album to the Trash without holding up the GUI thread; then reports changed contents,
    /// then calls `finished`.
    void removeFiles(const QList<QUrl> &files, std::function<void(const BWTrash::Moved &result)> finished);
    /// Whether there are files to put back: those of the last move to the Trash.
    bool canUndoRemoving() const;
    /// Puts them back, then reports changed contents, then calls `finished`. Once only.
    void undoRemoving(std::function<void(const BWTrash::Restored &result)> finished);
    /// Calls `done` once all captures are added or have failed; while the last completion runs, at once. For the
    /// program's end.
    void whenAdded(std::function<void()> done);
    /// Ends all copies without calling their completions; the captures stay where they are.
    void abandonAdding();

    enum class FolderProblem {
        None,
        Name, ///< no album can have that name
        Taken, ///< by a file
        NotAllowed,
        Failed, ///< anything else; logged
    };
    /// Makes a folder for a new album, and those above it, if they are missing.
    static FolderProblem makeAlbumFolder(const QUrl &folder);

    /// Adds a folder as the last album, selects it and stores the list. Does nothing for a folder that is remembered
    /// already.
    void addAlbumFromPath(const QUrl &folder);

    /// Adds folders as the last albums and stores the list; the current album stays current. Returns how many were new.
    int addAlbumsFromPaths(const QList<QUrl> &folders);

    /// False for the default album, and without an album.
    bool canRemoveCurrentAlbum() const;
    /// Takes the current album off the list (its folder stays), selects the first and stores the list. Does nothing
    /// unless canRemoveCurrentAlbum().
    void removeCurrentAlbum();

    /// The list or the selection changed (a new list shows a new current album, too).
    void setOnAlbumsChanged(ChangeCallback callback);
    /// Another album is current, or files came into it or left it.
    void setOnAlbumContentsChanged(ChangeCallback callback);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
