#include "detect/settle.hpp"

#include <algorithm>

#include "detect/foreign.hpp"
#include "detect/header_damage.hpp"
#include "detect/wording.hpp"
#include "failure.hpp"

namespace p3dgrid {
namespace {

std::string texts_of(const std::vector<FormOption>& options) {
  std::string text;
  for (const FormOption& option : options) text += (text.empty() ? "" : " ") + option.text();
  return text;
}

/// What would have to be stated otherwise for a reading to be taken.
std::vector<FormOption> corrections(const std::vector<FormOption>& stated, const Reading& reading) {
  std::vector<FormOption> options = options_of(reading);
  std::erase_if(options, [&](const FormOption& option) {
    return std::ranges::none_of(stated, [&](const FormOption& said) {
      return said.name == option.name && said.value != option.value;
    });
  });
  return options;
}

std::int64_t records_agreeing(const Verdict& verdict) {
  return verdict.nearest.empty() ? 0 : verdict.nearest.front().fit.records;
}

/// @param verdict  on what has been stated
/// @param open     on the same file with nothing stated
std::string advice_from(const std::vector<FormOption>& stated, const Verdict& verdict,
                        const Verdict& open) {
  if (open.fitting.size() == 1 && !open.fitting.front().unreadable.empty()) {
    return "it is " + unreadable_form(open.fitting.front());
  }
  if (!verdict.fitting.empty()) return "";
  const auto corrected = [&](const char* words, const Reading& reading) {
    const std::string options = texts_of(corrections(stated, reading));
    return options.empty() ? "" : words + options;
  };
  if (open.fitting.empty()) {
    if (records_agreeing(open) <= records_agreeing(verdict)) return "";
    return corrected("it begins like that of a file read with ", open.nearest.front());
  }
  const Reading& first = open.fitting.front();
  if (!first.checked) return "";
  if (open.fitting.size() > 1) return "it can be one of these:" + named(open.fitting);
  return corrected("it is that of a file read with ", first);
}

[[noreturn]] void refuse_to_guess(const std::string& path, const Verdict& verdict) {
  const bool checked = verdict.fitting.front().checked;
  throw Failure(
      ExitStatus::unusable,
      path + (checked ? ": can be more than one thing, say which by the options behind it:"
                      : ": holds no extents, and --grid GRID would tell by those of its "
                        "grid which it is:"),
      named(verdict.fitting));
}

/// A reading has found something in the file to agree with: all of its header at least.
bool is_supported(const Verdict& verdict) {
  const auto checked = [](const Reading& reading) { return reading.checked; };
  const auto agrees = [](const Reading& reading) { return reading.fit.records > 0; };
  return std::ranges::any_of(verdict.fitting, checked) ||
         std::ranges::any_of(verdict.nearest, agrees);
}

bool is_proven(const Verdict& verdict) {
  return std::ranges::any_of(verdict.fitting, &Reading::checked);
}

/// Files whose header no reading takes are often of a known form all the same, or damaged there.
void refuse_unusual(const std::string& path, Evidence& file, const Verdict& open) {
  if (is_proven(open) || file.size() == 0) return;
  const std::string foreign = foreign_form(file);
  if (!foreign.empty()) throw Unreadable(path + ": " + foreign);
  const std::string damage = is_supported(open) ? "" : header_damage(file);
  if (!damage.empty()) throw Unreadable(path + ": " + damage);
}

[[noreturn]] void refuse(const std::string& path, Evidence& file, const Verdict& verdict,
                         const std::vector<FormOption>& stated) {
  const std::string length = foreign_length(file);
  const std::string other =
      length.empty() ? "" : "; its length is that of " + length + ", which cannot be read";
  const std::string what = departure(verdict.nearest);
  if (!what.empty()) throw Unreadable(path + ": " + what + other);
  throw Unreadable(path + ": its beginning is no header" +
                   (stated.empty() ? " of a grid or restart file in any form"
                                   : " of what " + texts_of(stated) + " says") +
                   ": " + beginning_of(file) + other);
}

}  // namespace

Found settle(const std::string& path, Evidence& file, const Verdict& verdict,
             const std::vector<FormOption>& stated, const OpenVerdict& open) {
  if (stated.empty()) refuse_unusual(path, file, verdict);
  if (verdict.fitting.size() == 1) {
    const Reading& reading = verdict.fitting.front();
    if (!reading.unreadable.empty()) throw Unreadable(path + ": is " + unreadable_form(reading));
    return {.reading = reading,
            .reason = reason(reading, file.size()),
            .bytes_read = file.bytes_read()};
  }
  if (verdict.fitting.size() > 1) refuse_to_guess(path, verdict);
  if (file.size() == 0) throw Unreadable(path + ": is empty");
  if (!stated.empty()) {
    const Verdict any = open();
    refuse_unusual(path, file, any);
    const std::string advice = advice_from(stated, verdict, any);
    if (!advice.empty()) {
      throw Unreadable(path + ": is not what " + texts_of(stated) + " says; ", advice);
    }
  }
  refuse(path, file, verdict, stated);
}

std::string help_with(Evidence& file, const std::vector<FormOption>& stated, const Verdict& verdict,
                      const OpenVerdict& open) {
  const Verdict any = open();
  const std::string foreign = is_proven(any) ? "" : foreign_form(file);
  return foreign.empty() ? advice_from(stated, verdict, any) : "it " + foreign;
}

}  // namespace p3dgrid
