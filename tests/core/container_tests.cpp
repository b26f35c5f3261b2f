#include "MinimalCorvo/Container.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using namespace Corvo;

TEST(InfoList, SortsDevicesByClassThenSerialNumber) {
    DeviceInfoList list;
    list.push_back(CDeviceInfo().SetDeviceClass("QuorelGigE"));
    for (const char *serial : {"21", "100", "abc", "007", "-5", "9999999999999999999", "", "12", "12"})
        list.push_back(CDeviceInfo().SetDeviceClass("QuorelGigE").SetSerialNumber(serial));
    list.push_back(CDeviceInfo().SetDeviceClass("QuorelUsb").SetSerialNumber("999"));
    std::sort(list.begin(), list.end());
    String_t serials;
    for (const CDeviceInfo &info : list)
        serials += info.GetSerialNumber() + " ";
    EXPECT_EQ("999 007 12 12 21 100  -5 9999999999999999999 N/A abc ", serials);
}

} // namespace
