#include "v4l2/device/BWMakeBridgeRegisters.h"

#include "v4l2/device/BWDebugRegisters.h"
#include "v4l2/device/BWUsbRegisters.h"

namespace {

class WhicheverWorks : public BWBridgeRegisters {
public:
    WhicheverWorks(const BWVideoNode &node, BWKernelCalls &kernel)
        : m_byDriver(node.path, kernel), m_overUsb(node.usbBus, node.usbDevice, kernel)
    {
    }

    int read(int reg) override
    {
        if (!m_choice) {
            const int value = m_byDriver.read(reg);
            if (choose())
                return value;
        }
        return m_choice->read(reg);
    }

    void write(int reg, int value) override
    {
        if (!m_choice) {
            m_byDriver.write(reg, value);
            if (choose())
                return;
        }
        m_choice->write(reg, value);
    }

    QString problem() const override { return m_choice ? m_choice->problem() : QString(); }

private:
    /// True if the driver has just carried out what was asked of it.
    bool choose()
    {
        const bool byDriver = m_byDriver.problem().isNull();
        m_choice = byDriver ? static_cast<BWBridgeRegisters *>(&m_byDriver) : &m_overUsb;
        return byDriver;
    }

    BWDebugRegisters m_byDriver;
    BWUsbRegisters m_overUsb;
    BWBridgeRegisters *m_choice = nullptr; ///< null before the first access
};

} // namespace

std::unique_ptr<BWBridgeRegisters> makeBridgeRegisters(const BWVideoNode &node, BWKernelCalls &kernel)
{
    return std::make_unique<WhicheverWorks>(node, kernel);
}
