#pragma once

#include "recordio/record_list.hpp"
#include "recordio/unit.hpp"

/// The header records of restart files, each listed once for reading and writing: `Int` and
/// `Double` are const for writing.
namespace mod_p3dgrid {

/// Kind in which a header's time-step size is stored; text carries it in double precision.
[[nodiscard]] inline recordio::FileKind step_kind(const recordio::Unit& unit, logical dblprec) {
  return dblprec || !unit.stores_kinds() ? recordio::FileKind::real8 : recordio::FileKind::real4;
}

/// Layouts 1 and 100.
template <class Int, class Double>
[[nodiscard]] auto time_step_record(Int& steps, Double& step_size, Int& nblocks,
                                    recordio::FileKind kind) {
  return recordio::RecordList<recordio::MemoryOf<Int>>{
      recordio::scalar(steps), recordio::real_scalar(step_size, kind), recordio::scalar(nblocks)};
}

/// Layout 101.
template <class Int, class Double, class Steps>
[[nodiscard]] auto single_block_record(Int& i, Int& j, Int& k, Steps& steps, Double& step_size,
                                       recordio::FileKind kind) {
  return recordio::RecordList<recordio::MemoryOf<Int>>{recordio::scalar(i), recordio::scalar(j),
                                                       recordio::scalar(k), recordio::scalar(steps),
                                                       recordio::real_scalar(step_size, kind)};
}

/// The extents of one block in a record of their own, layouts 0 and 1.
template <class Int>
[[nodiscard]] auto block_extents_record(Int& i, Int& j, Int& k) {
  return recordio::RecordList<recordio::MemoryOf<Int>>{recordio::scalar(i), recordio::scalar(j),
                                                       recordio::scalar(k)};
}

}  // namespace mod_p3dgrid
