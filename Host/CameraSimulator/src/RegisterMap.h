#pragma once

#include "Wire.h"
#include "camsim/CameraConfig.h"

#include <cstdint>
#include <vector>

namespace camsim {

/// The memory of a camera: bootstrap registers, XML and further regions, big-endian as on the wire.
///
/// Knows which addresses exist and which are read-only, but nothing of privileges or of what a register does.
class RegisterMap {
public:
    /// Throws std::invalid_argument when texts or regions do not fit.
    explicit RegisterMap(const CameraConfig &config);

    /// Reads `count` bytes to `out`; nothing is promised about `out` on failure.
    GevStatus read(std::uint32_t address, std::size_t count, std::uint8_t *out) const;
    /// Whether `count` bytes could be written.
    GevStatus writable(std::uint32_t address, std::size_t count) const;
    /// Writes from inside the camera: read-only memory too. Throws std::out_of_range where there is none.
    void store(std::uint32_t address, const std::uint8_t *bytes, std::size_t count);

    /// One register. Throw std::out_of_range where there is none.
    std::uint32_t get(std::uint32_t address) const;
    void set(std::uint32_t address, std::uint32_t value);

    IpSettings persistent() const;
    void setPersistent(const IpSettings &settings);
    void setCurrent(const IpSettings &settings);
    std::string userName() const;

private:
    void addRegion(const MemoryRegion &region);
    void addBootstrap(std::uint32_t address, std::uint32_t size, bool writable);
    void addIdentity(const CameraConfig &config);
    void addDescription(const CameraConfig &config);
    void addNetwork(const CameraConfig &config);
    void addControl(const CameraConfig &config);
    void setText(std::uint32_t address, std::size_t size, const std::string &text, const char *what);
    const MemoryRegion *find(std::uint64_t address) const;
    /// Calls visit(region, offset, done, length) for each stretch of `count` bytes; false when some address is missing.
    template <typename Visit> bool forEachStretch(std::uint32_t address, std::size_t count, Visit visit) const;

    std::vector<MemoryRegion> regions_; ///< by address, disjoint
    std::vector<AddressRange> readOnly_;
};

} // namespace camsim
