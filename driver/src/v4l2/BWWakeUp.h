#pragma once

/// A descriptor by which any thread ends the wait of one thread in poll().
class BWWakeUp {
public:
    BWWakeUp();
    ~BWWakeUp();
    BWWakeUp(const BWWakeUp &) = delete;
    BWWakeUp &operator=(const BWWakeUp &) = delete;

    /// Readable from wake() to clear(). Never fails to be readable: -1, which poll() leaves out, only where the process
    /// has no descriptor left.
    int descriptor() const { return m_descriptor; }
    void wake() const;
    void clear() const;

private:
    const int m_descriptor;
};
