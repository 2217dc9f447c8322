#include <limits>
#include <new>

#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid::detail {
namespace {
/// A cache line, so that no array shares one with another.
constexpr std::align_val_t alignment{64};
}  // namespace

void* acquire_storage(std::uint64_t bytes) noexcept {
  if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) {
    return nullptr;
  }
  // An array without elements is allocated too, so it needs an address.
  return ::operator new(bytes == 0 ? 1 : bytes, alignment, std::nothrow);
}

void release_storage(void* storage) noexcept {
  ::operator delete(storage, alignment);
}

}  // namespace mod_p3dgrid::detail
