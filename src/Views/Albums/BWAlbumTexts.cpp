// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWAlbumTexts.h"

#include "Model/Texts/BWLocalizationManager.h"

using namespace Qt::StringLiterals;

void BWAlbumTexts::localizeWithManager(BWLocalizationManager &manager)
{
    movies.localizeWithManager(manager);
    defaultAlbumDisplayName = manager.text(u"album_manager"_s, u"default_album_name"_s, u"Default Album"_s);
    saveImages.single.title =
        manager.text(u"album_manager"_s, u"single_image_save_title"_s, u"Saving image as JPG file"_s);
    saveImages.single.message = manager.text(u"album_manager"_s, u"single_image_save_message"_s,
                                             u"Please select where to save a JPG file with your selected image"_s);
    saveVideos.single.title =
        manager.text(u"album_manager"_s, u"single_video_save_title"_s, u"Saving video as MOV file"_s);
    saveVideos.single.message = manager.text(u"album_manager"_s, u"single_video_save_message"_s,
                                             u"Please select where to save a MOV file with your selected video"_s);
    saveImages.multiple.title =
        manager.text(u"album_manager"_s, u"multiple_images_save_title"_s, u"Saving images as ZIP file"_s);
    saveImages.multiple.message = manager.text(u"album_manager"_s, u"multiple_images_save_message"_s,
                                               u"Please select where to save a ZIP file with your selected images"_s);
    saveVideos.multiple.title =
        manager.text(u"album_manager"_s, u"multiple_videos_save_title"_s, u"Saving videos as ZIP file"_s);
    saveVideos.multiple.message = manager.text(u"album_manager"_s, u"multiple_videos_save_message"_s,
                                               u"Please select where to save a ZIP file with your selected videos"_s);
    errorSavingTitle = manager.text(u"album_manager"_s, u"error_saving_title"_s, u"Error while saving"_s);
    localizeErrors(manager);
    localizeFiles(manager);
    trashImages.single.title =
        manager.text(u"album_manager"_s, u"trash_single_image_title"_s, u"Move image to the Trash"_s);
    trashImages.single.message = manager.text(u"album_manager"_s, u"trash_single_image_message"_s,
                                              u"Are you sure you want to move this image to the Trash?"_s);
    trashVideos.single.title =
        manager.text(u"album_manager"_s, u"trash_single_video_title"_s, u"Move video to the Trash"_s);
    trashVideos.single.message = manager.text(u"album_manager"_s, u"trash_single_video_message"_s,
                                              u"Are you sure you want to move this video to the Trash?"_s);
    trashImages.multiple.title =
        manager.text(u"album_manager"_s, u"trash_multiple_images_title"_s, u"Move selected images to the Trash"_s);
    trashImages.multiple.message = manager.text(u"album_manager"_s, u"trash_multiple_images_message"_s,
                                                u"Are you sure you want to move the selected images to the Trash?"_s);
    trashVideos.multiple.title =
        manager.text(u"album_manager"_s, u"trash_multiple_videos_title"_s, u"Move selected videos to the Trash"_s);
    trashVideos.multiple.message = manager.text(u"album_manager"_s, u"trash_multiple_videos_message"_s,
                                                u"Are you sure you want to move the selected videos to the Trash?"_s);
    trashOk = manager.text(u"album_manager"_s, u"trash_ok"_s, u"OK"_s);
    trashCancel = manager.text(u"album_manager"_s, u"trash_cancel"_s, u"Cancel"_s);
    selectAlbum.title = manager.text(u"album_manager"_s, u"select_album_title"_s, u"Select directory for album"_s);
    selectAlbum.message =
        manager.text(u"album_manager"_s, u"select_album_message"_s, u"Please select a directory for the new album"_s);
    folderNotMade = manager.text(u"album_manager"_s, u"folder_not_made_title"_s, u"The folder could not be created"_s);
    folderName =
        manager.text(u"album_manager"_s, u"folder_name_message"_s,
                     u"An album cannot be called “%1”. Please choose a shorter name, or one that does not begin "
                     "with a dot."_s);
    folderTaken = manager.text(u"album_manager"_s, u"folder_taken_message"_s,
                               u"There is already a file called “%1”. Please choose another name."_s);
    folderNotAllowed = manager.text(u"album_manager"_s, u"folder_not_allowed_message"_s,
                                    u"You do not have permission to create “%1” there. Please choose another place."_s);
    folderFailed = manager.text(u"album_manager"_s, u"folder_failed_message"_s,
                                u"“%1” cannot be created there. Please choose another place."_s);
    cannotDeleteDefault.title =
        manager.text(u"album_manager"_s, u"cannot_delete_default_title"_s, u"Cannot delete default album"_s);
    cannotDeleteDefault.message =
        manager.text(u"album_manager"_s, u"cannot_delete_default_message"_s, u"You cannot delete the default album"_s);
    deleteAlbum.title = manager.text(u"album_manager"_s, u"delete_album_title"_s, u"Delete album"_s);
    deleteAlbum.message = manager.text(u"album_manager"_s, u"delete_album_message"_s,
                                       u"Are you sure you want to delete the current album? Its contents will still "
                                       "be available in the file manager"_s);

    imageWord = manager.text(u"album_manager"_s, u"image_word"_s, u"image"_s);
    videoWord = manager.text(u"album_manager"_s, u"video_word"_s, u"video"_s);
    total = manager.text(u"album_manager"_s, u"total_label"_s, u"Total: %1"_s);
    selected = manager.text(u"album_manager"_s, u"selected_label"_s, u"Selected: %1 of %2"_s);
    savingProgress = manager.text(u"album_manager"_s, u"saving_progress"_s, u"Saving: %1"_s);
    saved = manager.text(u"album_manager"_s, u"saved_notice"_s, u"Saved: %1"_s);
    leftArchive = manager.text(u"album_manager"_s, u"left_archive_message"_s, u"The incomplete archive is here:\n%1"_s);
    movedToTrash = manager.text(u"album_manager"_s, u"moved_to_trash_notice"_s, u"Moved to the Trash: %1"_s);
    stayedOutOfTrash =
        manager.text(u"album_manager"_s, u"not_moved_to_trash_notice"_s, u"Could not be moved to the Trash: %1"_s);
    broughtBack = manager.text(u"album_manager"_s, u"brought_back_notice"_s, u"Back from the Trash: %1"_s);
    notBroughtBack = manager.text(u"album_manager"_s, u"not_brought_back_notice"_s, u"Could not be brought back: %1"_s);
    openMany.title = manager.text(u"album_manager"_s, u"open_many_title"_s, u"Open %1 files?"_s);
    openMany.message = manager.text(u"album_manager"_s, u"open_many_message"_s,
                                    u"Each of them is opened by the program for such files."_s);
    noImages = manager.text(u"album_manager"_s, u"no_images_notice"_s,
                            u"No images yet. Take a snapshot, and it appears here."_s);
    noVideos =
        manager.text(u"album_manager"_s, u"no_videos_notice"_s, u"No videos yet. Record one, and it appears here."_s);
    notAnswering = manager.text(u"album_manager"_s, u"folder_not_answering_notice"_s,
                                u"Waiting for the album’s folder, which does not answer."_s);
    unavailable = manager.text(u"album_manager"_s, u"folder_unavailable_notice"_s,
                               u"The album’s folder cannot be read. It may have been moved, renamed or removed."_s);
}

void BWAlbumTexts::localizeFiles(BWLocalizationManager &manager)
{
    copied = manager.text(u"album_manager"_s, u"copied_notice"_s, u"Copied: %1"_s);
    pictureCopied = manager.text(u"album_manager"_s, u"picture_copied_notice"_s, u"The picture is copied"_s);
    noPictureToCopy =
        manager.text(u"album_manager"_s, u"no_picture_to_copy_notice"_s, u"There is no picture to copy."_s);
    renameTitle = manager.text(u"album_manager"_s, u"rename_title"_s, u"Rename"_s);
    renameCapture = manager.text(u"album_manager"_s, u"rename_capture_message"_s,
                                 u"The date and the number stay. What you enter is added to them."_s);
    renameOther = manager.text(u"album_manager"_s, u"rename_other_message"_s, u"Enter a name for the file."_s);
    renameAddition = manager.text(u"album_manager"_s, u"rename_addition_field"_s, u"Addition to the name"_s);
    renameName = manager.text(u"album_manager"_s, u"rename_name_field"_s, u"Name"_s);
    renameButton = manager.text(u"album_manager"_s, u"rename_button"_s, u"Rename"_s);
    renameSign = manager.text(u"album_manager"_s, u"rename_sign_problem"_s,
                              u"A name can contain neither “/” nor invisible characters."_s);
    renameHidden = manager.text(u"album_manager"_s, u"rename_hidden_problem"_s,
                                u"The file would be hidden. Please choose a name that does not begin with a dot."_s);
    renamed = manager.text(u"album_manager"_s, u"renamed_notice"_s, u"Renamed: %1"_s);
    moveTitle = manager.text(u"album_manager"_s, u"move_title"_s, u"Move to album"_s);
    moving = manager.text(u"album_manager"_s, u"moving_progress"_s, u"Moving to the album “%1”"_s);
    movingBack = manager.text(u"album_manager"_s, u"moving_back_progress"_s, u"Moving back to where it was"_s);
    movedTo = manager.text(u"album_manager"_s, u"moved_notice"_s, u"Moved to the album “%1”: %2"_s);
    movedBack = manager.text(u"album_manager"_s, u"moved_back_notice"_s, u"Undone: %1"_s);
    notMoved = manager.text(u"album_manager"_s, u"not_moved_title"_s, u"Not everything could be moved"_s);
    noOtherAlbum = manager.text(u"album_manager"_s, u"no_other_album"_s, u"There is no other album"_s);
}

void BWAlbumTexts::localizeErrors(BWLocalizationManager &manager)
{
    using Problem = BWExportResult::Problem;
    errorSaving = {
        {Problem::TargetNotWritable,
         manager.text(u"album_manager"_s, u"error_saving_message"_s,
                      u"Could not save file to destination. Please check that you have write permissions"_s)},
        {Problem::SourceGone,
         manager.text(u"album_manager"_s, u"save_problem_source_gone"_s,
                      u"The file is no longer in the album. It may have been moved, renamed or removed."_s)},
        {Problem::SourceUnreadable,
         manager.text(
             u"album_manager"_s, u"save_problem_source_unreadable"_s,
             u"The file in the album cannot be read. Please check that you have permission to read it, and that its "
             "disk works."_s)},
        {Problem::SourceChanged,
         manager.text(u"album_manager"_s, u"save_problem_source_changed"_s,
                      u"Another program changed the file while it was being saved. Please try again."_s)},
        {Problem::TargetIsSource,
         manager.text(u"album_manager"_s, u"save_problem_target_is_source"_s,
                      u"This is one of the files that are to be saved. Please choose another name or folder."_s)},
        {Problem::TargetFolderMissing,
         manager.text(u"album_manager"_s, u"save_problem_folder_missing"_s,
                      u"The folder does not exist. Please choose another one."_s)},
        {Problem::TargetIsFolder,
         manager.text(u"album_manager"_s, u"save_problem_name_of_folder"_s,
                      u"A folder already has this name. Please choose another name."_s)},
        {Problem::TargetReadOnly,
         manager.text(u"album_manager"_s, u"save_problem_read_only"_s,
                      u"This disk can only be read. Please choose another place."_s)},
        {Problem::TargetFull,
         manager.text(u"album_manager"_s, u"save_problem_disk_full"_s,
                      u"There is not enough free space on the disk. Please make room, or choose another place."_s)},
        {Problem::TargetTooLarge,
         manager.text(u"album_manager"_s, u"save_problem_too_large"_s,
                      u"This disk cannot hold a file that large, however much space is free. Please choose another "
                      "place."_s)},
        {Problem::TargetFailed,
         manager.text(u"album_manager"_s, u"save_problem_disk_failed"_s,
                      u"The disk reported a fault. It may have been disconnected."_s)},
        {Problem::NameTooLong,
         manager.text(u"album_manager"_s, u"save_problem_name_too_long"_s,
                      u"The name is too long. Please choose a shorter one."_s)},
        {Problem::NameNotAllowed,
         manager.text(u"album_manager"_s, u"save_problem_name_not_allowed"_s,
                      u"This disk does not allow the name. Please use letters, digits and spaces only."_s)},
        {Problem::NameTaken,
         manager.text(u"album_manager"_s, u"save_problem_name_taken"_s,
                      u"There is already a file of this name. Please choose another one."_s)},
        {Problem::NotSaved,
         manager.text(u"album_manager"_s, u"save_problem_not_saved"_s,
                      u"What you measured in the picture could not be saved in its file yet, and would get lost."_s)},
        {Problem::NoEncoder,
         manager.text(u"album_manager"_s, u"save_problem_no_encoder"_s,
                      u"This computer cannot write such movies: its FFmpeg libraries lack the encoder."_s)},
        {Problem::NoPictures,
         manager.text(u"album_manager"_s, u"save_problem_no_pictures"_s,
                      u"There is no picture that can be read. The file is damaged, or of another kind."_s)},
        {Problem::Other,
         manager.text(u"album_manager"_s, u"save_problem_other"_s,
                      u"The file could not be saved, for an unexpected reason. Please choose another place."_s)},
    };
    errorOpening.single.title = manager.text(u"album_manager"_s, u"open_error_title"_s, u"Error while opening"_s);
    errorOpening.single.message = manager.text(u"album_manager"_s, u"open_single_error_message"_s,
                                               u"No program was found that can open this file:\n%1"_s);
    errorOpening.multiple.title = errorOpening.single.title;
    errorOpening.multiple.message =
        manager.text(u"album_manager"_s, u"open_multiple_error_message"_s,
                     u"No program was found that can open these files. Number of files: %1"_s);
}
