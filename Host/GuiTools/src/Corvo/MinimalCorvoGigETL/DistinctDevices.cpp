#include "MinimalCorvoGigETL/DistinctDevices.h"

#include <algorithm>

namespace Corvo {

namespace {

std::string MacOf(const CDeviceInfo &info) {
    String_t mac;
    info.GetPropertyValue("MacAddress", mac);
    return mac.c_str();
}

} // namespace

CDistinctDevices::CDistinctDevices(DeviceInfoList &list) : m_list(list) {
    for (std::size_t i = 0; i < m_list.size(); ++i)
        Remember(i);
}

bool CDistinctDevices::Add(const CDeviceInfo &info) {
    const auto [begin, end] = m_indicesByMac.equal_range(MacOf(info));
    if (std::any_of(begin, end, [&](const auto &entry) { return m_list[entry.second] == info; }))
        return false;
    m_list.push_back(info);
    Remember(m_list.size() - 1);
    return true;
}

void CDistinctDevices::Remember(std::size_t index) { m_indicesByMac.emplace(MacOf(m_list[index]), index); }

} // namespace Corvo
