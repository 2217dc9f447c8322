#include <cmath>
#include <optional>
#include <string_view>

#include "detect/evidence.hpp"
#include "recordio/list_tokens.hpp"
#include "recordio/number_text.hpp"

namespace p3dgrid {

namespace {

/// Iterates over the numbers of a text without their repeat counts.
class NumberWords : private recordio::ListTokens {
 public:
  explicit NumberWords(recordio::InputFile& file) : ListTokens(file, lines_) {}

  /// The next number as text; empty for null values and slashes, none at the end.
  std::optional<std::string_view> next() {
    do {
      if (file_.at_end()) return std::nullopt;
    } while (skip_buffered_blanks(true) || take_comma());
    return take_item() == Item::token && repeats_ > 0 ? token_ : std::string_view();
  }

 private:
  std::int64_t lines_ = 0;
};

}  // namespace

bool survives_double_precision(const std::string& path) {
  return with_evidence(path, [](Evidence& evidence) {
    NumberWords words(evidence.text());
    while (const auto word = words.next()) {
      float direct = 0;
      double through_double = 0;
      // A NaN is not equal to itself.
      if (!recordio::parse_number(*word, direct) ||
          !recordio::parse_number(*word, through_double) || !std::isfinite(direct) ||
          direct != static_cast<float>(through_double)) {
        return false;
      }
    }
    return true;
  });
}

}  // namespace p3dgrid
