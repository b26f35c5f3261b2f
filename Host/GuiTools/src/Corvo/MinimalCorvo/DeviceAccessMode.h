#pragma once

#include <bitset>

namespace Corvo {

/// Kinds of access to a device; the value is the bit position in an AccessModeSet. Bits 0 and 2 stay free.
enum EDeviceAccessMode : int {
    Control = 1,   ///< Features are writable; GVCP control privilege.
    Stream = 3,    ///< Stream access.
    Event = 4,     ///< Event access.
    Exclusive = 5, ///< GVCP exclusive privilege.
    _NumModes = 6
};

/// The kinds of access with which a device is opened. A mode outside 0 to 5 throws std::out_of_range.
class AccessModeSet : public std::bitset<_NumModes> {
public:
    AccessModeSet() = default;
    AccessModeSet(EDeviceAccessMode mode) : AccessModeSet(static_cast<int>(mode)) {}
    explicit AccessModeSet(int mode) { set(static_cast<std::size_t>(mode)); }
    AccessModeSet(const std::bitset<_NumModes> &modes) : bitset(modes) {}

    // Those of the bit set would take a mode as a number, that is as a mask of bits.
    AccessModeSet &operator|=(const AccessModeSet &modes) { return bitset::operator|=(modes), *this; }
    AccessModeSet &operator&=(const AccessModeSet &modes) { return bitset::operator&=(modes), *this; }
    AccessModeSet &operator^=(const AccessModeSet &modes) { return bitset::operator^=(modes), *this; }
    bool operator==(const AccessModeSet &modes) const { return bitset::operator==(modes); }
    bool operator!=(const AccessModeSet &modes) const { return bitset::operator!=(modes); }
};

inline AccessModeSet operator|(AccessModeSet modes, EDeviceAccessMode mode) { return modes |= mode; }
inline AccessModeSet operator+(const AccessModeSet &modes, EDeviceAccessMode mode) { return modes | mode; }
inline AccessModeSet operator|(EDeviceAccessMode a, EDeviceAccessMode b) { return AccessModeSet(a) | b; }
inline AccessModeSet operator+(EDeviceAccessMode a, EDeviceAccessMode b) { return a | b; }

} // namespace Corvo
