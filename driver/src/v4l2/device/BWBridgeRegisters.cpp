// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWBridgeRegisters.h"

#include "base/BWDriverLog.h"
#include "v4l2/BWKernelCalls.h"

#include <cerrno>
#include <libusb.h>
#include <linux/videodev2.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned int requestTimeout = 500; // milliseconds

struct Closer {
    void operator()(libusb_context *context) const { libusb_exit(context); }
    void operator()(libusb_device_handle *handle) const { libusb_close(handle); }
};

using Context = std::unique_ptr<libusb_context, Closer>;
using UsbHandle = std::unique_ptr<libusb_device_handle, Closer>;

Context makeContext()
{
    // The device is known, so libusb need not look for others.
    libusb_set_option(nullptr, LIBUSB_OPTION_NO_DEVICE_DISCOVERY);
    libusb_context *context = nullptr;
    return Context(libusb_init(&context) == LIBUSB_SUCCESS ? context : nullptr);
}

QByteArray devicePath(int bus, int device)
{
    return u"/dev/bus/usb/%1/%2"_s.arg(bus, 3, 10, QLatin1Char('0')).arg(device, 3, 10, QLatin1Char('0')).toLatin1();
}

QString transferProblem(int result, const QString &reg)
{
    switch (result) {
    case 1:
        return {};
    case 0:
        return u"The chip has answered nothing (register %1)."_s.arg(reg);
    case LIBUSB_ERROR_NO_DEVICE:
        return u"The camera is not attached any more."_s;
    case LIBUSB_ERROR_PIPE:
        return u"The chip refuses register %1."_s.arg(reg);
    case LIBUSB_ERROR_TIMEOUT:
        return u"The chip has not answered within %1 ms (register %2)."_s.arg(requestTimeout).arg(reg);
    default:
        return u"Register %1: %2."_s.arg(reg, QLatin1StringView(libusb_strerror(result)));
    }
}

QString openProblem(const QByteArray &device, int error)
{
    const QLatin1StringView path(device);
    switch (error) {
    case EACCES:
    case EPERM:
        return u"You may not open %1. The udev rule 70-brimwellpro.rules gives it to the user at the screen."_s.arg(
            path);
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return u"The camera is not attached any more: there is no %1."_s.arg(path);
    default:
        return u"%1 cannot be opened: %2."_s.arg(path, QString::fromLocal8Bit(kernelErrorText(-error)));
    }
}

} // namespace

BWBridgeRegisters::BWBridgeRegisters(const BWVideoNode &node, BWKernelCalls &kernel)
    : m_nodePath(node.path), m_usbPath(devicePath(node.usbBus, node.usbDevice)), m_kernel(kernel)
{
}

int BWBridgeRegisters::read(int reg)
{
    uint8_t value = 0;
    access(Direction::Read, reg, value);
    return m_problem.isNull() ? value : 0;
}

void BWBridgeRegisters::write(int reg, int value)
{
    auto byte = static_cast<uint8_t>(value);
    access(Direction::Write, reg, byte);
}

void BWBridgeRegisters::access(Direction direction, int reg, uint8_t &value)
{
    if (m_way != Way::Usb) {
        const QString problem = accessByDriver(direction, reg, value);
        if (m_way == Way::Unknown)
            m_way = problem.isNull() ? Way::Driver : Way::Usb;
        if (m_way == Way::Driver) {
            m_problem = problem;
            return;
        }
    }
    const QString problem = accessOverUsb(direction, reg, value);
    if (!problem.isNull() && problem != m_problem)
        qCWarning(bwDriver).noquote() << "Registers at" << m_usbPath << "-" << problem;
    m_problem = problem;
}

QString BWBridgeRegisters::accessByDriver(Direction direction, int reg, uint8_t &value) const
{
    v4l2_dbg_register request{};
    request.match.type = V4L2_CHIP_MATCH_BRIDGE;
    request.size = 1;
    request.reg = static_cast<uint64_t>(reg);
    request.val = value;
    const BWKernelFile node(m_kernel, m_nodePath.constData());
    const unsigned long call = direction == Direction::Read ? VIDIOC_DBG_G_REGISTER : VIDIOC_DBG_S_REGISTER;
    const int result = node.isOpen() ? node.ioctl(call, request) : node.openError();
    if (result < 0)
        return u"%1: %2."_s.arg(QLatin1StringView(m_nodePath), QString::fromLocal8Bit(kernelErrorText(result)));
    value = static_cast<uint8_t>(request.val);
    return {};
}

QString BWBridgeRegisters::accessOverUsb(Direction direction, int reg, uint8_t &value) const
{
    const BWKernelFile node(m_kernel, m_usbPath.constData());
    if (!node.isOpen())
        return openProblem(m_usbPath, -node.openError());
    const Context context = makeContext();
    libusb_device_handle *opened = nullptr;
    if (const int error =
            context ? libusb_wrap_sys_device(context.get(), node.descriptor(), &opened) : LIBUSB_ERROR_NO_MEM)
        return u"%1: %2."_s.arg(QLatin1StringView(m_usbPath), QLatin1StringView(libusb_strerror(error)));
    const UsbHandle handle(opened);
    const int result = libusb_control_transfer(handle.get(), static_cast<uint8_t>(direction), 0, 0,
                                               static_cast<uint16_t>(reg), &value, 1, requestTimeout);
    return transferProblem(result, u"0x%1"_s.arg(reg, 2, 16, QLatin1Char('0')));
}
