#include "state/messages.hpp"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "mod_p3dgrid/run.hpp"
#include "recordio/handler.hpp"
#include "state/host.hpp"

namespace mod_p3dgrid {
namespace {

constinit Handler<void(std::string_view)> message_sink;

}  // namespace

void p3dsetmessages(std::function<void(std::string_view line)> sink) {
  message_sink.set(std::move(sink));
}

void write_line(std::string_view line) {
  if (message_sink) return host::call(message_sink, line);
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
