#pragma once

#include "MinimalCorvo/Container.h"

namespace Corvo {

/// Reads the device filter from the environment variable CORVO_DEVICE_FILTER.
///
/// Entries are separated by "||", the "KEY=VALUE" pairs of an entry by "&&". A device passes when it has all pairs of
/// at least one entry. Pairs without key or value and entries without pairs are dropped; unknown keys and malformed
/// addresses are kept and match no device. Hidden keys, which begin with "_", are kept but not compared; an entry that
/// has no others matches no device. \param filter replaced by the entries. \returns their number.
int GetDeviceEnumerationFilterFromEnvironment(DeviceInfoList &filter);

/// Stores the pairs of one entry in \p info. \returns their number.
int ParseOneEntryFromString(const char *text, CDeviceInfo &info);

} // namespace Corvo
