// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"

#include <optional>
#include <QList>
#include <QObject>
#include <QStringList>

class QAction;
class QActionGroup;
class QMenu;

/// The menu of measuring. The strip of tools shows the same actions; what they do is up to whoever connects them.
class BWMeasuringMenu : public QObject, public BWLocalizationManagerDelegate {
    Q_OBJECT

public:
    /// Fills that menu, which must outlive this object.
    explicit BWMeasuringMenu(QMenu &menu, QObject *parent);

    void localizeWithManager(BWLocalizationManager &manager) override;

    /// One for each kind of measurement, behind the one that selects and moves. One of them is always checked.
    QList<QAction *> tools() const;
    /// The kind of the checked one; null for the one that selects.
    QString kind() const;
    void setKind(const QString &kind);
    /// Of the checked one.
    QString toolName() const;
    const BWMeasuringWords &words() const { return m_words; }

    /// The scales to choose from; a `chosen` of -1 stands for no scale, which is always offered.
    void showScales(const QStringList &titles, int chosen);
    /// Nothing: the unit that suits the picture.
    void showUnit(std::optional<BWLengthUnit> unit);

    QAction *showTools; ///< opens and closes the strip
    QAction *undo;
    QAction *redo;
    QAction *remove;
    QAction *scaleBar;
    QAction *calibrate;
    QAction *calibrations;
    QAction *results;
    QAction *saveCopy;

Q_SIGNALS:
    /// The user has chosen it, or chosen it again.
    void kindPicked(const QString &kind);
    /// Of those that are shown; -1 for none.
    void scalePicked(int index);
    void unitPicked(std::optional<BWLengthUnit> unit);

private:
    void fillScales();

    QActionGroup *m_tools;
    QMenu *m_scaleMenu;
    QMenu *m_unitMenu;
    QActionGroup *m_scales;
    QActionGroup *m_units;
    QStringList m_scaleTitles;
    int m_chosenScale = -1;
    QString m_noScale;
    BWMeasuringWords m_words;
};
