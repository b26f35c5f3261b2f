#include "MinimalCorvo/Container.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using namespace Corvo;

/// A separator between the values that sorting puts side by side, so that a test is one text.
template <class List, class Getter> String_t SortedTexts(List list, Getter get) {
    std::sort(list.begin(), list.end());
    String_t text;
    for (const auto &info : list)
        text += get(info) + " ";
    return text;
}

TEST(InfoList, SortsDevicesByClassThenSerialNumber) {
    DeviceInfoList list;
    list.push_back(CDeviceInfo().SetDeviceClass("QuorelGigE"));
    for (const char *serial : {"21", "100", "abc", "007", "-5", "9999999999999999999", "", "12", "12"})
        list.push_back(CDeviceInfo().SetDeviceClass("QuorelGigE").SetSerialNumber(serial));
    list.push_back(CDeviceInfo().SetDeviceClass("QuorelUsb").SetSerialNumber("999"));
    EXPECT_EQ("999 007 12 12 21 100  -5 9999999999999999999 N/A abc ",
              SortedTexts(list, [](const CDeviceInfo &info) { return info.GetSerialNumber(); }));
}

TEST(InfoList, SortsTransportLayersByPriorityAndTheEmulatorLast) {
    TlInfoList list(1); // its missing class reads "N/A"
    for (const char *name : {"QuorelCamEmu", "Zebra", "QuorelBcon", "QuorelGigE", "quorelusb", "Quorel1394",
                             "QuorelCamEmu", "QuorelUsb", "QuorelCameraLink", "Ant"}) {
        list.push_back(CTlInfo());
        list.back().SetDeviceClass(name);
    }
    EXPECT_EQ("QuorelUsb QuorelGigE QuorelCameraLink Quorel1394 QuorelBcon Ant N/A Zebra quorelusb QuorelCamEmu "
              "QuorelCamEmu ",
              SortedTexts(list, [](const CTlInfo &info) { return info.GetDeviceClass(); }));
    EXPECT_FALSE(list[1] < list[7]);
}

} // namespace
