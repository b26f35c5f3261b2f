#include "ResultText.h"

#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"

namespace commissioning {

namespace {

/// What is known of one part of the settings.
enum class Part { Unasked, Missing, Unknown, Stored };

Part delivered(Delivery delivery) {
    return delivery == Delivery::Acknowledged ? Part::Stored
           : delivery == Delivery::NotSent    ? Part::Missing
                                              : Part::Unknown;
}

/// The camera's own word counts more than acknowledges, which can be forged or lost.
Part modePart(const Change &change, const Result &result) {
    if (!change.modeDiffers)
        return Part::Unasked;
    if (!result.now)
        return delivered(result.mode);
    return modeOf(*result.now) == change.mode ? Part::Stored : Part::Missing;
}

Part addressPart(const Change &change, const Result &result) {
    if (!change.storesAddresses() || !change.hasAddressChanges())
        return Part::Unasked;
    if (!result.stored)
        return delivered(result.addresses);
    return *result.stored == change.wanted() ? Part::Stored : Part::Missing;
}

bool isEither(Part a, Part b, Part wanted) { return a == wanted || b == wanted; }

std::string oldStaticAddress(const Change &change, const Result &result) {
    const auto stored = result.stored ? result.stored : storedAddressesOf(change.device);
    return stored ? "its old static address " + toText(stored->address) : "its old static address";
}

/// Of a camera that has all or nothing, or of which that is not known.
std::string describeWhole(Part mode, Part address, const Result &result) {
    if (isEither(mode, address, Part::Unknown))
        return "The settings were sent, but not acknowledged: it is not known whether the camera has stored them.";
    if (isEither(mode, address, Part::Missing))
        return result.path == Path::None ? "Nothing was sent to the camera."
                                         : "The camera has not stored the settings.";
    return result.now ? "The settings are stored in the camera."
                      : "The settings were sent, but the camera did not come back.";
}

std::string describeParts(const Change &change, const Result &result) {
    const Part mode = modePart(change, result);
    const Part address = addressPart(change, result);
    if (mode == Part::Stored && address == Part::Missing)
        return "Only the mode was written, the addresses were not: the camera will boot with " +
               oldStaticAddress(change, result) + ".";
    if (mode == Part::Stored && address == Part::Unknown)
        return "The mode was written; it is not known whether the addresses were. If not, the camera will boot with " +
               oldStaticAddress(change, result) + ".";
    if (address == Part::Stored && (mode == Part::Missing || mode == Part::Unknown))
        return "Only the addresses were written, the mode was not.";
    return describeWhole(mode, address, result);
}

/// The right address with something else that is wrong.
std::string describeStored(const Change &change, const Result &result) {
    const bool isHalf = change.mode == Mode::Static && result.stored && result.stored->address == change.address &&
                        addressPart(change, result) == Part::Missing;
    return isHalf ? " It has stored the address, with the mask " + toText(result.stored->mask) + " and the gateway " +
                        toText(result.stored->gateway) + "."
                  : "";
}

std::string modeText(const Corvo::CQuorelGigEDeviceInfo &device) {
    const std::optional<Mode> mode = modeOf(device);
    if (!mode)
        return "no known mode";
    return *mode == Mode::Static ? "a static address" : *mode == Mode::Dhcp ? "DHCP" : "Auto IP";
}

/// One that has stored everything and still does not use it.
bool ignoredRestart(const Change &change, const Result &result) {
    const auto isStored = [](Part part) { return part == Part::Stored || part == Part::Unasked; };
    return result.now && isStored(modePart(change, result)) && isStored(addressPart(change, result)) &&
           currentAddressOf(*result.now) == currentAddressOf(change.device);
}

std::string describePresent(const Change &change, const Result &result) {
    if (!result.now)
        return result.path == Path::None ? "" : " It does not answer the search.";
    std::string text = " It now has the address " + toText(currentAddressOf(*result.now)) + " and is set to " +
                       modeText(*result.now) + ".";
    if (ignoredRestart(change, result))
        text += " It did not restart its IP configuration: it may need a power cycle.";
    return text;
}

std::string nameRemark(const Change &change, const Result &result) {
    return result.isNameLost
               ? " The camera has lost its name \"" + std::string(change.device.GetUserDefinedName().c_str()) + "\"."
               : "";
}

/// A camera with another mode may have kept its address because its server gives it just that.
std::string remarkOf(const Change &change, const Result &result) {
    const bool keepsAddress = change.modeDiffers && change.mode != Mode::Static && result.now &&
                              currentAddressOf(*result.now) == currentAddressOf(change.device) &&
                              !isLinkLocal(currentAddressOf(*result.now));
    return keepsAddress ? "The settings are stored, and the camera still has the address " +
                              toText(currentAddressOf(*result.now)) +
                              ". If it should have another one, it may need a power cycle."
                        : "";
}

} // namespace

std::string describe(const Change &change, const Result &result) {
    if (result.success)
        return remarkOf(change, result) + nameRemark(change, result);
    return describeParts(change, result) + describeStored(change, result) + describePresent(change, result);
}

} // namespace commissioning
