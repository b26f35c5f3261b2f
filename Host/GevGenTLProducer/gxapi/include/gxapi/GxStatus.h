#pragma once

/// \file
/// The status code that every operation of the protocol library returns, and its conversions.

#include <cstdint>

/// Status of an operation.
///
/// Bits 31-30 severity (0 success, 1 informational, 3 error), bit 29 customer bit (always 1 here), bits 27-16 facility
/// (0x100 library, 0x101 status reported by the device, 0x102 errno), bits 15-0 code. 0 is success. GX_FALSE is
/// returned where an operation ran correctly but found nothing.
using GXSTATUS = std::uint32_t;

/// Status field of a GVCP acknowledge; the top bit marks an error.
using GEV_STATUS = std::uint16_t;

enum : GXSTATUS {
    GX_SUCCESS = 0,
#define GX_STATUS(code, name, text) name = code, // NOLINT(bugprone-macro-parentheses): an enumerator takes none
#include "gxapi/GxStatusTable.inc"
#undef GX_STATUS
};

/// True when the severity of a status is "error".
constexpr bool GxFailed(GXSTATUS status) { return status >> 30 == 3; }

/// Status of facility 0x101 for the status of an acknowledge; informational when bit 15 is clear.
[[nodiscard]] GXSTATUS GxStatusFromGv(std::uint32_t gevStatus) noexcept;

/// The device status inside a status of facility 0x101; 0x8008 (local problem) for every other failure.
[[nodiscard]] GEV_STATUS GevStatusFromGx(GXSTATUS status) noexcept;

/// Status of facility 0x102 for an errno value, which must fit in 16 bits (asserted).
[[nodiscard]] GXSTATUS GxStatusFromErrno(int Errno) noexcept;
/// The same for the error of a socket operation.
[[nodiscard]] GXSTATUS GxStatusFromSocket(int error) noexcept;
