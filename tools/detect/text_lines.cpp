#include "detect/text_lines.hpp"

#include <algorithm>

#include "detect/text_tokens.hpp"

namespace p3dgrid {
namespace {

std::string printable(std::string_view token) {
  constexpr std::size_t enough = 40;
  std::string text;
  for (const char c : token.substr(0, enough)) text += c >= ' ' && c <= '~' ? c : '?';
  return token.size() > enough ? text + "..." : text;
}

/// Puts lines together into runs.
class LineCollector {
 public:
  explicit LineCollector(TextLines& lines) : lines_(lines) {}

  void take(std::int64_t line, std::int64_t values) {
    go_to(line);
    if (ending_ != LineRun::Ending::plain) return;
    // What cannot be the number of any file's values is enough.
    if (__builtin_add_overflow(values_, values, &values_)) values_ = INT64_MAX / 2;
  }

  void end_with(std::int64_t line, LineRun::Ending ending) {
    go_to(line);
    if (ending_ == LineRun::Ending::plain) ending_ = ending;
  }

  void begin_with_comma(std::int64_t line) {
    go_to(line);
    comma_ = true;
    ++lines_.commas;
  }

  void finish() { push({values_, 1, ending_, comma_}); }

 private:
  void go_to(std::int64_t line) {
    if (line == line_) return;
    finish();
    if (line > line_ + 1) push({.lines = line - line_ - 1});
    line_ = line;
    values_ = 0;
    ending_ = LineRun::Ending::plain;
    comma_ = false;
  }

  void push(const LineRun& run) {
    if (__builtin_add_overflow(lines_.values, run.values * run.lines, &lines_.values)) {
      lines_.values = INT64_MAX / 2;
    }
    auto& runs = lines_.runs;
    if (!runs.empty() && runs.back().is_like(run)) {
      runs.back().lines += run.lines;
    } else {
      runs.push_back(run);
    }
  }

  TextLines& lines_;
  std::int64_t line_ = 1;
  std::int64_t values_ = 0;
  LineRun::Ending ending_ = LineRun::Ending::plain;
  bool comma_ = false;
};

std::optional<std::uint64_t> offset_of_line(ByteSource& source, std::int64_t line) {
  std::vector<char> chunk(1 << 16);
  std::uint64_t offset = 0;
  std::int64_t at = 1;
  while (at < line) {
    const std::size_t count = source.read(offset, chunk);
    if (count == 0) return std::nullopt;
    const auto end = chunk.begin() + static_cast<std::ptrdiff_t>(count);
    auto begin = chunk.begin();
    for (auto found = begin; at < line; begin = found + 1, ++at) {
      found = std::find(begin, end, '\n');
      if (found == end) {
        begin = end;
        break;
      }
    }
    offset += static_cast<std::uint64_t>(begin - chunk.begin());
  }
  return offset;
}

}  // namespace

TextLines count_lines(ByteSource& source) {
  TextLines lines;
  LineCollector collector(lines);
  TextTokens tokens(source);
  for (;;) {
    const TextToken token = tokens.next();
    if (token.comma_line > 0) collector.begin_with_comma(token.comma_line);
    if (token.kind == TextToken::Kind::end) {
      collector.take(token.line, 0);  // blank lines at the end are records of no values
      break;
    }
    if (token.kind == TextToken::Kind::slash) {
      collector.end_with(token.line, LineRun::Ending::slash);
    } else if (token.repeats == 0 ||
               (token.kind == TextToken::Kind::value && !is_number(token.value))) {
      if (lines.odd_line == 0) {
        lines.odd_line = token.line;
        lines.odd_token = printable(token.value);
      }
      collector.end_with(token.line, LineRun::Ending::odd);
    } else {
      collector.take(token.line, token.repeats);
    }
  }
  collector.finish();
  return lines;
}

std::optional<std::int32_t> integer_on_line(ByteSource& source, std::int64_t line) {
  const auto begin = offset_of_line(source, line);
  if (!begin) return std::nullopt;
  TextTokens tokens(source, *begin);
  const TextToken token = tokens.next();
  if (token.kind != TextToken::Kind::value || token.line != 1) return std::nullopt;
  return integer_in(token.value);
}

}  // namespace p3dgrid
