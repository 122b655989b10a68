#include "v4l2/device/BWDebugRegisters.h"

#include "v4l2/BWKernelFile.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

v4l2_dbg_register bridgeRegister(int number)
{
    v4l2_dbg_register reg{};
    reg.match.type = V4L2_CHIP_MATCH_BRIDGE;
    reg.size = 1;
    reg.reg = static_cast<uint64_t>(number);
    return reg;
}

} // namespace

BWDebugRegisters::BWDebugRegisters(QByteArray path, BWKernelCalls &kernel) : m_path(std::move(path)), m_kernel(kernel)
{
}

int BWDebugRegisters::read(int reg)
{
    v4l2_dbg_register answer = bridgeRegister(reg);
    access(VIDIOC_DBG_G_REGISTER, answer);
    return m_problem.isNull() ? static_cast<int>(answer.val & 0xff) : 0;
}

void BWDebugRegisters::write(int reg, int value)
{
    v4l2_dbg_register order = bridgeRegister(reg);
    order.val = static_cast<uint8_t>(value);
    access(VIDIOC_DBG_S_REGISTER, order);
}

void BWDebugRegisters::access(unsigned long request, v4l2_dbg_register &reg)
{
    const BWKernelFile node(m_kernel, m_path.constData());
    const int result = node.isOpen() ? node.ioctl(request, reg) : node.openError();
    m_problem = result >= 0
        ? QString()
        : u"%1: %2."_s.arg(QLatin1StringView(m_path), QString::fromLocal8Bit(kernelErrorText(result)));
}
