#include "faults/memory.hpp"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "support/recording_host.hpp"

namespace faults {
namespace {

bool watching = false;
FailingAllocations failing = FailingAllocations::none;
std::int64_t first_failing = 0;
std::int64_t allocation_count = 0;
std::int64_t byte_count = 0;

/// No test needs more; a request beyond it is refused rather than tried.
constexpr std::size_t most_bytes = std::size_t{1} << 30;

bool is_to_fail(std::size_t bytes) {
  if (!watching || test_support::host_at_work > 0) return false;
  ++allocation_count;
  byte_count += static_cast<std::int64_t>(std::min(bytes, most_bytes));
  if (bytes > most_bytes) return true;
  return failing == FailingAllocations::one              ? allocation_count == first_failing
         : failing == FailingAllocations::all_from_there ? allocation_count >= first_failing
                                                         : false;
}

void* allocate(std::size_t bytes) noexcept {
  return is_to_fail(bytes) ? nullptr : std::malloc(std::max<std::size_t>(1, bytes));
}

void* allocate(std::size_t bytes, std::align_val_t alignment) noexcept {
  if (is_to_fail(bytes)) return nullptr;
  const auto unit = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(unit, std::max<std::size_t>(1, (bytes + unit - 1) / unit) * unit);
}

void* or_throw(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

Watch::Watch(FailingAllocations which, std::int64_t nth) {
  failing = which;
  first_failing = nth;
  allocation_count = byte_count = 0;
  watching = true;
}

Watch::~Watch() {
  watching = false;
}

std::int64_t Watch::allocations() {
  return allocation_count;
}

std::int64_t Watch::bytes() {
  return byte_count;
}

}  // namespace faults

using faults::allocate;
using faults::or_throw;

void* operator new(std::size_t bytes) {
  return or_throw(allocate(bytes));
}
void* operator new[](std::size_t bytes) {
  return or_throw(allocate(bytes));
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocate(bytes);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return or_throw(allocate(bytes, alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
  return or_throw(allocate(bytes, alignment));
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(bytes, alignment);
}
void* operator new[](std::size_t bytes, std::align_val_t alignment,
                     const std::nothrow_t&) noexcept {
  return allocate(bytes, alignment);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(memory);
}
