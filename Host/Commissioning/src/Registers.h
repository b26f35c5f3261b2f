#pragma once

#include "MinimalCorvoGigETL/ControlChannelPtr.h"
#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Inventory.h"

#include <array>
#include <cstdint>
#include <optional>

namespace commissioning {

/// Reads registers of a camera without control, which nobody's control but an exclusive one prevents.
class Registers {
public:
    /// Connects to the camera at the info's address and sees that it is the one meant: with two cameras at one address
    /// the other one answers. Takes up to 0.6 s when nobody answers.
    explicit Registers(const Corvo::CQuorelGigEDeviceInfo &device);

    std::optional<std::uint32_t> read(std::uint32_t address);
    template <std::size_t Count>
    std::optional<std::array<std::uint32_t, Count>> read(const std::array<std::uint32_t, Count> &addresses) {
        std::array<std::uint32_t, Count> values{};
        if (!m_Channel || m_Channel->ReadReg(addresses.data(), values.data(), Count) != GX_SUCCESS)
            return std::nullopt;
        return values;
    }
    std::optional<StoredAddresses> readStored();
    /// Where the camera tells who holds it and somebody does.
    std::optional<Holder> readHolder();

private:
    Corvo::ControlChannelPtr m_Channel;
};

} // namespace commissioning
