// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurement.h"

#include <optional>

/// The measurements in one picture, with everything that was done to them: any of it can be undone and done again. One thread
/// at a time.
class BWMeasurementList {
public:
    const QList<BWMeasurement> &items() const { return m_items; }

    void add(const BWMeasurement &measurement);
    /// Does nothing for an index that is none, or if nothing changes.
    void replace(qsizetype index, const BWMeasurement &measurement);
    void remove(qsizetype index);
    void clear();

    /// What follows until endChange(), such as the steps of a point that is dragged, is undone as one. cancelChange() takes
    /// it back and forgets it.
    void beginChange();
    void endChange();
    void cancelChange();

    /// Other measurements, as those of another picture: nothing of before can be undone.
    void reset(QList<BWMeasurement> items = {});

    bool canUndo() const { return !m_undo.isEmpty(); }
    bool canRedo() const { return !m_redo.isEmpty(); }
    void undo();
    void redo();

    /// Whether it differs from what was saved or read last.
    bool isChanged() const { return m_items != m_saved; }
    void setSaved() { m_saved = m_items; }

private:
    using Items = QList<BWMeasurement>;
    /// What one step replaced, and by what: a list is long, what is done to it is small.
    struct Step {
        qsizetype at;
        Items before;
        Items after;
    };
    void set(const Items &items);
    void replaceRange(qsizetype at, qsizetype count, const Items &by);

    Items m_items;
    Items m_saved;
    QList<Step> m_undo;
    QList<Step> m_redo;
    std::optional<Items> m_before; // the change under way
};
