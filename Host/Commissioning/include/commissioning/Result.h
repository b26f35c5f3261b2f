#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Inventory.h"

#include <optional>
#include <string>

namespace commissioning {

/// How far a part of a change got.
enum class Delivery {
    NotSent,
    Unconfirmed, ///< sent, but no acknowledge came
    Acknowledged
};

enum class Path { None, Broadcast, Unicast, Force };

/// What a success rests on.
enum class Verification {
    None,
    AddressSeen, ///< a discovery's answer; the camera could not be read
    StoredRead   ///< its registers
};

/// How a change ended.
struct Result {
    bool success = false;
    bool refused = false;   ///< before anything was sent
    Path path = Path::None; ///< the last one taken
    Delivery mode = Delivery::NotSent;
    Delivery addresses = Delivery::NotSent;
    bool isNameLost = false; ///< the camera's user-defined name is gone and could not be written back
    Verification verification = Verification::None;
    std::optional<Corvo::CQuorelGigEDeviceInfo> now; ///< the camera as it was last heard; none when it was not
    std::optional<StoredAddresses> stored;           ///< none when they could not be read
    std::string text; ///< for people: what was sent and what is known. Empty after a success without remarks

    /// Of a change that was not begun.
    static Result refusal(const std::string &reason) {
        Result result;
        result.refused = true;
        result.text = reason;
        return result;
    }
};

} // namespace commissioning
