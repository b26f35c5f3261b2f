#include "Lanvane/AddressText.h"
#include "Lanvane/ipaddresswidget.h"
#include "QtText.h"

TEST(AddressText, CleansAddresses) {
    expectRewrites({" -> 0.0.0.0", " \t -> 0.0.0.0", " 192.168.001.010  -> 192.168.1.10", "001.2.3.4 -> 01.2.3.4",
                    "10.100.200.000 -> 10.100.200.0", "192.168.0.10 -> 192.168.0.10"},
                   [](QString text) {
                       fixupIpAddress(text);
                       return text;
                   });
}

TEST(AddressText, CleansMacAddresses) {
    QString text = QString::fromUtf8(" 02-5A-E3:1a-2b-3cGé\u0663");
    fixupMacAddress(text);
    EXPECT_EQ(text, "025AE31a2b3c");
}

TEST(AddressText, SuggestsTheMaskOfTheClass) {
    expectRewrites({"0.0.1.0 -> 255.0.0.0", "127.255.255.255 -> 255.0.0.0", "128.0.0.0 -> 255.255.0.0",
                    "191.255.255.255 -> 255.255.0.0", "192.0.0.0 -> 255.255.255.0", "192.168.000.001 -> 255.255.255.0",
                    "223.255.255.255 -> 255.255.255.0", "224.0.0.0 -> ", "255.255.255.255 -> ", "10.1 -> ", "::1 -> "},
                   [](const QString &text) { return IpAddressWidget::subnetFromAddress(text).toString(); });
}
