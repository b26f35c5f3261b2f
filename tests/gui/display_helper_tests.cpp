#include "CorvoQtBase/DeviceText.h"
#include "CorvoQtBase/GevGuiHelper.h"
#include "MinimalCorvo/DeviceInfo.h"
#include "QtText.h"

TEST(DisplayHelpers, FormatIpConfigurations) {
    expectRewrites({"7 -> Static IP, DHCP, Auto IP", "5 -> Static IP, Auto IP", "6 -> DHCP, Auto IP", "4 -> Auto IP",
                    "0 -> ", "1 -> ", "3 -> ", " -> ", "N/A -> ", "0x7 -> "},
                   [](const QString &text) { return formatIPConfiguration(qPrintable(text), 0); });
    expectRewrites({"7 -> Static IP", "1 -> Static IP", "6 -> DHCP", "4 -> Auto IP", "8 -> "},
                   [](const QString &text) { return formatIPConfiguration(text.toUInt(), 1); });
    EXPECT_EQ(formatIPConfiguration(nullptr, 0), "");
    EXPECT_EQ(formatIPConfiguration(5U, 2), "Static IP, Auto IP");
}

TEST(DisplayHelpers, ReadPropertiesInTheEncodingOfTheDevice) {
    Corvo::CDeviceInfo info;
    info.SetModelName("Kam\xC3\xA9ra");
    EXPECT_FALSE(IsUtf8Device(nullptr) || IsUtf8Device(&info));
    info.SetDeviceClass("QuorelGigE");
    EXPECT_TRUE(IsUtf8Device(&info));
    EXPECT_EQ(GetUtf8Property(&info, "ModelName"), QString::fromUtf8("Kam\u00E9ra"));
    EXPECT_EQ(GetUtf8Property(&info, "NoSuchKey"), "N/A");
    EXPECT_EQ(GetUtf8Property(&info, nullptr) + GetUtf8Property(nullptr, "ModelName"), "");
}

TEST(DisplayHelpers, ShowDeviceTextsAsTheyAre) {
    const QString hostile = QString::fromUtf8("a\u202Eb\u2066c\r\n\x1B<img src=\"x\">\u2028&\u200Fé 😀");
    EXPECT_EQ(plainDeviceText(hostile), QString::fromUtf8("abc<img src=\"x\">&é 😀"));
    EXPECT_EQ(richDeviceText(hostile), QString::fromUtf8("abc&lt;img src=&quot;x&quot;&gt;&amp;é 😀"));
}
