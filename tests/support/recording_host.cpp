#include "support/recording_host.hpp"

#include <algorithm>
#include <sstream>

#include "mod_gridvars.hpp"
#include "support/module_state.hpp"

namespace test_support {

std::vector<std::string> calls;
std::vector<std::string> messages;
std::function<void(int)> on_allocation;
std::function<void()> on_read_error;
int host_at_work = 0;

namespace {

const char* text_of(mod_p3dgrid::logical flag) {
  return flag ? "T" : "F";
}

template <class T>
std::string text_of(const std::optional<T>& argument) {
  if (!argument) return "-";
  std::ostringstream text;
  if constexpr (std::is_same_v<T, mod_p3dgrid::logical>) {
    text << text_of(*argument);
  } else {
    text << *argument;
  }
  return text.str();
}

}  // namespace

int count_calls(const std::string& name) {
  return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& call) {
    return call.substr(0, call.find('(')) == name;
  }));
}

void begin_run() {
  using namespace mod_p3dgrid;
  calls.clear();
  messages.clear();
  on_allocation = nullptr;
  on_read_error = nullptr;
  for (integer unit = 0; unit < 1000; ++unit) p3dcloseunit(unit);
  p3dsetrunend([](const RunEnd& end) {
    const HostWork work;
    throw RunEnded(end);
  });
  p3dsetmessages([](std::string_view line) {
    const HostWork work;
    messages.emplace_back(line);
  });
  p3dsetpaths({});
  p3dsetcoding({});
  p3dsethugepages(false);
  p3dsetwholerecords(false);
  p3dclearfailure();
  reset_module_state();
}

}  // namespace test_support

namespace mod_gridvars {

integer nfilesect = 1;
mod_p3dgrid::fixed_array<integer, 30, 2> rstrtvarsct;
mod_p3dgrid::fixed_array<integer, 30> numrstrtvar;
logical readallvars = true;

void dispreadwrite(const integer& mode, const integer& iparm1, const integer& iparm2,
                   const FileName& filename, const integer& iarg, const logical& larg,
                   const std::optional<integer>& opt7, const std::optional<logical>& opt8,
                   const std::optional<logical>& opt9, const std::optional<logical>& opt10,
                   const std::optional<logical>& opt11) {
  using test_support::text_of;
  const test_support::HostWork work;
  std::ostringstream call;
  call << "dispreadwrite(" << mode << ", " << iparm1 << ", " << iparm2 << ", " << filename.view()
       << ", " << iarg << ", " << text_of(larg) << ", " << text_of(opt7) << ", " << text_of(opt8)
       << ", " << text_of(opt9) << ", " << text_of(opt10) << ", " << text_of(opt11) << ")";
  test_support::calls.push_back(call.str());
}

void checkallocationerror(const integer& status) {
  const test_support::HostWork work;
  test_support::calls.push_back("checkallocationerror(" + std::to_string(status) + ")");
  if (test_support::on_allocation) test_support::on_allocation(status);
}

void dispfilereaderror() {
  const test_support::HostWork work;
  test_support::calls.push_back("dispfilereaderror()");
  if (test_support::on_read_error) test_support::on_read_error();
}

}  // namespace mod_gridvars
