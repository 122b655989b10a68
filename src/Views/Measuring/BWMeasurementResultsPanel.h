// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurementTable.h"
#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <functional>
#include <QUrl>

class BWFilePanels;
class BWUserDefaults;
class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

/// The words of the current language for what is measured.
class BWMeasuringWords {
public:
    void localizeWithManager(BWLocalizationManager &manager);
    QString kind(const QString &identifier) const { return m_kinds.value(identifier, identifier); }
    QString quantity(const QString &identifier) const { return m_quantities.value(identifier, identifier); }
    /// For a table of results. They hold as long as this object.
    BWMeasurementTable::Words table() const;

private:
    QHash<QString, QString> m_kinds;
    QHash<QString, QString> m_quantities;
    BWMeasurementTable::Words m_table;
};

/// What has been measured, with mean, extremes and standard deviation of equal kinds: to be read, copied for a spreadsheet
/// and saved as a file of values. GUI thread.
class BWMeasurementResultsPanel final : public BWUtilityPanel, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    struct Callbacks {
        /// The measurements of the picture that shows, and its scale.
        std::function<QList<BWMeasurement>()> measurements;
        std::function<BWPictureScale()> scale;
        QUrl folder; ///< where saving starts
    };

    /// All must outlive the panel.
    BWMeasurementResultsPanel(Callbacks callbacks, BWFilePanels &panels, BWUserDefaults &defaults,
                              QWidget *cameraWindow);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// Shows the measurements as they are now.
    void reload();
    void copy() const;
    void save();

Q_SIGNALS:
    /// A row was chosen: that measurement of the list.
    void measurementChosen(qsizetype index);

private:
    BWMeasurementTable table() const;
    void fill();
    void write(const QUrl &file);

    Callbacks m_callbacks;
    BWFilePanels &m_panels;
    BWMeasuringWords m_words;
    QTreeWidget *m_rows;
    QLabel *m_nothing;
    QLabel *m_formatLabel;
    QComboBox *m_format;
    QPushButton *m_copy;
    QPushButton *m_save;
    QList<BWMeasurement> m_measurements; ///< that are shown, with that scale
    BWPictureScale m_scale;
    bool m_isFilled = false;
    int m_measured = 0; ///< rows of single measurements
    QString m_saveTitle, m_saveMessage, m_name, m_failedTitle, m_failedMessage;
};
