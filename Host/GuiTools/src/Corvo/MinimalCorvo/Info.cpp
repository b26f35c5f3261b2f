#include "MinimalCorvo/Info.h"

#include <algorithm>
#include <iterator>

namespace Corvo {

namespace {

constexpr char FRIENDLY_NAME[] = "FriendlyName";
constexpr char FULL_NAME[] = "FullName";
constexpr char VENDOR_NAME[] = "VendorName";
constexpr char DEVICE_CLASS[] = "DeviceClass";

constexpr char EMULATOR_CLASS[] = "QuorelCamEmu";
/// Known device classes, highest priority first.
constexpr const char *CLASSES_BY_PRIORITY[] = {"QuorelUsb", "QuorelGigE", "QuorelCameraLink", "Quorel1394",
                                               "QuorelBcon"};

/// 5 for the first known class down to 1 for the last, 0 for any other.
auto Priority(const String_t &deviceClass) {
    return std::end(CLASSES_BY_PRIORITY) -
           std::find(std::begin(CLASSES_BY_PRIORITY), std::end(CLASSES_BY_PRIORITY), deviceClass);
}

} // namespace

CInfoBase::CInfoBase() : m_pImpl(std::make_unique<CInfoImpl>()) {}

CInfoBase::CInfoBase(const CInfoBase &other) : IProperties(), m_pImpl(std::make_unique<CInfoImpl>(*other.m_pImpl)) {}

CInfoBase &CInfoBase::operator=(const CInfoBase &other) {
    if (this != &other)
        *m_pImpl = *other.m_pImpl;
    return *this;
}

CInfoBase::~CInfoBase() = default;

int CInfoBase::GetPropertyNames(StringList_t &names) const { return m_pImpl->GetPropertyNames(names); }

bool CInfoBase::GetPropertyAvailable(const String_t &name) const { return m_pImpl->GetPropertyAvailable(name); }

bool CInfoBase::GetPropertyValue(const String_t &name, String_t &value) const {
    return m_pImpl->GetPropertyValue(name, value);
}

CInfoBase &CInfoBase::SetPropertyValue(const String_t &name, const String_t &value) {
    m_pImpl->SetPropertyValue(name, value);
    return *this;
}

bool CInfoBase::IsSubset(const IProperties &subset) const { return m_pImpl->IsSubset(subset); }

bool CInfoBase::IsUserProvided() const { return m_pImpl->IsUserProvided(); }

String_t CInfoBase::GetStandardProperty(const String_t &name) const {
    String_t value;
    return GetPropertyValue(name, value) ? value : String_t(PropertyNotAvailable);
}

String_t CInfoBase::GetFriendlyName() const { return GetStandardProperty(FRIENDLY_NAME); }

CInfoBase &CInfoBase::SetFriendlyName(const String_t &value) {
    SetPropertyValue(FRIENDLY_NAME, value);
    return *this;
}

bool CInfoBase::IsFriendlyNameAvailable() const { return GetPropertyAvailable(FRIENDLY_NAME); }

String_t CInfoBase::GetFullName() const { return GetStandardProperty(FULL_NAME); }

CInfoBase &CInfoBase::SetFullName(const String_t &value) {
    SetPropertyValue(FULL_NAME, value);
    return *this;
}

bool CInfoBase::IsFullNameAvailable() const { return GetPropertyAvailable(FULL_NAME); }

String_t CInfoBase::GetVendorName() const { return GetStandardProperty(VENDOR_NAME); }

CInfoBase &CInfoBase::SetVendorName(const String_t &value) {
    SetPropertyValue(VENDOR_NAME, value);
    return *this;
}

bool CInfoBase::IsVendorNameAvailable() const { return GetPropertyAvailable(VENDOR_NAME); }

String_t CInfoBase::GetDeviceClass() const { return GetStandardProperty(DEVICE_CLASS); }

CInfoBase &CInfoBase::SetDeviceClass(const String_t &value) {
    SetPropertyValue(DEVICE_CLASS, value);
    return *this;
}

bool CInfoBase::IsDeviceClassAvailable() const { return GetPropertyAvailable(DEVICE_CLASS); }

bool CInfoBase::operator==(const CInfoBase &other) const { return *m_pImpl == *other.m_pImpl; }

bool CInfoBase::operator<(const CInfoBase &other) const {
    const String_t mine = GetDeviceClass();
    const String_t others = other.GetDeviceClass();
    if (mine == others)
        return false;
    if (Priority(mine) != 0 || Priority(others) != 0)
        return Priority(mine) > Priority(others);
    if (mine == EMULATOR_CLASS || others == EMULATOR_CLASS)
        return others == EMULATOR_CLASS;
    return mine < others;
}

} // namespace Corvo
