#pragma once

#include "Views/Utils/BWFilePanels.h"

/// The panels as file dialogs that block the window they belong to.
class BWDialogFilePanels : public BWFilePanels {
public:
    /// A file's path with the extension that its name gets: kept as it is where it has that one, in whatever case, put
    /// in place of that of another kind of picture, movie or archive, else added.
    static QString withExtension(const QString &path, const QString &extension);

    void save(QWidget *window, const Save &panel, Chosen chosen) override;
    void chooseFile(QWidget *window, const File &panel, Chosen chosen) override;
    void chooseFolder(QWidget *window, const Folder &panel, Chosen chosen) override;
};
