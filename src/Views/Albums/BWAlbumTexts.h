// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbum.h"
#include "Model/Export/BWExportResult.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Albums/BWMovieDialogs.h"

#include <QMap>
#include <QString>

/// The texts of the album window's alerts, panels, notices and summary, and of its grids for screen readers.
struct BWAlbumTexts : public BWLocalizationManagerDelegate {
    struct Alert {
        QString title;
        QString message;
    };
    /// One text for a single file, one for several.
    struct Counted {
        Alert single;
        Alert multiple;

        const Alert &of(qsizetype count) const { return count == 1 ? single : multiple; }
    };

    void localizeWithManager(BWLocalizationManager &manager) override;

    const Counted &saving(BWMediaType type) const { return type == BWMediaType::Image ? saveImages : saveVideos; }
    const Counted &trashing(BWMediaType type) const { return type == BWMediaType::Image ? trashImages : trashVideos; }

    QString defaultAlbumDisplayName;
    Counted saveImages;
    Counted saveVideos;
    QString errorSavingTitle;
    QMap<BWExportResult::Problem, QString> errorSaving; ///< all but None
    Counted errorOpening; ///< messages with %1
    Counted trashImages;
    Counted trashVideos;
    QString trashOk;
    QString trashCancel;
    Alert selectAlbum;
    QString folderNotMade; ///< title; the messages that follow have %1
    QString folderName;
    QString folderTaken;
    QString folderNotAllowed;
    QString folderFailed;
    Alert cannotDeleteDefault;
    Alert deleteAlbum;
    // Names of elements for screen readers.
    QString imageWord;
    QString videoWord;
    // Below the grids.
    QString total; ///< with %1
    QString selected; ///< with %1 and %2
    QString savingProgress; ///< with %1
    QString saved; ///< with %1
    QString leftArchive; ///< with %1
    QString movedToTrash; ///< with %1
    QString stayedOutOfTrash; ///< with %1
    QString broughtBack; ///< with %1
    QString notBroughtBack; ///< with %1
    Alert openMany; ///< title with %1
    // What is done with files elsewhere, too.
    QString copied; ///< with %1
    QString pictureCopied;
    QString noPictureToCopy;
    QString renameTitle;
    QString renameCapture;
    QString renameOther;
    QString renameAddition;
    QString renameName;
    QString renameButton;
    QString renameSign;
    QString renameHidden;
    QString renamed; ///< with %1
    QString moveTitle;
    QString moving; ///< with %1
    QString movingBack;
    QString movedTo; ///< with %1, the album, and %2
    QString movedBack; ///< with %1
    QString notMoved;
    QString noOtherAlbum;
    BWMovieTexts movies;
    // In an empty grid.
    QString noImages;
    QString noVideos;
    QString notAnswering;
    QString unavailable;

private:
    void localizeErrors(BWLocalizationManager &manager);
    void localizeFiles(BWLocalizationManager &manager);
};
