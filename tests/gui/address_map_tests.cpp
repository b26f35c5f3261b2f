#include "Lanvane/AddressMapModel.h"
#include "QtText.h"
#include "commissioning/AddressText.h"

#include <gmock/gmock.h>

using namespace commissioning;

namespace {

TEST(AddressMap, TellsWhoHasAnAddress) {
    Inventory inventory;
    inventory.adapters.resize(2);
    inventory.adapters[0].name = "eth1";
    inventory.adapters[0].addresses = {{0x0A000105, 0xFFFFFE00}};
    inventory.adapters[1].name = "eth2";
    inventory.adapters[1].addresses = {{0x0A000106, 0xFFFFFF00}};
    inventory.cameras.resize(2);
    inventory.cameras[0].mac = "025AE3000001";
    inventory.cameras[0].model = "<b>M";
    inventory.cameras[0].address = 0x0A000007;
    inventory.cameras[0].stored = StoredAddresses{0x0A000008, 0xFFFFFE00, 0};
    inventory.cameras[1].mac = "025AE3000002";
    inventory.cameras[1].name = "left";
    inventory.cameras[1].address = 0x0A000009;
    AddressMapModel model(inventory, inventory.adapters[0].addresses[0], {0x0A000007, 0x0A00000A}, {});
    model.add({{0x0A00000C}, {{0x0A00000B, "025AE3000009"}, {0x0A000007, "025AE3000001"}}});
    const struct {
        Address address;
        const char *cell, *tip;
    } cases[] = {
        {0x09FFFFFF, "", ""},
        {0x0A000000, "0", "10.0.0.0: the network itself"},
        {0x0A000007, "C7", "10.0.0.7: camera &lt;b&gt;M, 02:5A:E3:00:00:01"},
        {0x0A000008, "C8", "10.0.0.8: camera &lt;b&gt;M, 02:5A:E3:00:00:01, which has it stored"},
        {0x0A000009, "C9", "10.0.0.9: camera left, 02:5A:E3:00:00:02"},
        {0x0A00000A, "P10", "10.0.0.10: planned for another camera"},
        {0x0A00000B, "\u00D711", "10.0.0.11: another device, MAC 02:5A:E3:00:00:09"},
        {0x0A00000C, "\u25CB12", "10.0.0.12: free"},
        {0x0A00000D, "?13", "10.0.0.13: not asked yet"},
        {0x0A0000FF, "?255", "10.0.0.255: not asked yet"}, // a host's, in a subnet of two pages
        {0x0A000105, "H5", "10.0.1.5: this computer (eth1)"},
        {0x0A000106, "H6", "10.0.1.6: this computer (eth2)"},
        {0x0A0001FF, "255", "10.0.1.255: the broadcast address"},
        {0x0A000200, "", ""},
    };
    for (const auto &each : cases) {
        model.turnTo(each.address);
        const QModelIndex index = model.indexOf(each.address);
        EXPECT_EQ(each.address, model.addressAt(index));
        EXPECT_EQ(QString::fromUtf8(each.cell), model.data(index, Qt::DisplayRole).toString()) << each.tip;
        const QString tip = *each.tip ? QString("<span>%1</span>").arg(each.tip) : QString();
        EXPECT_EQ(tip, model.data(index, Qt::ToolTipRole).toString());
    }
    model.turnTo(0x0A000000);
    EXPECT_EQ("0 1 249", QString("%1 %2 %3")
                             .arg(model.hasPrevious())
                             .arg(model.hasNext())
                             .arg(model.addressesOf(AddressMapModel::Kind::Unknown).size()));
    model.forgetPage();
    EXPECT_EQ(251u, model.addressesOf(AddressMapModel::Kind::Unknown).size());
    model.turnTo(0x0A000105);
    EXPECT_TRUE(model.hasPrevious() && !model.hasNext());
}

} // namespace
