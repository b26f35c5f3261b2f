#include "MinimalCorvo/DeviceInfo.h"

#include <charconv>
#include <cstdint>
#include <optional>

namespace Corvo {

namespace {

constexpr char SERIAL_NUMBER[] = "SerialNumber";
constexpr char USER_DEFINED_NAME[] = "UserDefinedName";
constexpr char MODEL_NAME[] = "ModelName";
constexpr char DEVICE_VERSION[] = "DeviceVersion";
constexpr char DEVICE_FACTORY[] = "DeviceFactory";
constexpr char XML_SOURCE[] = "XMLSource";

/// The number, if the text is nothing but decimal digits and fits.
std::optional<std::int64_t> NumericSerial(const String_t &serial) {
    if (serial.find_first_not_of("0123456789") != String_t::npos)
        return std::nullopt;
    std::int64_t number = 0;
    const auto result = std::from_chars(serial.c_str(), serial.c_str() + serial.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

} // namespace

CDeviceInfo &CDeviceInfo::SetPropertyValue(const String_t &name, const String_t &value) {
    CInfoBase::SetPropertyValue(name, value);
    return *this;
}

CDeviceInfo &CDeviceInfo::SetFriendlyName(const String_t &value) {
    CInfoBase::SetFriendlyName(value);
    return *this;
}

CDeviceInfo &CDeviceInfo::SetFullName(const String_t &value) {
    CInfoBase::SetFullName(value);
    return *this;
}

CDeviceInfo &CDeviceInfo::SetVendorName(const String_t &value) {
    CInfoBase::SetVendorName(value);
    return *this;
}

CDeviceInfo &CDeviceInfo::SetDeviceClass(const String_t &value) {
    CInfoBase::SetDeviceClass(value);
    return *this;
}

String_t CDeviceInfo::GetSerialNumber() const { return GetStandardProperty(SERIAL_NUMBER); }

CDeviceInfo &CDeviceInfo::SetSerialNumber(const String_t &value) { return SetPropertyValue(SERIAL_NUMBER, value); }

bool CDeviceInfo::IsSerialNumberAvailable() const { return GetPropertyAvailable(SERIAL_NUMBER); }

String_t CDeviceInfo::GetUserDefinedName() const { return GetStandardProperty(USER_DEFINED_NAME); }

CDeviceInfo &CDeviceInfo::SetUserDefinedName(const String_t &value) {
    return SetPropertyValue(USER_DEFINED_NAME, value);
}

bool CDeviceInfo::IsUserDefinedNameAvailable() const { return GetPropertyAvailable(USER_DEFINED_NAME); }

String_t CDeviceInfo::GetModelName() const { return GetStandardProperty(MODEL_NAME); }

CDeviceInfo &CDeviceInfo::SetModelName(const String_t &value) { return SetPropertyValue(MODEL_NAME, value); }

bool CDeviceInfo::IsModelNameAvailable() const { return GetPropertyAvailable(MODEL_NAME); }

String_t CDeviceInfo::GetDeviceVersion() const { return GetStandardProperty(DEVICE_VERSION); }

CDeviceInfo &CDeviceInfo::SetDeviceVersion(const String_t &value) { return SetPropertyValue(DEVICE_VERSION, value); }

bool CDeviceInfo::IsDeviceVersionAvailable() const { return GetPropertyAvailable(DEVICE_VERSION); }

String_t CDeviceInfo::GetDeviceFactory() const { return GetStandardProperty(DEVICE_FACTORY); }

CDeviceInfo &CDeviceInfo::SetDeviceFactory(const String_t &value) { return SetPropertyValue(DEVICE_FACTORY, value); }

bool CDeviceInfo::IsDeviceFactoryAvailable() const { return GetPropertyAvailable(DEVICE_FACTORY); }

String_t CDeviceInfo::GetXMLSource() const { return GetStandardProperty(XML_SOURCE); }

CDeviceInfo &CDeviceInfo::SetXMLSource(const String_t &value) { return SetPropertyValue(XML_SOURCE, value); }

bool CDeviceInfo::IsXMLSourceAvailable() const { return GetPropertyAvailable(XML_SOURCE); }

bool CDeviceInfo::operator<(const CDeviceInfo &other) const {
    if (GetDeviceClass() != other.GetDeviceClass())
        return CInfoBase::operator<(other);
    const String_t mine = GetSerialNumber();
    const String_t others = other.GetSerialNumber();
    const auto myNumber = NumericSerial(mine);
    const auto othersNumber = NumericSerial(others);
    if (myNumber && othersNumber)
        return *myNumber < *othersNumber;
    if (myNumber || othersNumber)
        return myNumber.has_value();
    return mine < others;
}

} // namespace Corvo
