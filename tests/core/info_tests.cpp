#include "MinimalCorvo/Container.h"
#include "MinimalCorvo/DeviceInfo.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using namespace Corvo;
using testing::ElementsAre;

TEST(PropertyBag, FlagsTellAddedFromOverwrittenValues) {
    CPropertyBag bag;
    bag.SetPropertyValue("a", "1");
    EXPECT_TRUE(bag.IsExtended() && !bag.IsModified());
    bag.ClearAccessFlags();
    bag.SetPropertyValue("a", "2");
    EXPECT_TRUE(!bag.IsExtended() && bag.IsModified());
}

TEST(PropertyBag, HiddenPropertiesAreReadableButNeitherListedNorCounted) {
    CPropertyBag bag;
    bag.SetPropertyValue("b", "1").SetPropertyValue("_h", "2").SetPropertyValue("B", "3").SetPropertyValue("", "4");
    StringList_t names(2, "x");
    EXPECT_EQ(5, bag.GetPropertyNames(names));
    EXPECT_THAT(names, ElementsAre("x", "x", "", "B", "b"));
    EXPECT_EQ(3, bag.GetCount());
    String_t value = "untouched";
    EXPECT_FALSE(bag.GetPropertyValue("h", value));
    EXPECT_EQ("untouched", value);
    EXPECT_TRUE(bag.GetPropertyAvailable("_h") && bag.GetPropertyValue("_h", value));
    EXPECT_EQ("2", value);
}

TEST(PropertyBag, SubsetTestsVisiblePropertiesOfTheSubset) {
    CPropertyBag bag, subset;
    bag.SetPropertyValue("a", "1").SetPropertyValue("b", "2").SetPropertyValue("_h", "3");
    EXPECT_TRUE(bag.IsSubset(subset) && bag.IsSubset(bag));
    subset.SetPropertyValue("a", "1").SetPropertyValue("_h", "other").SetPropertyValue("_i", "");
    EXPECT_TRUE(bag.IsSubset(subset));
    EXPECT_FALSE(subset.IsSubset(bag));
    EXPECT_FALSE(bag.IsSubset(subset.SetPropertyValue("a", "2")));
}

class EnumeratedInfo : public CInfoBase {
public:
    EnumeratedInfo() { Impl().ClearUserProvidedFlag(); }
    bool IsExtended() const { return Impl().IsExtended(); }
};

TEST(Info, CopiesOwnTheirPropertiesAndCarryTheFlags) {
    EnumeratedInfo source;
    source.SetPropertyValue("a", "1");
    EnumeratedInfo copy(source);
    EXPECT_TRUE(copy.IsExtended() && !copy.IsUserProvided());
    CInfoBase assigned;
    EXPECT_TRUE(assigned.IsUserProvided() && !(assigned == source));
    assigned = source;
    EXPECT_TRUE(assigned == source && !assigned.IsUserProvided());
    copy.SetPropertyValue("_h", "hidden ones count");
    assigned.SetPropertyValue("a", "2");
    EXPECT_FALSE(copy == source || assigned == source);
}

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
