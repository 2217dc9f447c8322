#include "state/messages.hpp"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <utility>

#include "mod_p3dgrid/run.hpp"
#include "state/host.hpp"

namespace mod_p3dgrid {
namespace {

std::function<void(std::string_view)>& message_sink() {
  static auto& sink = *new std::function<void(std::string_view)>;
  return sink;
}

}  // namespace

void p3dsetmessages(std::function<void(std::string_view line)> sink) {
  message_sink() = std::move(sink);
}

void write_line(std::string_view line) {
  // A copy, because the sink may install another one.
  if (const auto sink = message_sink()) return host::call(sink, line);
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

namespace detail {

void ListLine::append(std::string_view item) {
  if (ends_with_number && !item.empty() && item.front() != ' ') text += ' ';
  text += item;
  ends_with_number = false;
}

void ListLine::append(integer item) {
  if (text.back() != ' ') text += ' ';
  text += std::to_string(item);
  ends_with_number = true;
}

}  // namespace detail

std::string_view left_adjusted(const FileName& name) {
  const std::string_view text = name.view();
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

}  // namespace mod_p3dgrid
