#include "Answers.h"

#include "commissioning/DeviceInfos.h"

namespace commissioning {

SearchOptions Answers::options() {
    SearchOptions options;
    options.heard = [this](const Corvo::DeviceInfoList &answers) {
        for (const Corvo::CDeviceInfo &answer : answers)
            m_Senders[propertyOf(answer, PropertyMac).c_str()].insert(
                std::string(propertyOf(answer, "IpAddress").c_str()) + " " +
                propertyOf(answer, "SerialNumber").c_str());
    };
    return options;
}

bool Answers::isTwin(const std::string &mac) const {
    const auto senders = m_Senders.find(mac);
    return senders != m_Senders.end() && senders->second.size() > 1;
}

} // namespace commissioning
