#pragma once

#include "state/unit.hpp"

namespace test_support {

/// A unit whose reads return whether they succeed.
class Unit : public mod_p3dgrid::Unit {
 public:
  using mod_p3dgrid::Unit::Unit;

  [[nodiscard]] bool read(const mod_p3dgrid::recordio::ReadList& list) const {
    return succeeds([&] { mod_p3dgrid::Unit::read(list); });
  }
  [[nodiscard]] bool expect_end() const {
    return succeeds([&] { mod_p3dgrid::Unit::expect_end(); });
  }
  [[nodiscard]] bool can_hold(std::int64_t values, mod_p3dgrid::recordio::FileKind kind,
                              mod_p3dgrid::recordio::Claim claim) const {
    return succeeds([&] { require_room(values, kind, claim, "many values"); });
  }

 private:
  template <class Read>
  static bool succeeds(Read read) {
    try {
      read();
      return true;
    } catch (const mod_p3dgrid::FailedRead&) {
      return false;
    }
  }
};

}  // namespace test_support
