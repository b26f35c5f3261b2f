#pragma once

/// \file
/// Library-wide entry points.

#include "gxapi/GxStatus.h"

#include <cstddef>
#include <cstdint>

namespace Gx {

/// Reads the process-wide settings from the environment. Call once, before any other thread uses the library.
///
/// CORVO_BROADCAST_RECV_BUF_SIZE: receive buffer of each broadcast socket in bytes (decimal, not 0; default 65536).
[[nodiscard]] GXSTATUS Init() noexcept;
[[nodiscard]] GXSTATUS Exit() noexcept;

/// Version of the library's interface.
void GetVersion(std::uint32_t *pMajor, std::uint32_t *pMinor) noexcept;

/// Copies the English text of a status code as UTF-8.
///
/// \param buffer receives the text and its terminator; may be null with a size of 0 to ask for the length only.
/// \param bufferSize bytes in buffer. A buffer of exactly the text's length is accepted and receives one byte more,
///        the terminator: pass buffers with room to spare.
/// \param pRequiredSize if not null, receives the length of the text without its terminator.
/// \return 0; GX_E_INVALID_PARAMETER for a null buffer with a size; GX_E_BUFFER_TOO_SMALL (nothing is copied);
///         GX_FALSE for a code without text.
[[nodiscard]] GXSTATUS GetStatusMessage(GXSTATUS code, char *buffer, std::size_t bufferSize,
                                        std::size_t *pRequiredSize) noexcept;

} // namespace Gx
