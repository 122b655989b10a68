// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWCalibration.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QDialog>

class BWAnnouncement;
class QDialogButtonBox;
class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

/// The calibrations of one product: how wide a picture each means, how exact it is, and of how many lines it was made. Those
/// that users made can be renamed and removed. GUI thread.
class BWCalibrationsDialog final : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    struct Callbacks {
        /// False, and nothing changes, if the new name cannot be used.
        std::function<bool(const QString &name, const QString &newName)> rename;
        std::function<void(const QString &name)> remove;
    };

    /// `productName` is as the user knows it, null without one; the widths are those of a picture of that size. The
    /// calibrations must outlive the dialog.
    BWCalibrationsDialog(const BWCalibrations &calibrations, const QString &product, const QString &productName,
                         QSize picture, Callbacks callbacks, QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

private:
    enum Column { NameColumn, WidthColumn, ErrorColumn, LinesColumn, ColumnCount };

    void reload(const QString &current);
    void fitColumns();
    void addRow(const BWCalibration &calibration);
    void beginRename();
    void renamed(QTreeWidgetItem *item);
    void remove();
    void updateButtons();

    const BWCalibrations &m_calibrations;
    const QString m_product;
    const QString m_productName;
    const QSize m_picture;
    const Callbacks m_callbacks;
    QLabel *m_explanation;
    QTreeWidget *m_list;
    BWAnnouncement *m_message;
    QPushButton *m_rename;
    QPushButton *m_remove;
    QDialogButtonBox *m_buttons;
    QString m_builtInText, m_inUseText, m_nameTaken, m_renamedText, m_removedText, m_noneChosen;
    QString m_removeTitle, m_removeMessage, m_removeChosenMessage, m_removeOk, m_removeCancel;
};
