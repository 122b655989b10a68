// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <QString>
#include <QStringList>
#include <QUrl>

class QWidget;

/// Asks the user for files and folders, in panels over a window. An interface, so that a test can answer. GUI thread.
class BWFilePanels {
public:
    struct Save {
        QString title;
        QString message;
        QString extension; ///< the type of file that is saved, such as "jpg"
        QUrl folder; ///< where the panel starts
        QString name; ///< suggested, with its extension
        QString otherExtension{}; ///< a second one, which the user can choose or type; null for none
    };
    struct Folder {
        QString title;
        QString message;
        QUrl folder; ///< where the panel starts
        /// Makes the folder that was typed. If it cannot, it tells the user why and returns false.
        std::function<bool(const QUrl &folder)> make;
    };
    struct File {
        QString title;
        QString message;
        QString types; ///< the filter's name
        QStringList patterns; ///< its file names, such as "*.jpg"
        QString allFiles; ///< the name of the filter that shows all files
        QUrl folder; ///< where the panel starts
    };
    /// Called only when the user confirms.
    using Chosen = std::function<void(const QUrl &place)>;

    virtual ~BWFilePanels() = default;

    /// A file to write, with its extension; the user has agreed to replace an existing one. No folders can be made.
    /// Returns at once.
    virtual void save(QWidget *window, const Save &panel, Chosen chosen) = 0;
    /// An existing file to read. Returns at once.
    virtual void chooseFile(QWidget *window, const File &panel, Chosen chosen) = 0;
    /// An existing folder, or a new one, which is made. Returns at once.
    virtual void chooseFolder(QWidget *window, const Folder &panel, Chosen chosen) = 0;
};

/// The panels as file dialogs, each of which blocks its window.
class BWDialogFilePanels : public BWFilePanels {
public:
    /// The path with that extension: unchanged if it has it, in upper or lower case; otherwise the extension replaces
    /// that of another kind of picture, movie or archive, or is added.
    static QString withExtension(const QString &path, const QString &extension);

    void save(QWidget *window, const Save &panel, Chosen chosen) override;
    void chooseFile(QWidget *window, const File &panel, Chosen chosen) override;
    void chooseFolder(QWidget *window, const Folder &panel, Chosen chosen) override;
};
