#pragma once

#include "v4l2/device/BWBridgeRegisters.h"

#include <linux/videodev2.h>
#include <QByteArray>

class BWKernelCalls;

/// The registers of a bridge chip by way of its driver. Only kernels that were built for it have this, and only for
/// root.
class BWDebugRegisters : public BWBridgeRegisters {
public:
    /// `path` is the video node. Touches no hardware.
    BWDebugRegisters(QByteArray path, BWKernelCalls &kernel);

    int read(int reg) override;
    void write(int reg, int value) override;
    QString problem() const override { return m_problem; }

private:
    void access(unsigned long request, v4l2_dbg_register &reg);

    const QByteArray m_path;
    BWKernelCalls &m_kernel;
    QString m_problem;
};
