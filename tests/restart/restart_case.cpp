#include "restart/restart_case.hpp"

#include <algorithm>
#include <cstdio>

#include "MOD_P3DReader.hpp"

namespace test_support {

using mod_p3dgrid::integer;

std::string name_of(const RestartForm& form) {
  const char* const encodings[]{"Unformatted", "Formatted", "Binary"};
  std::string name = "Layout" + std::to_string(form.layout) + encodings[form.iformat] +
                     (form.dblprec ? "Double" : "Single") + std::to_string(form.blocks) +
                     (form.blocks == 1 ? "Block" : "Blocks") + (form.multiblock ? "" : "Uncounted");
  for (const auto& [first, last] : form.sections) {
    name += "S" + std::to_string(first) + "to" + std::to_string(last);
  }
  return name;
}

std::vector<RestartForm> all_restart_forms() {
  std::vector<RestartForm> all;
  for (const int layout : {0, 1, 2, 3, 100, 101, 102}) {
    for (const int iformat : {0, 1, 2}) {
      for (const bool dblprec : {false, true}) {
        for (const int blocks : {1, 3}) {
          const bool one_block_only = layout == 101 || layout == 102;
          if (one_block_only && blocks > 1) continue;
          for (const auto& sections : {std::vector<std::pair<int, int>>{{1, 5}},
                                       {{1, 5}, {6, 7}},
                                       {{1, 5}, {6, 6}, {7, 9}}}) {
            all.push_back({layout, iformat, dblprec, blocks, sections, blocks > 1});
          }
        }
      }
    }
  }
  return all;
}

/// Collects one record, and ends it as the encoding has it.
class HandMadeRestart::Record {
 public:
  explicit Record(const HandMadeRestart& file) : file_(file) {}

  Record& integer(int value) {
    if (file_.form.iformat == 1) {
      number("%d", value);
    } else {
      bytes_.i4(value);
    }
    return *this;
  }
  Record& real(double value) {
    if (file_.rounded_) value = static_cast<float>(value);
    if (file_.form.iformat == 1) {
      number("%.17g", value);
    } else if (file_.form.wide()) {
      bytes_.r8(value);
    } else {
      bytes_.r4(static_cast<float>(value));
    }
    return *this;
  }
  /// A real that the header of text carries in double precision.
  Record& step(double value) {
    if (file_.form.iformat == 1 || file_.form.wide()) return plain(value);
    bytes_.r4(static_cast<float>(value));
    return *this;
  }
  /// A real that is a double in every file of records.
  Record& plain(double value) {
    if (file_.form.iformat == 1) {
      number("%.17g", value);
    } else {
      bytes_.r8(value);
    }
    return *this;
  }
  void end(std::string& file) {
    if (file_.form.iformat == 1) {
      file += text_ + "\n";
    } else if (file_.form.iformat == 0) {
      file += Bytes().record(bytes_).str();
    } else {
      file += bytes_.str();
    }
  }

 private:
  template <class T>
  void number(const char* format, T value) {
    char text[40];
    std::snprintf(text, sizeof text, format, value);
    text_ += (++on_line_ % 7 == 0 ? std::string("\n") : std::string(" ")) + text;
  }
  const HandMadeRestart& file_;
  Bytes bytes_;
  std::string text_;
  int on_line_ = 0;
};

int HandMadeRestart::extent(int block, int direction) {
  static constexpr int extents[3][3]{{2, 1, 2}, {3, 1, 1}, {1, 0, 4}};
  return extents[block][direction];
}

int HandMadeRestart::points(int block) {
  return extent(block, 0) * extent(block, 1) * extent(block, 2);
}

int HandMadeRestart::first_point(int block) const {
  int first = 0;
  for (int b = 0; b < block; ++b) first += points(b);
  return first;
}

int HandMadeRestart::all_points() const {
  return first_point(form.blocks);
}

int HandMadeRestart::highest_variable() const {
  int highest = 0;
  for (const auto& section : form.sections) highest = std::max(highest, section.second);
  return highest;
}

HandMadeRestart HandMadeRestart::rounded() const {
  HandMadeRestart other = *this;
  other.rounded_ = true;
  return other;
}

std::string HandMadeRestart::header() const {
  std::string file;
  const auto extents_of = [](Record& record, int block) {
    for (int d = 0; d < 3; ++d) record.integer(extent(block, d));
  };
  switch (form.layout) {
    case 0:
      Record(*this).integer(7).integer(equation_set).end(file);
      Record(*this)
          .integer(form.blocks)
          .integer(6)
          .integer(time_integration)
          .integer(1)
          .integer(steps)
          .step(step_size)
          .end(file);
      if (equation_set == 1) {
        Record parameters(*this);
        parameters.integer(3);
        for (int n = 1; n <= 8; ++n) parameters.plain(n + 0.1);
        parameters.end(file);
      }
      break;
    case 1:
    case 100:
      Record(*this).integer(steps).step(step_size).integer(form.blocks).end(file);
      break;
    case 101: {
      Record record(*this);
      extents_of(record, 0);
      record.integer(steps).step(step_size).end(file);
      break;
    }
    case 2:
    case 3: {
      if (form.multiblock) Record(*this).integer(form.blocks).end(file);
      Record record(*this);
      for (int b = 0; b < form.blocks; ++b) {
        extents_of(record, b);
        if (form.layout == 3) record.integer(highest_variable());
      }
      record.end(file);
      break;
    }
    default:
      break;
  }
  for (int b = 0; (form.layout == 0 || form.layout == 1) && b < form.blocks; ++b) {
    Record record(*this);
    extents_of(record, b);
    record.end(file);
  }
  return file;
}

void HandMadeRestart::put_variables(Record& record, int block, int first, int last) const {
  for (int v = first; v <= last; ++v) {
    for (int p = 0; p < points(block); ++p) record.real(flow(v, first_point(block) + p));
  }
}

std::string HandMadeRestart::body() const {
  std::string file;
  const bool triplets = form.layout == 100 || form.layout == 101;
  for (int b = 0; b < form.blocks; ++b) {
    if (form.layout == 2) {
      Record record(*this);
      for (int m = 1; m <= 4; ++m) record.real(parameter(b, m));
      record.end(file);
    }
    for (std::size_t s = 0; s < form.sections.size(); ++s) {
      Record record(*this);
      if (triplets && leading && s == 0) {
        for (int c = 1; c <= 3; ++c) {
          for (int p = 0; p < points(b); ++p) record.real(triplet(c, first_point(b) + p));
        }
      }
      put_variables(record, b, form.sections[s].first, form.sections[s].second);
      record.end(file);
    }
    for (int level = 0; level < older_levels; ++level) {
      Record record(*this);
      put_variables(record, b, form.sections[0].first, form.sections[0].second);
      record.end(file);
    }
  }
  for (std::size_t m = 0; form.layout == 101 && m < flags.size(); ++m) {
    Record(*this).integer(flags[m]).end(file);
    const bool three = flags[m] == 41 && m < 2;
    if (flags[m] != 1 && !three) continue;
    const int first = flags[m] == 1 || m == 0 ? 6 : 11;
    const int last = flags[m] == 1 ? 10 : first + 2;
    for (int b = 0; b < form.blocks; ++b) {
      Record record(*this);
      put_variables(record, b, first, last);
      record.end(file);
    }
  }
  return file;
}

std::vector<float> HandMadeRestart::varvalues(int variables) const {
  std::vector<float> all;
  for (int p = 0; p < all_points(); ++p) {
    for (int v = 1; v <= variables; ++v) all.push_back(static_cast<float>(flow(v, p)));
  }
  return all;
}

std::vector<float> HandMadeRestart::auxvalues() const {
  std::vector<float> all;
  for (int p = 0; p < all_points(); ++p) {
    for (int c = 1; c <= 3; ++c) all.push_back(static_cast<float>(triplet(c, p)));
  }
  return all;
}

Restart::Restart(int blocks) {
  for (int b = 0; b < blocks; ++b) {
    idim.push_back(HandMadeRestart::extent(b, 0));
    jdim.push_back(HandMadeRestart::extent(b, 1));
    kdim.push_back(HandMadeRestart::extent(b, 2));
    blockpoints.push_back(HandMadeRestart::points(b));
  }
}

void Restart::read(const char* name, const RestartForm& form) {
  mod_p3dgrid::readp3drestart(name, form.iformat, form.dblprec, static_cast<integer>(idim.size()),
                              blockpoints, varvalues, auxvalues, idim, jdim, kdim, form.layout,
                              form.multiblock);
}

void Restart::write(const char* name, const RestartForm& form, int nparamrows) const {
  mod_p3dgrid::writep3drestart(name, form.iformat, form.dblprec, nparamrows,
                               static_cast<integer>(idim.size()), varvalues, auxvalues, idim, jdim,
                               kdim, form.layout, form.multiblock);
}

void Restart::fill(int variables) {
  RestartForm form;
  form.blocks = static_cast<int>(idim.size());
  const HandMadeRestart made(form);
  varvalues.deallocate();
  auxvalues.deallocate();
  const auto points = made.all_points();
  if (varvalues.allocate(variables, points) != 0 || auxvalues.allocate(3, points) != 0) {
    throw std::bad_alloc();
  }
  std::ranges::copy(made.varvalues(variables), varvalues.data());
  std::ranges::copy(made.auxvalues(), auxvalues.data());
}

std::vector<ReleasedArray> released_arrays() {
  return {{{.layout = 2, .iformat = 2},
           [] { mod_p3dgrid::sqvar.deallocate(); },
           "sqvar was changed while it was in use: row 2 of 0"},
          {{.layout = 2, .iformat = 2, .dblprec = true},
           [] { mod_p3dgrid::dqvar.deallocate(); },
           "dqvar was changed while it was in use: row 2 of 0"},
          {{.layout = 3, .iformat = 2},
           [] { mod_p3dgrid::nfvar.deallocate(); },
           "nfvar was changed while it was in use: row 2 of 0"}};
}

void set_sections(const std::vector<std::pair<int, int>>& sections) {
  mod_gridvars::nfilesect = static_cast<integer>(sections.size());
  mod_gridvars::rstrtvarsct.fill(0);
  mod_gridvars::numrstrtvar.fill(0);
  for (std::size_t s = 0; s < sections.size(); ++s) {
    const auto k = static_cast<integer>(s + 1);
    mod_gridvars::rstrtvarsct(k, 1) = sections[s].first;
    mod_gridvars::rstrtvarsct(k, 2) = sections[s].second;
    mod_gridvars::numrstrtvar(k) = std::max(0, sections[s].second - sections[s].first + 1);
  }
}

}  // namespace test_support
