#include "v4l2/device/BWUsbRegisters.h"

#include "base/BWDriverLog.h"
#include "v4l2/BWKernelFile.h"

#include <cerrno>
#include <libusb.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned int timeout = 500; // milliseconds

struct Closer {
    void operator()(libusb_context *context) const { libusb_exit(context); }
    void operator()(libusb_device_handle *handle) const { libusb_close(handle); }
};

using Context = std::unique_ptr<libusb_context, Closer>;
using Handle = std::unique_ptr<libusb_device_handle, Closer>;

Context makeContext()
{
    // The device is known: no other has to be looked at.
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
        return u"The chip has not answered within %1 ms (register %2)."_s.arg(timeout).arg(reg);
    default:
        return u"Register %1: %2."_s.arg(reg, QLatin1StringView(libusb_strerror(result)));
    }
}

} // namespace

BWUsbRegisters::BWUsbRegisters(int usbBus, int usbDevice, BWKernelCalls &kernel)
    : m_path(devicePath(usbBus, usbDevice)), m_kernel(kernel)
{
}

int BWUsbRegisters::read(int reg)
{
    uint8_t value = 0;
    access(Direction::Read, reg, value);
    return m_problem.isNull() ? value : 0;
}

void BWUsbRegisters::write(int reg, int value)
{
    auto byte = static_cast<uint8_t>(value);
    access(Direction::Write, reg, byte);
}

void BWUsbRegisters::access(Direction direction, int reg, uint8_t &value)
{
    const QString problem = tryToAccess(direction, reg, value);
    if (!problem.isNull() && problem != m_problem)
        qCWarning(bwDriver).noquote() << "Registers at" << m_path << "-" << problem;
    m_problem = problem;
}

QString BWUsbRegisters::tryToAccess(Direction direction, int reg, uint8_t &value) const
{
    const BWKernelFile node(m_kernel, m_path.constData());
    if (!node.isOpen())
        return openProblem(-node.openError());
    const Context context = makeContext();
    libusb_device_handle *opened = nullptr;
    if (const int error =
            context ? libusb_wrap_sys_device(context.get(), node.descriptor(), &opened) : LIBUSB_ERROR_NO_MEM)
        return u"%1: %2."_s.arg(QLatin1StringView(m_path), QLatin1StringView(libusb_strerror(error)));
    const Handle handle(opened);
    const int result = libusb_control_transfer(handle.get(), static_cast<uint8_t>(direction), 0, 0,
                                               static_cast<uint16_t>(reg), &value, 1, timeout);
    return transferProblem(result, u"0x%1"_s.arg(reg, 2, 16, QLatin1Char('0')));
}

QString BWUsbRegisters::openProblem(int error) const
{
    const QLatin1StringView path(m_path);
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
