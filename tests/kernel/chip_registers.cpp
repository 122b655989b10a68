// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/BWKernelCalls.h"
#include "v4l2/device/BWBridgeRegisters.h"

#include <cstdio>
#include <cstdlib>

/// chip_registers NODE BUS DEVICE [REGISTER[=VALUE]]...: reads and writes registers in that order; a line for each, with
/// what was read, "written", or the problem.
int main(int argc, char *argv[])
{
    BWVideoNode node;
    node.path = argv[1];
    node.usbBus = std::atoi(argv[2]);
    node.usbDevice = std::atoi(argv[3]);
    BWBridgeRegisters registers(node, BWKernelCalls::system());
    for (int i = 4; i < argc; ++i) {
        char *end = nullptr;
        const int number = static_cast<int>(std::strtol(argv[i], &end, 0));
        int value = 0;
        if (*end == '=')
            registers.write(number, static_cast<int>(std::strtol(end + 1, nullptr, 0)));
        else
            value = registers.read(number);
        if (!registers.problem().isNull())
            std::puts(qPrintable(registers.problem()));
        else if (*end == '=')
            std::puts("written");
        else
            std::printf("%d\n", value);
    }
    return 0;
}
