// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Capture/BWSeriesPlan.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <functional>
#include <QDialog>
#include <QStringList>

class BWTimeField;
class QComboBox;
class QDialogButtonBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSpinBox;

/// Asks what a series is to be and where its pictures go. GUI thread.
class BWSeriesDialog final : public QDialog, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    struct Choice {
        BWSeriesPlan plan;
        int album = -1; ///< its place in the list; -1 for a new one
        QString newAlbum; ///< the name of that
    };
    /// Starts the series; null if it began, else what is to be changed in the choice.
    using Start = std::function<QString(const Choice &)>;
    /// What the choice amounts to, in words.
    using Summary = std::function<QString(const BWSeriesPlan &)>;

    /// Shows that choice first; `albums` are the names to choose from.
    BWSeriesDialog(const Choice &first, const QStringList &albums, Summary summary, Start start, QWidget *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    Choice choice() const;

private:
    void layOut();
    void update();
    void accept() override;

    const Summary m_summaryOf;
    const Start m_start;
    QFormLayout *m_form;
    BWTimeField *m_interval;
    BWTimeField *m_delay;
    QRadioButton *m_endsByNumber;
    QRadioButton *m_endsByTime;
    QRadioButton *m_endsWhenStopped;
    QSpinBox *m_number;
    BWTimeField *m_duration;
    QComboBox *m_album;
    QLineEdit *m_newAlbum;
    QLabel *m_summary;
    QDialogButtonBox *m_buttons;
};
