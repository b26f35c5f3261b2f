#include "MinimalCorvoGigETL/DistinctDevices.h"

#include <algorithm>
#include <utility>

namespace Corvo {

namespace {

/// The visible properties. Whoever forges acknowledges can make all but one of them alike.
std::string ContentOf(const CDeviceInfo &info) {
    StringList_t names;
    info.GetPropertyNames(names);
    std::string content;
    for (const String_t &name : names) {
        String_t value;
        info.GetPropertyValue(name, value);
        content.append(name.c_str()).append(1, '=').append(value.c_str()).append(1, '\n');
    }
    return content;
}

} // namespace

CDistinctDevices::CDistinctDevices(DeviceInfoList &list) : m_list(list) {
    for (std::size_t i = 0; i < m_list.size(); ++i)
        m_indicesByContent.emplace(ContentOf(m_list[i]), i);
}

bool CDistinctDevices::Add(const CDeviceInfo &info) {
    std::string content = ContentOf(info);
    const auto [begin, end] = m_indicesByContent.equal_range(content);
    if (std::any_of(begin, end, [&](const auto &entry) { return m_list[entry.second] == info; }))
        return false;
    m_list.push_back(info);
    m_indicesByContent.emplace(std::move(content), m_list.size() - 1);
    return true;
}

} // namespace Corvo
