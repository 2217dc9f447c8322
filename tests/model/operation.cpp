#include "model/operation.hpp"

#include <ostream>

namespace model {
namespace {

using mod_p3dgrid::integer;

constexpr std::array names{"read_grid",
                           "read_grid_header",
                           "write_grid",
                           "read_restart_header",
                           "write_restart_header",
                           "check",
                           "read_restart",
                           "write_restart",
                           "read_next_variable",
                           "write_next_variable",
                           "combine",
                           "write_tecplot",
                           "close_unit",
                           "set_debug",
                           "release_nfvar",
                           "release_sqvar",
                           "release_dqvar",
                           "set_flags"};
static_assert(names.size() == acts);

Operation make_operation(bool with_failures) {
  Operation made;
  made.act = static_cast<Act>(*rc::gen::inRange(0, acts));
  made.layout = *rc::gen::element(1, 0, 2, 3, 100, 101, 102);
  made.iformat = *rc::gen::inRange(0, 3);
  made.dblprec = *rc::gen::arbitrary<bool>();
  made.blocks = *rc::gen::inRange(1, 4);
  made.multiblock = *rc::gen::arbitrary<bool>();
  made.sections = *rc::gen::inRange(1, 3);
  made.variable = *rc::gen::inRange(1, 8);
  made.flags = *rc::gen::inRange(0, 6);
  made.equation_set = *rc::gen::element(2, 1);
  made.time_integration = *rc::gen::element(0, 0, 2, 3);
  made.readallvars = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
  made.unit = *rc::gen::element(13, 22, 23, 201, 301, 302, 303, 308, 594);
  made.write_first = *rc::gen::weightedElement<bool>({{2, true}, {1, false}});
  if (with_failures) {
    made.missing =
        *rc::gen::weightedOneOf<int>({{2, rc::gen::just(0)}, {1, rc::gen::inRange(1, 9)}});
    if (*rc::gen::inRange(0, 12) == 11) made.iformat = 7;
    if (*rc::gen::inRange(0, 12) == 11) made.layout = 7;
    if (*rc::gen::inRange(0, 12) == 11) made.variable = *rc::gen::element(16, 0);
  }
  // What a file of these forms cannot hold.
  if (made.layout == 101 || made.layout == 102) made.blocks = 1;
  if (made.blocks > 1) made.multiblock = true;
  if (made.layout == 101) made.sections = 1;
  return made;
}

}  // namespace

rc::Gen<Operation> any_operation(bool with_failures) {
  // Ranges grow with the size of a case; a short sequence is to choose from all acts too.
  return rc::gen::resize(rc::kNominalSize,
                         rc::gen::exec([with_failures] { return make_operation(with_failures); }));
}

void showValue(const Operation& made, std::ostream& out) {
  out << '\n'
      << names[static_cast<std::size_t>(made.act)] << ": layout " << made.layout << " iformat "
      << made.iformat << " dblprec " << made.dblprec << " blocks " << made.blocks << " multiblock "
      << made.multiblock << " missing " << made.missing << " sections " << made.sections
      << " variable " << made.variable << " flags " << made.flags << " equation_set "
      << made.equation_set << " time_integration " << made.time_integration << " readallvars "
      << made.readallvars << " unit " << made.unit << " write_first " << made.write_first;
}

std::array<integer, 3> flags_of(const Operation& operation) {
  constexpr std::array<std::array<integer, 3>, 6> chains{
      {{999, 4, 4}, {1, 999, 4}, {41, 999, 4}, {1, 41, 999}, {41, 41, 999}, {7, 7, 7}}};
  return chains[static_cast<std::size_t>(operation.flags)];
}

std::array<integer, 3> extents_of(int block) {
  constexpr std::array<std::array<integer, 3>, 3> all{{{2, 1, 2}, {3, 1, 1}, {1, 0, 4}}};
  return all[static_cast<std::size_t>(block)];
}

}  // namespace model
