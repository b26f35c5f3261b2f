#pragma once

#include <cstddef>
#include <functional>

namespace commissioning {

/// Calls a function for each index, on several threads, the caller's among them, and returns when all is done.
///
/// Where the host has not threads enough, half of what it has is left to the function, which may need threads of its
/// own. \param atOnce at most so many at a time. \throws what the first failed call threw, when the others have ended.
void sideBySide(std::size_t count, std::size_t atOnce, const std::function<void(std::size_t index)> &function);

/// Descriptors that this process can still open, less some for everybody else; at least 1.
std::size_t spareDescriptors();

} // namespace commissioning
