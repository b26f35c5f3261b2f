#pragma once

#include <atomic>
#include <cstdint>

namespace GxImp {

/// Atomic reference count that starts at 1; dropping the last reference deletes the object.
class CRefCounted {
public:
    CRefCounted(const CRefCounted &) = delete;
    CRefCounted &operator=(const CRefCounted &) = delete;

    void AddRef() noexcept { m_Count.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept {
        if (m_Count.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

protected:
    CRefCounted() noexcept = default;
    virtual ~CRefCounted() = default;

private:
    std::atomic<std::uint32_t> m_Count{1};
};

} // namespace GxImp
