#include "Error.h"
#include "Utf8.h"
#include "gxapi/Gx.h"
#include "support/TraceLog.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

TEST(Status, ConvertsDeviceAndSystemErrors) {
    EXPECT_EQ(GxStatusFromGv(0), 0u);
    EXPECT_EQ(GxStatusFromGv(0x8006), 0xE1018006u);
    EXPECT_EQ(GxStatusFromGv(0x0089), 0x61010089u);
    EXPECT_EQ(GxStatusFromGv(0x12340000), 0u); // only the low 16 bits count
    EXPECT_EQ(GevStatusFromGx(0xE1018003), 0x8003);
    EXPECT_EQ(GevStatusFromGx(0xE1000007), 0x8008);
    EXPECT_EQ(GxStatusFromErrno(ETIMEDOUT), 0xE102006Eu);
    EXPECT_EQ(GxStatusFromSocket(0xFFFF), 0xE102FFFFu);
    EXPECT_DEATH((void)GxStatusFromErrno(0x10000), "0 == \\(Errno & ~0xffff\\)");
    EXPECT_STREQ(GxDecodeErrnoError(ENETUNREACH), "Network is unreachable");
}

TEST(Status, TextsOfCodes) {
    const char *shared = "Response header not completely supplied.";
    const std::pair<GXSTATUS, const char *> cases[] = {{0x21000001, "False."}, {0xE1000002, shared},
                                                       {0xE100000A, shared},   {0, nullptr},
                                                       {0xE100001F, nullptr},  {0xE101800F, nullptr}};
    for (const auto &[code, expected] : cases) {
        char *text = nullptr;
        EXPECT_EQ(GxDecodeGxStatus(code, &text), expected ? 0u : 0x21000001u) << code;
        EXPECT_STREQ(text, expected) << code;
        GxFreeMessage(text);
    }
}

TEST(Status, MessageIsCopiedByTheRulesOfItsBuffer) {
    std::size_t required = 0;
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, nullptr, 0, &required), 0u);
    EXPECT_EQ(required, 34u);
    std::string buffer(64, 'x');
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, buffer.data(), 33, &required), 0xE100000Du);
    EXPECT_EQ(buffer, std::string(64, 'x'));
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, buffer.data(), 34, nullptr), 0u); // the terminator is the 35th byte
    EXPECT_EQ(buffer.substr(0, 36), std::string("The requested operation timed out.\0x", 36));
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, nullptr, 1, &required), 0xE1000006u);
    TraceLog traces;
    EXPECT_EQ(Gx::GetStatusMessage(0x12345678, buffer.data(), 64, nullptr), 0x21000001u);
    EXPECT_TRUE(traces.contains("Failed decode GX status code 0x12345678. Status = 0x21000001."));
}

TEST(Status, TextIsReencodedAsUtf8) {
    const std::pair<const char *, const char *> cases[] = {
        {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x93\xB7", "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x93\xB7"},
        {"\xE4", "\xED\xB3\xA4"},                                                 // Latin-1 at the end
        {"\xC0\xAF", "\xED\xB3\x80\xED\xB2\xAF"},                                 // over-long slash
        {"\xED\xA0\x80", "\xED\xB3\xAD\xED\xB2\xA0\xED\xB2\x80"},                 // surrogate
        {"\xF4\x90\x80\x80", "\xED\xB3\xB4\xED\xB2\x90\xED\xB2\x80\xED\xB2\x80"}, // beyond U+10FFFF
        {"\xE2\x82", "\xED\xB3\xA2\xED\xB2\x82"},                                 // cut short
    };
    for (const auto &[in, out] : cases) {
        std::size_t length = 0;
        char *encoded = GxImp::EncodeUtf8(in, length);
        EXPECT_STREQ(encoded, out);
        EXPECT_EQ(length, std::strlen(out));
        std::free(encoded);
    }
}

} // namespace
