// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "v4l2/BWKernelCalls.h"
#include "v4l2/device/BWVideoAbilities.h"

#include <functional>
#include <set>

/// The controls of one device: sets them, and reports when another program or the camera itself has changed one.
/// Capture thread, except setMoved().
class BWVideoControls {
public:
    /// Values are the program's, as in BWVideoControl.
    using Moved = std::function<void(int identifier, double value)>;

    /// `name` is for the log.
    BWVideoControls(const std::vector<BWVideoControl> &controls, QString name);

    /// Called before anything else. Changes that set() returns are not reported.
    void setMoved(Moved moved) { m_moved = std::move(moved); }

    /// Sets the control and returns the value the device then has; on failure the value it had.
    double set(const BWKernelFile &node, int identifier, double value);
    /// The last known value; 0 for an unknown control.
    double value(int identifier) const;

    /// Subscribes to changes on that node, and reads what has changed before.
    void watch(const BWKernelFile &node);
    /// Takes the events of the node. False if it has none although the poll said so.
    bool takeEvents(const BWKernelFile &node);
    /// Reads the controls that automatic modes change, since the camera need not report these.
    void readMoved(const BWKernelFile &node);

private:
    struct Control {
        BWVideoControl ability;
        double value = 0;
        bool readable = true;
        bool complained = false;
    };

    Control *find(int identifier);
    const Control *find(int identifier) const;
    int32_t toDevice(const Control &control, double value) const;
    double toProgram(const Control &control, int32_t value) const;
    int send(const BWKernelFile &node, uint32_t id, int32_t value) const;
    void holdMaster(const BWKernelFile &node, int identifier);
    bool isMoved(const Control &control) const;
    void readOthers(const BWKernelFile &node, int identifier, int result);
    std::optional<double> readValue(const BWKernelFile &node, Control &control);
    void read(const BWKernelFile &node, Control &control);
    void note(Control &control, double value);
    void complain(Control &control, double value, int error);

    const QString m_name;
    std::vector<Control> m_controls;
    std::set<uint32_t> m_missingMasters;
    Moved m_moved;
};
