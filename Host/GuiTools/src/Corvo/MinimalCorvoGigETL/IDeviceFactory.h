#pragma once

#include "MinimalCorvo/Container.h"
#include "MinimalCorvo/DeviceAccessMode.h"

namespace Corvo {

class ICorvoDevice;

/// How a device can be used by this host.
enum EDeviceAccessiblityInfo : int {
    Accessibility_Unknown = 0,
    Accessibility_Ok = 1,                ///< Reachable, and nobody holds it.
    Accessibility_Opened = 2,            ///< Another application controls it; it can still be read.
    Accessibility_OpenedExclusively = 3, ///< Another application holds it and denies every access.
    Accessibility_NotReachable = 4       ///< It does not answer at its address.
};

/// Finds devices and makes device objects.
///
/// An info is either one that an enumeration returned, which names exactly that device, or one that the caller filled
/// with the properties that the device must have (CInfoBase::IsUserProvided).
class IDeviceFactory {
public:
    /// Finds all devices. \param addToList false clears \p list first. \returns a number that a
    /// layer makes up, see there; the list tells how many were added.
    virtual int EnumerateDevices(DeviceInfoList &list, bool addToList = false) = 0;
    /// Finds the devices that hold every property of at least one entry of \p filter; an empty filter admits all.
    virtual int EnumerateDevices(DeviceInfoList &list, const DeviceInfoList &filter, bool addToList = false) = 0;

    /// Whether a device could be opened with the given access modes, found out without taking any privilege. May be
    /// called from several threads at once, which is how many devices are asked in the time of one.
    /// \param pAccessibilityInfo if not null, receives the reason.
    /// \throws RuntimeException when a caller-made info fits no device or several.
    virtual bool IsDeviceAccessible(const CDeviceInfo &info, AccessModeSet modes = AccessModeSet(Control),
                                    EDeviceAccessiblityInfo *pAccessibilityInfo = nullptr) = 0;

    /// Makes a device object, not opened yet, to be given back by DestroyDevice. \param options of the device's
    /// transport layer. \throws RuntimeException when a caller-made info fits no device or several.
    virtual ICorvoDevice *CreateDevice(const CDeviceInfo &info) = 0;
    virtual ICorvoDevice *CreateDevice(const CDeviceInfo &info, const StringList_t &options) = 0;
    /// The same, but of several fitting devices the first in sorting order is taken.
    virtual ICorvoDevice *CreateFirstDevice(const CDeviceInfo &info) = 0;
    virtual ICorvoDevice *CreateFirstDevice(const CDeviceInfo &info, const StringList_t &options) = 0;
    /// Outdated: makes the device of a full name.
    virtual ICorvoDevice *CreateDevice(const String_t &fullName) = 0;

    /// Closes and destroys a device of this factory; null is ignored. \throws InvalidArgumentException for any other.
    virtual void DestroyDevice(ICorvoDevice *pDevice) = 0;

protected:
    ~IDeviceFactory() = default;
};

} // namespace Corvo
