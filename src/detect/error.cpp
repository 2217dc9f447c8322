#include "p3dgrid/error.hpp"

#include <utility>

#include "mod_p3dgrid/run.hpp"

namespace p3dgrid {
namespace {

std::string text_of(const Error::Details& details) {
  std::string text = details.file + ": ";
  if (!details.reason.empty()) {
    text += details.reason;
  } else {
    if (details.line > 0) {
      text += "line " + std::to_string(details.line) + ": ";
    } else if (details.record > 0) {
      text += "record " + std::to_string(details.record) + ", byte " +
              std::to_string(details.offset) + ": ";
    }
    text += "found " + details.found + ", expected " + details.expected;
  }
  return mod_p3dgrid::p3dprintable(std::move(text));
}

}  // namespace

Error::Error(Details details)
    : std::runtime_error(text_of(details)), details_(std::move(details)) {}

}  // namespace p3dgrid
