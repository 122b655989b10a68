#pragma once

#include "v4l2/device/BWBridgeRegisters.h"

#include <cstdint>
#include <QByteArray>

class BWKernelCalls;

/// The registers of an EM28xx chip, by vendor requests to the USB device itself. That claims no interface, so the
/// chip's driver is not disturbed and need not help. The device is open only for the time of each access.
class BWUsbRegisters : public BWBridgeRegisters {
public:
    /// Bus and device number as in /dev/bus/usb/BUS/DEVICE. Touches no hardware.
    BWUsbRegisters(int usbBus, int usbDevice, BWKernelCalls &kernel);

    int read(int reg) override;
    void write(int reg, int value) override;
    QString problem() const override { return m_problem; }

private:
    enum class Direction : uint8_t { Write = 0x40, Read = 0xc0 };

    void access(Direction direction, int reg, uint8_t &value);
    /// Null if it worked.
    QString tryToAccess(Direction direction, int reg, uint8_t &value) const;
    QString openProblem(int error) const;

    const QByteArray m_path;
    BWKernelCalls &m_kernel;
    QString m_problem;
};
