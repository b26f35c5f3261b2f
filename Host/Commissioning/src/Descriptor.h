#pragma once

#include <unistd.h>
#include <utility>

namespace commissioning {

/// A file descriptor that is closed with the object; -1 for none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : m_Descriptor(descriptor) {}
    Descriptor(Descriptor &&other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        std::swap(m_Descriptor, other.m_Descriptor);
        return *this;
    }
    ~Descriptor() { reset(); }

    int get() const { return m_Descriptor; }
    /// \returns what the caller has to close.
    int release() { return std::exchange(m_Descriptor, -1); }
    void reset() {
        if (m_Descriptor >= 0)
            close(std::exchange(m_Descriptor, -1));
    }

private:
    int m_Descriptor = -1;
};

} // namespace commissioning
