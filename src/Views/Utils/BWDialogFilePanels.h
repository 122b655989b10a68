#pragma once

#include "Views/Utils/BWFilePanels.h"

/// The panels as file dialogs that block the window they belong to.
class BWDialogFilePanels : public BWFilePanels {
public:
    void save(QWidget *window, const Save &panel, Chosen chosen) override;
    void chooseFile(QWidget *window, const File &panel, Chosen chosen) override;
    void chooseFolder(QWidget *window, const Folder &panel, Chosen chosen) override;
};
