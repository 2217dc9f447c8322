#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "fortran/host.hpp"
#include "mod_p3dgrid/arrays.hpp"

namespace mod_p3dgrid::fortran {

template <class T>
[[nodiscard]] const ArrayProcedures& procedures_for() {
  if constexpr (std::is_same_v<T, integer>) return procedures.integers;
  if constexpr (std::is_same_v<T, float>) return procedures.singles;
  return procedures.doubles;
}

/// An allocatable array of the host, for the duration of one operation, which allocates and fills
/// it in place. If the operation leaves it allocated, the host's array stays allocated.
template <class T, std::size_t Rank>
class HostArray final : detail::StorageOwner {
 public:
  explicit HostArray(Descriptor descriptor) : descriptor_(descriptor), array_(located()) {}
  HostArray(const HostArray&) = delete;
  HostArray& operator=(const HostArray&) = delete;
  ~HostArray() { array_.leave(); }

  [[nodiscard]] operator allocatable<T, Rank>&() { return array_; }

 private:
  void* acquire(std::span<const std::int64_t> extents, std::uint64_t bytes) noexcept override {
    void* const storage = procedures_for<T>().allocate(descriptor_, extents.data());
    detail::advise_storage(storage, bytes);
    return storage;
  }
  void release() noexcept override { procedures_for<T>().release(descriptor_); }

  allocatable<T, Rank> located() {
    std::array<std::int64_t, Rank> extents{};
    void* const storage = procedures_for<T>().locate(descriptor_, extents.data());
    return {*this, static_cast<T*>(storage), extents};
  }

  Descriptor descriptor_;
  allocatable<T, Rank> array_;
};

template <class Real>
[[nodiscard]] array_view<Real, 2> reals(const GivenArray& array) {
  return {static_cast<Real*>(array.address), array.extents[0], array.extents[1]};
}

/// Calls `act` with the array as one of `float` or `double`.
template <class Act>
void with_reals(const GivenArray& array, Act act) {
  if (array.real_bytes == sizeof(float)) return act(reals<const float>(array));
  act(reals<const double>(array));
}

}  // namespace mod_p3dgrid::fortran
