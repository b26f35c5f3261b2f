#include "Lanvane/NetworkAdapter.h"
#include "QtText.h"
#include "support/Namespace.h"

namespace {

QStringList names(const CNetworkAdapterList &adapters) {
    QStringList result;
    for (const CNetworkAdapter &adapter : adapters)
        result += adapter.displayName();
    return result;
}

} // namespace

TEST(NetworkAdapterTest, NamesTheValidAddresses) {
    expectRewrites({"fe80::1/ffff:ffff:: -> ", "192.168.1.10/255.255.255.0 -> 192.168.1.1 - 192.168.1.254<br>",
                    "10.1.2.3/255.240.0.0 -> 10.0.0.1 - 10.15.255.254<br>",
                    "169.254.7.7/255.255.0.0 -> 169.254.1.0 - 169.254.254.255<br>",
                    "169.254.0.7/255.255.255.0 -> 169.254.1.0 - 169.254.254.255<br>",
                    "169.254.7.7/255.255.255.0 -> 169.254.7.1 - 169.254.7.254<br>",
                    "10.0.0.4/255.255.255.255 -> 10.0.0.5 - 10.0.0.4<br>",
                    ("fe80::1/ffff:: 10.0.0.1/255.0.0.0 192.168.1.1/255.255.255.252"
                     " -> 10.0.0.1 - 10.255.255.254<br>192.168.1.1 - 192.168.1.2<br>")},
                   [](const QString &line) {
                       QList<QNetworkAddressEntry> entries;
                       for (const QString &text : line.split(' '))
                           entries += addressEntry(text);
                       return FormatSubnetAddresses(entries);
                   });
    EXPECT_EQ(FormatSubnetAddresses(nullptr), "");
}

TEST(NetworkAdapterTest, ListsAdaptersThatCanHaveCameras) {
    testnet::ip("link set lo up");
    const testnet::Adapter one("one", "10.1.0.1/24");
    const testnet::Adapter bare("bare", "");
    const testnet::Adapter off("off", "10.2.0.1/24");
    const testnet::Adapter two("two", "10.3.0.1/24");
    testnet::ip("addr add 10.1.0.1/32 dev two");
    testnet::ip("addr flush dev bare"); // its IPv6 address too
    testnet::ip("link set off down");

    const CNetworkAdapterList adapters = CNetworkAdapter::allNetworkAdapters(
        QNetworkInterface::IsUp | QNetworkInterface::IsRunning, QNetworkInterface::IsLoopBack);
    ASSERT_EQ(names(adapters), QStringList({"one", "two"}));
    EXPECT_EQ(adapters.first().hardwareName(), adapters.first().hardwareAddress());
    EXPECT_FALSE(adapters.first().hardwareName().isEmpty());

    EXPECT_EQ(CNetworkAdapter::findByIpAddress(adapters, QHostAddress("10.3.0.1")), &adapters.at(1));
    EXPECT_EQ(CNetworkAdapter::findByIpAddress(adapters, QHostAddress("10.1.0.1")), &adapters.at(0)); // both own it
    EXPECT_EQ(CNetworkAdapter::findByIpAddress(adapters, QHostAddress("10.2.0.1")), nullptr);
}
