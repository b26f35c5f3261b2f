#pragma once

#include "MinimalCorvo/Container.h"

#include <string>
#include <unordered_map>

namespace Corvo {

/// Fills a list with infos, each equal one once. Compares only infos of the same content, so that thousands are no
/// burden. Nobody else may change the list meanwhile.
class CDistinctDevices {
public:
    /// \param list not owned; what it holds counts.
    explicit CDistinctDevices(DeviceInfoList &list);

    /// Appends an info. \return false when the list has one equal to it already.
    bool Add(const CDeviceInfo &info);

private:
    DeviceInfoList &m_list;
    std::unordered_multimap<std::string, std::size_t> m_indicesByContent;
};

} // namespace Corvo
