// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "v4l2/finding/BWVideoNode.h"

#include <cstdint>

class BWKernelCalls;

/// The registers of a camera's video bridge chip. One thread at a time.
///
/// The first access decides how they are reached: through the chip's driver, which only kernels built for it allow, and
/// only root; else by vendor requests to the USB device itself. Those claim no interface, so they neither disturb the
/// driver nor need it, and the device is open only for the time of each access.
class BWBridgeRegisters {
public:
    /// Touches no hardware. `kernel` must outlive this.
    BWBridgeRegisters(const BWVideoNode &node, BWKernelCalls &kernel);

    /// 0 to 255; 0 if the register cannot be read, and then problem() says why.
    int read(int reg);
    /// Writes the low 8 bits.
    void write(int reg, int value);

    /// Why the last access failed, in plain English for a technician; null if it did not.
    QString problem() const { return m_problem; }

private:
    enum class Way { Unknown, Driver, Usb };
    enum class Direction : uint8_t { Write = 0x40, Read = 0xc0 }; ///< as a vendor request has it

    void access(Direction direction, int reg, uint8_t &value);
    // These return the problem, null if there was none.
    QString accessByDriver(Direction direction, int reg, uint8_t &value) const;
    QString accessOverUsb(Direction direction, int reg, uint8_t &value) const;

    const QByteArray m_nodePath;
    const QByteArray m_usbPath;
    BWKernelCalls &m_kernel;
    Way m_way = Way::Unknown;
    QString m_problem;
};
