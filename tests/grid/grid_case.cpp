#include "grid/grid_case.hpp"

#include <cstdio>

namespace test_support {

std::string HandMadeGrid::bytes(bool single_values) const {
  if (form_.iformat == 1) return text();
  Bytes file;
  const auto put = [&](const Bytes& record) {
    if (form_.iformat == 0) {
      file.record(record);
    } else {
      file.append(record);
    }
  };
  if (form_.multiblock) put(Bytes().i4(blocks()));
  Bytes dimensions;
  for (int b = 0; b < blocks(); ++b) {
    for (const int extent : extents(b)) dimensions.i4(extent);
  }
  put(dimensions);
  for (int b = 0; b < blocks(); ++b) {
    Bytes record;
    for (int c = 0; c < 3; ++c) {
      for (int p = 0; p < points(b); ++p) {
        const double value = coordinate(b, c, p);
        if (!form_.dblprec) {
          record.r4(static_cast<float>(value));
        } else {
          record.r8(single_values ? static_cast<float>(value) : value);
        }
      }
    }
    for (int p = 0; form_.iblank && p < points(b); ++p) record.i4(blanking(b, p));
    put(record);
  }
  return file.str();
}

/// Text as Fortran programs write it: fixed columns, a new line for each record.
std::string HandMadeGrid::text() const {
  std::string file;
  char number[40];
  const auto put_integer = [&](int value) {
    std::snprintf(number, sizeof number, "%12d", value);
    file += number;
  };
  const auto end_record = [&] { file += "\n"; };
  if (form_.multiblock) {
    put_integer(blocks());
    end_record();
  }
  for (int b = 0; b < blocks(); ++b) {
    for (const int extent : extents(b)) put_integer(extent);
  }
  end_record();
  for (int b = 0; b < blocks(); ++b) {
    int column = 0;
    for (int c = 0; c < 3; ++c) {
      for (int p = 0; p < points(b); ++p) {
        std::snprintf(number, sizeof number, " %23.16E", coordinate(b, c, p));
        file += number;
        if (++column % 3 == 0) file += "\n";
      }
    }
    for (int p = 0; form_.iblank && p < points(b); ++p) put_integer(blanking(b, p));
    end_record();
  }
  return file;
}

std::vector<float> HandMadeGrid::xyz() const {
  std::vector<float> all;
  for (int b = 0; b < blocks(); ++b) {
    for (int p = 0; p < points(b); ++p) {
      for (int c = 0; c < 3; ++c) all.push_back(static_cast<float>(coordinate(b, c, p)));
    }
  }
  return all;
}

std::vector<int> HandMadeGrid::iblank() const {
  std::vector<int> all;
  for (int b = 0; form_.iblank && b < blocks(); ++b) {
    for (int p = 0; p < points(b); ++p) all.push_back(blanking(b, p));
  }
  return all;
}

}  // namespace test_support
