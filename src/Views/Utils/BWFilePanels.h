#pragma once

#include <functional>
#include <QString>
#include <QStringList>
#include <QUrl>

class QWidget;

/// Asks the user for places on the disk, in panels over a window. A seam, so that a test can answer. GUI thread.
class BWFilePanels {
public:
    struct Save {
        QString title;
        QString message;
        QString extension; ///< the only type of file that can be saved, such as "jpg"
        QUrl folder; ///< where the panel begins
        QString name; ///< suggested, with its extension
    };
    struct Folder {
        QString title;
        QString message;
        QUrl folder; ///< where the panel begins
        /// Makes the folder that was typed; where that does not work, tells the user why and answers false.
        std::function<bool(const QUrl &folder)> make;
    };
    struct File {
        QString title;
        QString message;
        QString types; ///< what such files are called
        QStringList patterns; ///< of their names, such as "*.jpg"
        QString allFiles; ///< what the user picks to see files of other names, too
        QUrl folder; ///< where the panel begins
    };
    /// Told only when the user confirms.
    using Chosen = std::function<void(const QUrl &place)>;

    virtual ~BWFilePanels() = default;

    /// A file to be written, with the extension; the user has agreed to replace one that stands there. No folders can be
    /// made. Returns at once.
    virtual void save(QWidget *window, const Save &panel, Chosen chosen) = 0;
    /// An existing file to be read. Returns at once.
    virtual void chooseFile(QWidget *window, const File &panel, Chosen chosen) = 0;
    /// An existing folder, or a new one that is made. Returns at once.
    virtual void chooseFolder(QWidget *window, const Folder &panel, Chosen chosen) = 0;
};
