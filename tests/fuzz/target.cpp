#include "target.hpp"

#include <algorithm>
#include <vector>

namespace fuzz {

void place_file(const Options& options, std::string_view name, Content content) {
  if (!has(options, stretched)) return put_file(name, content);
  constexpr int text = 1;
  constexpr std::size_t room_for_text = 500;  // so that numbers lie across the end of a buffer
  const bool is_text = format_of(options.format) == text;
  std::size_t length = stretch_unit * options.other_format;
  if (is_text) length -= std::min(length, room_for_text);
  const auto middle = content.begin() + static_cast<std::ptrdiff_t>(split_length(options, content));
  std::vector<std::uint8_t> all(content.begin(), middle);
  all.insert(all.end(), length, is_text ? ' ' : 0);
  all.insert(all.end(), middle, content.end());
  put_file(name, all);
}

namespace {

/// Whether a text says that a value stands for a million or more. A short file may hold so many in
/// earnest, and the memory that they take is no finding.
bool has_large_repeat_count(Content content) {
  constexpr int digits_of_a_million = 7;
  int digits = 0;
  for (const std::uint8_t c : content) {
    if (c == '*' && digits >= digits_of_a_million) return true;
    digits = c >= '0' && c <= '9' ? digits + 1 : 0;
  }
  return false;
}

}  // namespace
}  // namespace fuzz

extern "C" {

/// Memory that is asked for in vain is part of what is tested: a header may ask for a gigabyte on
/// trust, and arrays that large would cost more time than they find. The quarantine is kept small,
/// so that a limit on memory means what the library holds.
const char* __asan_default_options();
const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=160:quarantine_size_mb=8";
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Options options;
  fuzz::Content content;
  if (!fuzz::take_apart({data, size}, options, content)) return 0;
  if (fuzz::has_large_repeat_count(content)) return 0;
  fuzz::place_files(options, content);
  fuzz::begin_run(options);
  fuzz::run_operation(options);
  if (fuzz::has(options, fuzz::twice)) fuzz::run_operation(options);
  fuzz::end_run();
  return 0;
}
}
