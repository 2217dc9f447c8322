#include "state/messages.hpp"

#include <cstdio>
#include <functional>
#include <utility>

#include "mod_p3dgrid/run.hpp"

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
  if (const auto& sink = message_sink()) {
    sink(line);
    return;
  }
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

namespace detail {

void append_item(std::string& line, std::string_view text) {
  const bool after_number = line.back() >= '0' && line.back() <= '9';
  if (after_number && !text.empty() && text.front() != ' ') line += ' ';
  line += text;
}

void append_item(std::string& line, integer number) {
  if (line.back() != ' ') line += ' ';
  line += std::to_string(number);
}

}  // namespace detail

std::string column(integer number, std::size_t width) {
  const std::string digits = std::to_string(number);
  if (digits.size() > width) return std::string(width, '*');
  return std::string(width - digits.size(), ' ') + digits;
}

}  // namespace mod_p3dgrid
