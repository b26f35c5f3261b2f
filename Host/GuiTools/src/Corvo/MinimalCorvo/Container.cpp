#include "MinimalCorvo/Container.h"

#include <new>

namespace Corvo {

void *AllocateList(std::size_t size) { return ::operator new(size); }

void ReleaseList(void *memory) noexcept { ::operator delete(memory); }

} // namespace Corvo
