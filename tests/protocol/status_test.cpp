#include "Error.h"
#include "Utf8.h"
#include "gxapi/Gx.h"
#include "support/TraceLog.h"

#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

namespace {

struct FreeDeleter {
    void operator()(char *text) const { std::free(text); }
};

TEST(Status, ConvertsDeviceAndSystemErrors) {
    EXPECT_EQ(GxStatusFromGv(0), 0u);
    EXPECT_EQ(GxStatusFromGv(0x8006), 0xE1018006u);
    EXPECT_EQ(GxStatusFromGv(0x0089), 0x61010089u);
    EXPECT_EQ(GxStatusFromGv(0x12340000), 0u); // only the low 16 bits count
    EXPECT_EQ(GevStatusFromGx(0), 0x0000);
    EXPECT_EQ(GevStatusFromGx(0xE1018003), 0x8003);
    EXPECT_EQ(GevStatusFromGx(0x61010089), 0x0089);
    EXPECT_EQ(GevStatusFromGx(0xE1000007), 0x8008);
    EXPECT_EQ(GevStatusFromGx(0xE102006E), 0x8008);
    EXPECT_EQ(GxStatusFromErrno(ETIMEDOUT), 0xE102006Eu);
    EXPECT_EQ(GxStatusFromSocket(0xFFFF), 0xE102FFFFu);
    EXPECT_DEATH((void)GxStatusFromErrno(0x10000), "0 == \\(Errno & ~0xffff\\)");
    EXPECT_STREQ(GxDecodeErrnoError(ENETUNREACH), "Network is unreachable");
}

TEST(Status, TextsOfCodes) {
    const struct {
        GXSTATUS code;
        const char *text; // null: none
    } cases[] = {
        {0x21000001, "False."},
        {0xE1000002, "Response header not completely supplied."},
        {0xE100000A, "Response header not completely supplied."},
        {0, nullptr},
        {0xE100001F, nullptr},
        {0xE101800F, nullptr},
    };
    for (const auto &row : cases) {
        char *text = nullptr;
        const GXSTATUS status = GxDecodeGxStatus(row.code, &text);
        EXPECT_EQ(status, row.text ? 0u : 0x21000001u) << std::hex << row.code;
        EXPECT_STREQ(text, row.text) << std::hex << row.code;
        GxFreeMessage(text);
    }
}

TEST(Status, MessageIsCopiedByTheRulesOfItsBuffer) {
    const std::string text = "The requested operation timed out.";
    std::size_t required = 0;
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, nullptr, 0, &required), 0u);
    EXPECT_EQ(required, 34u);

    char buffer[64];
    std::fill(std::begin(buffer), std::end(buffer), 'x');
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, buffer, 33, &required), 0xE100000Du);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(required, 34u);
    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, buffer, 34, nullptr), 0u); // the terminator is the 35th byte
    EXPECT_EQ(buffer, text);
    EXPECT_EQ(buffer[35], 'x');

    EXPECT_EQ(Gx::GetStatusMessage(GX_E_TIMEOUT, nullptr, 1, &required), 0xE1000006u);
    TraceLog traces;
    EXPECT_EQ(Gx::GetStatusMessage(0x12345678, buffer, sizeof buffer, nullptr), 0x21000001u);
    EXPECT_TRUE(traces.contains("Failed to retrieve GX status message for code 0x12345678"));
    EXPECT_TRUE(traces.contains("Failed decode GX status code 0x12345678. Status = 0x21000001."));
}

TEST(Status, TextIsReencodedAsUtf8) {
    const struct {
        const char *in;
        const char *out;
    } cases[] = {
        {"", ""},
        {"plain", "plain"},
        {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x93\xB7", "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x93\xB7"},
        {"\xE4", "\xED\xB3\xA4"},                                                 // Latin-1 at the end
        {"\xC0\xAF", "\xED\xB3\x80\xED\xB2\xAF"},                                 // over-long slash
        {"\xED\xA0\x80", "\xED\xB3\xAD\xED\xB2\xA0\xED\xB2\x80"},                 // surrogate
        {"\xF4\x90\x80\x80", "\xED\xB3\xB4\xED\xB2\x90\xED\xB2\x80\xED\xB2\x80"}, // beyond U+10FFFF
        {"\xE2\x82", "\xED\xB3\xA2\xED\xB2\x82"},                                 // cut short
    };
    for (const auto &row : cases) {
        std::size_t length = 0;
        const std::unique_ptr<char, FreeDeleter> encoded(GxImp::EncodeUtf8(row.in, length));
        EXPECT_STREQ(encoded.get(), row.out);
        EXPECT_EQ(length, std::string(row.out).size());
    }
}

} // namespace
