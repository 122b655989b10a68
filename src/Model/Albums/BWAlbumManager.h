#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Model/Albums/BWTrash.h"

#include <functional>
#include <memory>
#include <QList>
#include <QString>
#include <QUrl>

class BWUserDefaults;

/// The list of albums, which of them is current, and the way in for new captures. The window that shows it asks here
/// and watches through the two callbacks. GUI thread only, except addFile() and removeFile().
class BWAlbumManager {
public:
    using ChangeCallback = std::function<void()>;
    /// Told on the GUI thread: whether the file is in the album, and where.
    using AddCompletion = std::function<void(bool added, const QUrl &file)>;
    /// How much of a file is copied, from 0 to 1. Told on the GUI thread, only of copies that take long.
    using AddProgress = std::function<void(double done)>;

    /// `home` is the folder that holds the albums' base folder. The store must outlive the manager.
    BWAlbumManager(BWUserDefaults &defaults, QString home, BWAlbum::Today today = {});
    /// Finishes the copies that were asked for, without calling their completions.
    ~BWAlbumManager();
    BWAlbumManager(const BWAlbumManager &) = delete;
    BWAlbumManager &operator=(const BWAlbumManager &) = delete;

    /// Before prepare(): folders that replace the stored list once, and the default album's name instead of
    /// "Default Album", unless that is no name for an album.
    void setImportOldAlbums(const QList<QUrl> &folders);
    void setOldDefaultAlbumName(const QString &name);

    /// Once, at start: reads the list, makes the folders that must be there and selects the first album. Waits for the
    /// disks, but not for long.
    void prepare();
    /// The same without waiting: there are no albums until isPrepared(), which is told as a change of the list. Captures
    /// that come before are added then.
    void prepareInBackground();
    bool isPrepared() const;
    /// Calls back once it is prepared, at once if it is.
    void whenPrepared(std::function<void()> callback);
    /// Runs an event loop until then.
    void waitUntilPrepared();
    /// The folders or the list could not be prepared. Stays set.
    bool faulty() const;

    /// The folder that holds the albums; made each time it is asked for.
    QUrl albumsBasePath() const;
    QUrl pathForAlbumName(const QString &name) const;
    /// Where an album named "Default Album" lies.
    QUrl defaultAlbumBasePath() const;

    const QList<BWAlbumPtr> &albums() const;
    /// The folders that are remembered from one start to the next.
    const QList<QUrl> &validAlbumPaths() const;

    /// Position of the current album in albums(); -1 without albums.
    int selectedIndex() const;
    /// The user picked another album. Tells that the contents changed; out of range changes nothing.
    void setSelectedIndex(int index);
    BWAlbumPtr currentAlbum() const;
    /// The album in whose folder the file lies; null if there is none.
    BWAlbumPtr albumOfFile(const QUrl &file) const;

    /// Takes a finished capture into the album that is current when the GUI thread gets to it; then tells that the
    /// contents changed, then calls the completion. Returns at once; any thread. Captures are added one after the
    /// other, in order, and the copying does not hold up the GUI thread.
    void addFile(const QUrl &file, BWMediaType type, AddCompletion completion = {}, AddProgress progress = {});
    /// Moves a file of the current album to the Trash, then tells that the contents changed. Returns at once; any
    /// thread.
    void removeFile(const QUrl &file, BWMediaType type);
    /// Moves files of the current album to the Trash, which does not hold up the GUI thread; then tells that the
    /// contents changed, then calls `finished`.
    void removeFiles(const QList<QUrl> &files, std::function<void(const BWTrash::Moved &result)> finished);
    /// Whether there are files to bring back: those that were moved to the Trash the last time.
    bool canUndoRemoving() const;
    /// Brings them back, then tells that the contents changed, then calls `finished`. Once only.
    void undoRemoving(std::function<void(const BWTrash::Restored &result)> finished);
    /// Calls `done` once everything handed in is added or has failed; while the last completion runs, at once. For
    /// the program's end.
    void whenAdded(std::function<void()> done);
    /// Ends the copies that run or wait, without calling their completions; the captures stay where they are.
    void abandonAdding();

    enum class FolderProblem {
        None,
        Name, ///< no album can be called that
        Taken, ///< by a file
        NotAllowed,
        Failed, ///< anything else; it is logged
    };
    /// Makes a folder for a new album, and those above it, unless it is there already.
    static FolderProblem makeAlbumFolder(const QUrl &folder);

    /// Adds a folder as the last album, selects it and stores the list. A folder that is remembered already changes
    /// nothing.
    void addAlbumFromPath(const QUrl &folder);

    /// Adds folders as the last albums and stores the list; the current album stays the current one. How many of them
    /// were not remembered already.
    int addAlbumsFromPaths(const QList<QUrl> &folders);

    /// False for the default album, and without an album.
    bool canRemoveCurrentAlbum() const;
    /// Takes the current album off the list (its folder stays), selects the first and stores the list. Without effect
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
