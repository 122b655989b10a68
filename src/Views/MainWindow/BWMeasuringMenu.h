#pragma once

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/Measuring/BWMeasurementResultsPanel.h"

#include <QList>
#include <QObject>

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
    const BWMeasuringWords &words() const { return m_words; }

    QAction *showTools; ///< opens and closes the strip
    QAction *undo;
    QAction *redo;
    QAction *remove;
    QAction *scaleBar;
    QAction *calibrate;
    QAction *results;
    QAction *saveCopy;

Q_SIGNALS:
    /// The user has chosen it, or chosen it again.
    void kindPicked(const QString &kind);

private:
    QActionGroup *m_tools;
    BWMeasuringWords m_words;
};
