#include "faults/attempt.hpp"

#include <exception>

#include "support/recording_host.hpp"

namespace faults {
namespace {

using namespace test_support;

Outcome ended(const RunEnded& end) {
  const HostWork work;
  const std::string text = end.what();
  if (end.status == 2 && !text.empty() && text.find('\n') == text.npos) {
    return {End::failed, text, {}};
  }
  if (end.status == 0 && text.empty() && !messages.empty()) {
    return {End::halted, messages.back(), {}};
  }
  return {End::out_of_hand, "status " + std::to_string(end.status) + ": " + text, {}};
}

Outcome returned(const Started& started) {
  const HostWork work;
  const int reports = count_calls("dispfilereaderror");
  const std::string reason = mod_p3dgrid::p3dlastfailure().describe();
  if (reports == 0) return {End::done, {}, started.result()};
  if (reports == 1) return {End::reported, reason, {}};
  return {End::out_of_hand, std::to_string(reports) + " reports, the last: " + reason, {}};
}

}  // namespace

Outcome finish(const Started& started) {
  calls.clear();
  messages.clear();
  int refused = 0;
  on_allocation = [&](int status) { refused += status == mod_p3dgrid::out_of_memory; };
  Outcome outcome;
  try {
    started.call();
    outcome = returned(started);
  } catch (const RunEnded& end) {
    outcome = ended(end);
  } catch (const std::exception& error) {
    const HostWork work;
    outcome = {End::out_of_hand, std::string("escaped: ") + error.what(), {}};
  }
  on_allocation = nullptr;
  outcome.refused_allocations = refused;
  return outcome;
}

Outcome attempt(const Operation& operation) {
  begin_run();
  return finish(operation.start());
}

}  // namespace faults
