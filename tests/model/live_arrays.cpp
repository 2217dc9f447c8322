/// Replaces what memory is taken with by what counts it.

#include "model/live_arrays.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> arrays{0};
std::atomic<std::int64_t> pieces{0};

void* counted(void* memory, std::atomic<std::int64_t>& count) {
  if (memory != nullptr) ++count;
  return memory;
}

void release(void* memory, std::atomic<std::int64_t>& count) {
  if (memory != nullptr) --count;
  std::free(memory);
}

}  // namespace

namespace model {

std::int64_t live_arrays() {
  return arrays;
}

std::int64_t live_pieces() {
  return pieces;
}

}  // namespace model

void* operator new(std::size_t bytes) {
  if (void* const memory = counted(std::malloc(bytes == 0 ? 1 : bytes), pieces)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  release(memory, pieces);
}
void operator delete(void* memory, std::size_t) noexcept {
  release(memory, pieces);
}

void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  const auto multiple = static_cast<std::size_t>(alignment);
  return counted(std::aligned_alloc(multiple, (bytes + multiple - 1) / multiple * multiple),
                 arrays);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  release(memory, arrays);
}
