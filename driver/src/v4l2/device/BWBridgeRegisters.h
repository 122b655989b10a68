#pragma once

#include <QString>

/// The registers of a video bridge chip. One thread at a time.
class BWBridgeRegisters {
public:
    virtual ~BWBridgeRegisters() = default;

    /// 0 to 255; 0 where the register cannot be read, and then problem() tells why.
    virtual int read(int reg) = 0;
    /// Writes the low 8 bits.
    virtual void write(int reg, int value) = 0;

    /// Why the last access failed, in plain English for a technician; null if it did not.
    virtual QString problem() const = 0;
};
