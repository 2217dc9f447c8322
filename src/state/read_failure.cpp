#include "state/read_failure.hpp"

#include <utility>

namespace mod_p3dgrid {
namespace {

ReadFailure& last_failure() {
  static auto& failure = *new ReadFailure;
  return failure;
}

}  // namespace

void set_last_failure(ReadFailure failure) {
  last_failure() = std::move(failure);
}

const ReadFailure& p3dlastfailure() {
  return last_failure();
}

void p3dclearfailure() {
  last_failure() = {};
}

std::string ReadFailure::describe() const {
  std::string text = (file.empty() ? "unit " + std::to_string(unit) : file) + ": ";
  if (line > 0) {
    text += "line " + std::to_string(line);
  } else {
    text += "record " + std::to_string(record) + ", byte " + std::to_string(offset);
  }
  return p3dprintable(text + ": found " + found + ", expected " + expected);
}

}  // namespace mod_p3dgrid
