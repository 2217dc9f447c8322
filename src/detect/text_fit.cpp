#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

#include "detect/evidence.hpp"
#include "recordio/list_scanner.hpp"

namespace p3dgrid {
namespace {

using Agreement = Fit::Agreement;
using recordio::ListScanner;
using Stop = ListScanner::Stop;

constexpr std::int64_t no_limit = std::numeric_limits<std::int64_t>::max();

/// If at least this part of a text agrees, the rest counts as appended.
constexpr double most_of_a_text = 0.9;

struct Line {
  std::int64_t number;
  std::int64_t values = 0;
  Stop stop = Stop::enough;
  std::string word = {};  ///< after the values, if it is not a number
};

/// Compares one plan with the text.
class TextCursor {
 public:
  explicit TextCursor(FilePlan& plan) : plan_(plan), begin_(plan) { next_record(); }

  /// Values of one type that the record expects next.
  [[nodiscard]] std::int64_t wanted() const { return reals_ > 0 ? reals_ : integers_; }
  [[nodiscard]] bool in_record() const { return reals_ + integers_ > 0; }
  [[nodiscard]] bool failed() const { return state_ == State::failed; }
  [[nodiscard]] bool wants_integers() const { return reals_ == 0 && integers_ > 0; }

  /// Whether a line end behind the next values but the last of those wanted changes nothing.
  [[nodiscard]] bool crosses_lines() const { return in_record() || failed() || longer_line_ > 0; }

  /// Whether the next line is a record, even if it is blank.
  [[nodiscard]] bool wants_line() const {
    return state_ == State::in_records && at_record_ && size_.values() == 0;
  }

  void begin_with_comma() {
    if (at_record_ && in_record()) --(reals_ > 0 ? reals_ : integers_);
  }

  void take(std::int64_t values, const Line& line, const ListScanner& scanner) {
    if (values == 0 || !in_record()) return;
    (reals_ > 0 ? reals_ : integers_) -= values;
    at_record_ = false;
    if (in_record()) return;
    ended_at_ = line.values;
    set_flag(scanner.last_integer());
  }

  void refuse_real(const Line& line) {
    if (!wants_integers()) return;
    fail_at_word(line, "an integer");
  }

  void end_line(const Line& line) {
    if (state_ == State::failed) return;
    if (state_ == State::done) return check_after_end(line);
    if (in_record() && line.stop == Stop::not_number) {
      return fail_at_word(line, "a number");
    }
    // A slash ends the record.
    if (in_record() && line.stop != Stop::slash) return;
    // A record without values is one line, which needs a line end.
    const bool empty = at_record_ && size_.values() == 0;
    if (empty && line.values == 0 && line.stop == Stop::end) return;
    const std::int64_t more = in_record() ? 0 : line.values - ended_at_;
    if (more > 0) {
      return fail(Agreement::other, line.number,
                  "line " + std::to_string(line.number) + " holds " + counted(more, "more value") +
                      " behind the last that is expected there");
    }
    set_flag(0);  // for a flag that is left out
    ++records_;
    next_record();
  }

  /// Ends the comparison at a limit.
  void stop(const Line& line) {
    if (state_ == State::failed || longer_line_ > 0 || remark_line_ > 0) return;
    fit_.agreement = Agreement::so_far;
    fit_.what = "compared up to line " + std::to_string(line.number);
    state_ = State::failed;
  }

  void end_text(std::int64_t last_line) {
    if (state_ != State::in_records) return;
    const bool empty = size_.values() == 0;
    fail(Agreement::cut, last_line + 1,
         "the text ends at line " + std::to_string(last_line) + ", " +
             (empty ? std::string("a line for a record without values is missing")
                    : counted(reals_ + integers_, "value") + " short"));
  }

  /// @param values  number of values of the text
  /// @param end     number of the line after the last
  [[nodiscard]] Fit fit(std::int64_t values, std::int64_t end) {
    if (state_ == State::failed || longer_line_ > 0) {
      const std::int64_t expected =
          begin_.amount({.encoding = Encoding::formatted}, std::span(&end_of_extensions, 1));
      fit_.share = share_of(expected, values);
    }
    if (state_ == State::failed) return fit_;
    fit_.records = records_;
    if (plan_.unterminated_chain()) {
      fit_.agreement = Agreement::other;
      fit_.what = chain_text;
    } else if (longer_line_ > 0) {
      fit_.agreement = Agreement::longer;
      fit_.what = "more values follow behind the last record, from line " +
                  std::to_string(longer_line_) + " on";
      fit_.line = fit_.share > most_of_a_text ? end : longer_line_;
    } else if (remark_line_ > 0) {
      fit_.agreement = Agreement::remark;
      fit_.what = "words follow behind the last record, \"" + remark_ + "\" on line " +
                  std::to_string(remark_line_);
    }
    return fit_;
  }

 private:
  enum class State : std::uint8_t { in_records, done, failed };

  void set_flag(std::int32_t flag) {
    if (size_.kind == BodyRecordKind::flag && !std::exchange(flag_taken_, true)) {
      plan_.set_flag(flag);
    }
  }

  void next_record() {
    flag_taken_ = false;
    const auto size = plan_.next();
    if (!size) {
      state_ = State::done;
      reals_ = integers_ = 0;
      return;
    }
    size_ = *size;
    // The kinds of header values were checked when the header was read.
    reals_ = size_.in_header ? size_.values() : size_.reals + size_.doubles;
    integers_ = size_.in_header ? 0 : size_.integers;
    at_record_ = true;
    ended_at_ = 0;
  }

  void fail(Agreement agreement, std::int64_t line, const std::string& what) {
    fit_.agreement = agreement;
    fit_.records = records_;
    fit_.what = record_text(records_, plan_) + ": " + what;
    fit_.line = line;
    state_ = State::failed;
    reals_ = integers_ = 0;
  }

  void fail_at_word(const Line& line, const std::string& expected) {
    fail(Agreement::other, line.number,
         "line " + std::to_string(line.number) + " holds \"" + line.word + "\" where " + expected +
             " is expected");
  }

  void check_after_end(const Line& line) {
    if (longer_line_ > 0) return;
    if (line.values > 0) longer_line_ = line.number;
    if (line.values == 0 && line.stop == Stop::not_number && remark_line_ == 0) {
      remark_line_ = line.number;
      remark_ = line.word;
    }
  }

  FilePlan& plan_;
  FilePlan begin_;  ///< the plan at its beginning
  Fit fit_;
  State state_ = State::in_records;
  RecordSize size_;
  std::int64_t records_ = 0;
  std::int64_t reals_ = 0;        ///< remaining reals of the record
  std::int64_t integers_ = 0;     ///< remaining integers, which follow the reals
  bool flag_taken_ = false;       ///< the plan has the value of the flag
  bool at_record_ = true;         ///< no value of the record has been scanned
  std::int64_t ended_at_ = 0;     ///< values of the line up to the end of the record
  std::int64_t longer_line_ = 0;  ///< first line with more values, 0 for none
  std::int64_t remark_line_ = 0;  ///< first line of words after the last record, 0 for none
  std::string remark_;
};

/// Scans values of the line for all cursors.
void take_line(ListScanner& scanner, std::span<TextCursor* const> cursors, Line& line) {
  for (;;) {
    std::int64_t wanted = no_limit;
    bool integers = false;
    for (const TextCursor* cursor : cursors) {
      if (!cursor->in_record()) continue;
      wanted = std::min(wanted, cursor->wanted());
      integers = integers || cursor->wants_integers();
    }
    std::int64_t crossed = 0;
    if (!integers && std::ranges::all_of(cursors, &TextCursor::crosses_lines)) {
      crossed = scanner.take_lines(wanted);
      line.number = scanner.line();
    }
    ListScanner::Taken taken = scanner.take(wanted - crossed, integers);
    taken.values += crossed;
    if (__builtin_add_overflow(line.values, taken.values, &line.values)) line.values = no_limit / 2;
    for (TextCursor* cursor : cursors) cursor->take(taken.values, line, scanner);
    line.stop = taken.stop;
    if (taken.stop == Stop::not_integer) {
      line.word = scanner.next_word();
      for (TextCursor* cursor : cursors) cursor->refuse_real(line);
    } else if (taken.stop != Stop::enough) {
      return;
    }
  }
}

}  // namespace

std::vector<Fit> fit_of_text(recordio::InputFile& file, std::span<FilePlan> plans,
                             std::int64_t most_work, TextCount& count) {
  count = {};
  ListScanner scanner(file, most_work);
  std::vector<TextCursor> cursors;
  cursors.reserve(plans.size());
  for (FilePlan& plan : plans) cursors.emplace_back(plan);
  std::vector<TextCursor*> running;
  for (TextCursor& cursor : cursors) running.push_back(&cursor);
  std::int64_t last_line = 0;  // the last one with contents or a line end
  for (;;) {
    if (std::ranges::none_of(running, &TextCursor::wants_line)) scanner.skip_blank_lines();
    last_line = scanner.line() - 1;
    Line line{scanner.line()};
    if (scanner.begin_line()) {
      ++count.commas;
      for (TextCursor* cursor : running) cursor->begin_with_comma();
    }
    take_line(scanner, running, line);
    if (line.stop == Stop::not_number) line.word = scanner.next_word();
    if (line.stop == Stop::not_number || line.stop == Stop::slash) scanner.skip_line();
    if (__builtin_add_overflow(count.values, line.values, &count.values)) {
      count.values = no_limit / 2;
    }
    if (line.values > 0 || line.stop != Stop::end) last_line = line.number;
    // At the limit the last line may be incomplete.
    count.whole = scanner.work() < most_work;
    for (TextCursor* cursor : running) count.whole ? cursor->end_line(line) : cursor->stop(line);
    std::erase_if(running, std::mem_fn(&TextCursor::failed));
    if (line.stop == Stop::end || !count.whole) break;
  }
  count.work = scanner.work();
  if (count.whole) {
    for (TextCursor* cursor : running) cursor->end_text(last_line);
  }
  std::vector<Fit> fits;
  for (TextCursor& cursor : cursors) fits.push_back(cursor.fit(count.values, last_line + 1));
  return fits;
}

}  // namespace p3dgrid
