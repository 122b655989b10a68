// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWFileMoves.h"

#include <functional>
#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QLineEdit;
struct BWAlbumTexts;

/// Asks what a file is to be called, besides its number. It stays until that was done, and says why it was not. GUI thread.
class BWRenameDialog final : public QDialog {
    Q_OBJECT

public:
    /// Does it; then calls `done`, with a null text, or with why it could not be.
    using Rename = std::function<void(const QByteArray &name, std::function<void(const QString &problem)> done)>;

    BWRenameDialog(const QByteArray &fileName, const BWAlbumTexts &texts, Rename rename, QWidget *parent);

private:
    void accept() override;
    void check();
    void say(const QString &problem);

    const QByteArray m_fileName;
    const BWCaptureName m_name;
    const BWAlbumTexts &m_texts;
    const Rename m_rename;
    QLineEdit *m_rest;
    QLabel *m_problem;
    QDialogButtonBox *m_buttons;
};
