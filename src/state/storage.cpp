#include <sys/mman.h>

#include <cstdint>
#include <limits>
#include <new>

#include "mod_p3dgrid/arrays.hpp"
#include "mod_p3dgrid/run.hpp"

namespace mod_p3dgrid {
namespace {

constexpr std::align_val_t alignment{64};  // a cache line

constexpr std::uintptr_t huge_page = std::uintptr_t{2} * 1024 * 1024;

bool huge_pages = false;

}  // namespace

void p3dsethugepages(bool wanted) {
  huge_pages = wanted;
}

namespace detail {

void* acquire_storage(std::uint64_t bytes) noexcept {
  if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max())) {
    return nullptr;
  }
  // An allocated array without elements needs an address too.
  void* const storage = ::operator new(bytes == 0 ? 1 : bytes, alignment, std::nothrow);
  advise_storage(storage, bytes);
  return storage;
}

void advise_storage(void* storage, std::uint64_t bytes) noexcept {
  if (!huge_pages || storage == nullptr) return;
  // Only whole pages within the storage.
  const auto begin = reinterpret_cast<std::uintptr_t>(storage);
  const std::uintptr_t first = (begin + huge_page - 1) / huge_page * huge_page;
  const std::uintptr_t last = (begin + bytes) / huge_page * huge_page;
  if (first >= last) return;
  ::madvise(static_cast<char*>(storage) + (first - begin), last - first, MADV_HUGEPAGE);
}

void release_storage(void* storage) noexcept {
  ::operator delete(storage, alignment);
}

}  // namespace detail
}  // namespace mod_p3dgrid
