#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>

#include "mod_p3dgrid/logical.hpp"

#pragma GCC visibility push(default)

namespace mod_p3dgrid {

/// @name Status of an allocation
/// Returned by `allocate` and `deallocate`, and passed to `mod_gridvars::checkallocationerror`.
/// @{

/// Success.
inline constexpr integer allocation_done = 0;
/// The array is allocated already; it is unchanged.
inline constexpr integer already_allocated = 1;
/// Not enough memory, or the size is not representable; the array is not allocated.
inline constexpr integer out_of_memory = 2;
/// The array to release is not allocated.
inline constexpr integer not_allocated = 3;
/// @}

namespace detail {
/// Uninitialised storage, aligned for any element; null on failure.
[[nodiscard]] void* acquire_storage(std::uint64_t bytes) noexcept;
void release_storage(void* storage) noexcept;
/// Advises the system to use huge pages for the storage, if the host wants them.
void advise_storage(void* storage, std::uint64_t bytes) noexcept;

/// An array of another language that provides the storage of an `allocatable`.
class StorageOwner {
 public:
  /// Allocates the other array with the given extents, `bytes` bytes in all. Null on failure, else
  /// not null.
  [[nodiscard]] virtual void* acquire(std::span<const std::int64_t> extents,
                                      std::uint64_t bytes) noexcept = 0;
  /// Deallocates it.
  virtual void release() noexcept = 0;

 protected:
  ~StorageOwner() = default;
};

/// Position of element (i, j, ...) in Fortran order: first index fastest, indices from 1.
template <std::size_t Rank, class... Index>
[[nodiscard]] constexpr std::size_t fortran_offset(const std::array<std::int64_t, Rank>& extents,
                                                   Index... index) noexcept {
  static_assert(sizeof...(Index) == Rank, "one index for each dimension");
  const std::array<std::int64_t, Rank> at{static_cast<std::int64_t>(index)...};
  std::int64_t offset = 0;
  for (std::size_t d = Rank; d-- > 0;) {
    assert(at[d] >= 1 && at[d] <= extents[d]);
    offset = offset * extents[d] + (at[d] - 1);
  }
  return static_cast<std::size_t>(offset);
}
}  // namespace detail

template <class T, std::size_t Rank>
class array_view;

/// Array of rank 1 or 2 that owns its storage and is allocated and released explicitly.
///
/// Elements are in Fortran order (first index fastest) with indices from 1: `a(i)`, `a(i, j)`.
/// Allocation leaves them uninitialised. Spans and pointers are valid until the storage is
/// released.
template <class T, std::size_t Rank>
class allocatable {
  static_assert(std::is_trivially_copyable_v<T> && (Rank == 1 || Rank == 2));

 public:
  /// An array that is not allocated.
  allocatable() noexcept = default;
  /// Arrays are not copied implicitly.
  allocatable(const allocatable&) = delete;
  allocatable& operator=(const allocatable&) = delete;
  /// Takes the storage of `other`, which is not allocated afterwards.
  allocatable(allocatable&& other) noexcept
      : storage_(std::exchange(other.storage_, nullptr)),
        extents_(std::exchange(other.extents_, {})),
        owner_(other.owner_) {}
  /// Releases the storage and takes that of `other`, which is not allocated afterwards. If the
  /// arrays have different storage owners, the elements are copied; if there is no memory for the
  /// copy, this array is not allocated.
  // cppcheck-suppress operatorEqVarError ; an array keeps its owner
  allocatable& operator=(allocatable&& other) noexcept {
    if (this == &other) return *this;
    release();
    extents_ = std::exchange(other.extents_, {});
    if (owner_ == other.owner_ || !other.allocated()) {
      storage_ = std::exchange(other.storage_, nullptr);
      return *this;
    }
    storage_ = acquire();
    if (allocated()) std::copy_n(other.storage_, size(), storage_);
    other.release();
    return *this;
  }
  /// Releases the storage.
  ~allocatable() { release(); }

  /// Allocates with the given extents; a negative extent counts as 0. Returns `allocation_done`,
  /// `already_allocated` or `out_of_memory`. After `out_of_memory` `extent` returns the requested
  /// extents, but the array is not allocated and its size is 0.
  template <class... Extent>
  [[nodiscard]] integer allocate(Extent... extent) noexcept {
    static_assert(sizeof...(Extent) == Rank, "one extent for each dimension");
    if (allocated()) return already_allocated;
    extents_ = {(extent > 0 ? static_cast<std::int64_t>(extent) : 0)...};
    storage_ = acquire();
    return allocated() ? allocation_done : out_of_memory;
  }

  /// Releases the storage. Returns `allocation_done`, or `not_allocated` if there is none.
  integer deallocate() noexcept {
    if (!allocated()) return not_allocated;
    release();
    extents_ = {};
    return allocation_done;
  }

  /// Whether it has storage, even for no elements.
  [[nodiscard]] bool allocated() const noexcept { return storage_ != nullptr; }

  /// Extent of dimension 1 or 2 of the last `allocate`.
  [[nodiscard]] std::int64_t extent(std::size_t dimension) const noexcept {
    assert(dimension >= 1 && dimension <= Rank);
    return extents_[dimension - 1];
  }

  /// Number of elements; 0 while not allocated.
  [[nodiscard]] std::int64_t size() const noexcept {
    if (!allocated()) return 0;
    std::int64_t elements = 1;
    for (const std::int64_t e : extents_) elements *= e;
    return elements;
  }

  /// The first element; null while not allocated.
  [[nodiscard]] T* data() noexcept { return storage_; }
  /// @copydoc data()
  [[nodiscard]] const T* data() const noexcept { return storage_; }
  /// All elements in Fortran order.
  [[nodiscard]] std::span<T> span() noexcept {
    return {storage_, static_cast<std::size_t>(size())};
  }
  /// @copydoc span()
  [[nodiscard]] std::span<const T> span() const noexcept {
    return {storage_, static_cast<std::size_t>(size())};
  }

  /// Element at 1-based indices; checked by `assert`.
  template <class... Index>
  [[nodiscard]] T& operator()(Index... index) noexcept {
    assert(allocated());
    return storage_[detail::fortran_offset(extents_, index...)];
  }
  /// @copydoc operator()()
  template <class... Index>
  [[nodiscard]] const T& operator()(Index... index) const noexcept {
    assert(allocated());
    return storage_[detail::fortran_offset(extents_, index...)];
  }

  /// @cond INTERNAL
  /// An array whose storage `owner` provides.
  /// @param storage  what the owner holds already; null for an array that is not allocated
  allocatable(detail::StorageOwner& owner, T* storage,
              const std::array<std::int64_t, Rank>& extents) noexcept
      : storage_(storage), extents_(extents), owner_(&owner) {}
  /// An array that is not allocated and can be moved to this one without a copy.
  [[nodiscard]] allocatable sibling() const noexcept {
    allocatable result;
    // The owner of an allocated array has no second one.
    if (!allocated()) result.owner_ = owner_;
    return result;
  }
  /// Leaves the storage to its owner.
  void leave() noexcept { storage_ = nullptr; }
  /// @endcond

 private:
  /// Storage for the extents; null if there is not enough.
  T* acquire() noexcept {
    std::uint64_t bytes = sizeof(T);
    for (const std::int64_t e : extents_) {
      if (__builtin_mul_overflow(bytes, static_cast<std::uint64_t>(e), &bytes)) return nullptr;
    }
    if (owner_ != nullptr) return static_cast<T*>(owner_->acquire(extents_, bytes));
    return static_cast<T*>(detail::acquire_storage(bytes));
  }
  void release() noexcept {
    if (owner_ == nullptr) return detail::release_storage(std::exchange(storage_, nullptr));
    if (std::exchange(storage_, nullptr) != nullptr) owner_->release();
  }

  T* storage_ = nullptr;
  std::array<std::int64_t, Rank> extents_{};
  detail::StorageOwner* owner_ = nullptr;
};

/// Array of fixed shape, in Fortran order with indices from 1.
template <class T, std::int64_t... Extent>
class fixed_array {
 public:
  /// Number of dimensions.
  static constexpr std::size_t rank = sizeof...(Extent);

  /// Extent of dimension 1, 2, ...
  [[nodiscard]] static constexpr std::int64_t extent(std::size_t dimension) noexcept {
    return extents[dimension - 1];
  }
  /// Number of elements.
  [[nodiscard]] static constexpr std::int64_t size() noexcept { return (Extent * ... * 1); }

  /// The first element.
  [[nodiscard]] T* data() noexcept { return values_.data(); }
  /// @copydoc data()
  [[nodiscard]] const T* data() const noexcept { return values_.data(); }
  /// All elements in Fortran order.
  [[nodiscard]] std::span<T> span() noexcept { return values_; }
  /// @copydoc span()
  [[nodiscard]] std::span<const T> span() const noexcept { return values_; }
  /// Sets every element to `value`.
  void fill(const T& value) { values_.fill(value); }

  /// Element at 1-based indices; checked by `assert`.
  template <class... Index>
  [[nodiscard]] T& operator()(Index... index) noexcept {
    return values_[detail::fortran_offset(extents, index...)];
  }
  /// @copydoc operator()()
  template <class... Index>
  [[nodiscard]] const T& operator()(Index... index) const noexcept {
    return values_[detail::fortran_offset(extents, index...)];
  }

  /// Whether all elements are equal.
  friend bool operator==(const fixed_array&, const fixed_array&) = default;

 private:
  static constexpr std::array<std::int64_t, rank> extents{Extent...};
  std::array<T, static_cast<std::size_t>(size())> values_{};
};

/// Non-owning view of an array in Fortran order with indices from 1, made from an `allocatable` or
/// from a pointer and extents; of rank 1 also from a span or a vector.
template <class T, std::size_t Rank>
class array_view {
  using Value = std::remove_const_t<T>;

 public:
  /// An empty view.
  constexpr array_view() noexcept = default;

  /// A view of as many elements as the product of the extents.
  template <class... Extent>
  requires(sizeof...(Extent) == Rank &&
           (std::is_integral_v<Extent> && ...)) constexpr array_view(T* data,
                                                                     Extent... extent) noexcept
      : data_(data), extents_{static_cast<std::int64_t>(extent)...} {}

  /// The whole array; empty if it is not allocated.
  array_view(std::conditional_t<std::is_const_v<T>, const allocatable<Value, Rank>,
                                allocatable<Value, Rank>>& array) noexcept {
    if (!array.allocated()) return;  // its extents may not be 0
    data_ = array.data();
    for (std::size_t d = 0; d < Rank; ++d) extents_[d] = array.extent(d + 1);
  }
  /// A read-only view of the same array.
  template <std::same_as<Value> U>
  array_view(const array_view<U, Rank>& other) noexcept requires std::is_const_v<T>
      : data_(other.data()), extents_(other.extents()) {}
  /// The elements of a span, or of a vector until it grows (rank 1).
  template <std::convertible_to<std::span<T>> Values>
  constexpr array_view(Values&& values) noexcept requires(Rank == 1)
      : data_(std::data(values)), extents_{std::ssize(values)} {}

  /// The first element; null for an empty view.
  [[nodiscard]] constexpr T* data() const noexcept { return data_; }
  /// All extents.
  [[nodiscard]] constexpr const std::array<std::int64_t, Rank>& extents() const noexcept {
    return extents_;
  }
  /// Extent of dimension 1 or 2.
  [[nodiscard]] constexpr std::int64_t extent(std::size_t dimension) const noexcept {
    assert(dimension >= 1 && dimension <= Rank);
    return extents_[dimension - 1];
  }

  /// Element at 1-based indices; checked by `assert`.
  template <class... Index>
  [[nodiscard]] constexpr T& operator()(Index... index) const noexcept {
    return data_[detail::fortran_offset(extents_, index...)];
  }

 private:
  T* data_ = nullptr;
  std::array<std::int64_t, Rank> extents_{};
};

/// Integers that an operation reads, such as the i extents of all blocks.
using integer_view = array_view<const integer, 1>;

/// An `array_view` as a parameter of the double-precision overloads. It has no default constructor,
/// so that `{}` selects the single-precision form.
template <class T, std::size_t Rank>
class array_argument : public array_view<T, Rank> {
 public:
  /// Accepts the same arguments as `array_view`.
  template <class First, class... Rest>
  requires std::constructible_from<array_view<T, Rank>, First, Rest...> array_argument(
      First&& first, Rest&&... rest)
  noexcept : array_view<T, Rank>(std::forward<First>(first), std::forward<Rest>(rest)...) {}
};

}  // namespace mod_p3dgrid

#pragma GCC visibility pop
