#include "support/restart_exchanges.hpp"

#include <utility>

namespace interop {
namespace {

using Sections = std::vector<std::pair<int, int>>;
const Sections one_section{{1, 5}};
const Sections two_sections{{1, 5}, {6, 7}};

/// The form in all that a layout leaves open to every file of it.
std::vector<Exchange> variants_of(RestartForm form, bool one_block_only = false) {
  std::vector<Exchange> all;
  for (const bool is_double : {false, true}) {
    for (const Sections& sections : {one_section, two_sections}) {
      for (const bool several_blocks : {false, true}) {
        if (several_blocks && one_block_only) continue;
        form.is_double = is_double;
        form.sections = sections;
        all.push_back({form, several_blocks});
      }
    }
  }
  return all;
}

void append(std::vector<Exchange>& all, const std::vector<Exchange>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

/// Layout 0, but for what cannot be: flow parameters in single-precision records, and older time
/// levels in text.
std::vector<Exchange> talven_exchanges(int encoding) {
  std::vector<Exchange> all;
  for (const int equation_set : {0, 1, 2}) {
    for (const int time_integration : {0, 2, 3}) {
      append(all, variants_of({.layout = 0,
                               .encoding = encoding,
                               .is_double = false,
                               .equation_set = equation_set,
                               .time_integration = time_integration}));
    }
  }
  std::erase_if(all, [](const Exchange& exchange) {
    const RestartForm& form = exchange.form;
    return form.is_text() ? form.time_integration >= 2 : form.equation_set == 1 && !form.is_double;
  });
  return all;
}

std::vector<Exchange> extension_exchanges(int encoding) {
  std::vector<Exchange> all;
  for (const std::vector<int>& flags :
       std::vector<std::vector<int>>{{999}, {1, 999}, {41, 999}, {1, 41, 999}, {41, 41, 999}}) {
    append(all,
           variants_of({.layout = 101, .encoding = encoding, .is_double = false, .flags = flags},
                       true));
  }
  return all;
}

}  // namespace

std::vector<Extents> Exchange::extents() const {
  if (form.planar && !several_blocks) return {{9, 7, 1}};
  if (form.planar) return {{5, 4, 1}, {7, 1, 1}, {3, 0, 1}, {1, 1, 1}};
  if (!several_blocks) return {{9, 1, 7}};
  return {{5, 4, 3}, {7, 1, 2}, {3, 0, 4}, {1, 1, 1}};
}
std::vector<Exchange> writable_exchanges(std::initializer_list<int> encodings) {
  std::vector<Exchange> all;
  for (const int encoding : encodings) {
    for (const int layout : {1, 100, 2, 3}) {
      append(all, variants_of({.layout = layout, .encoding = encoding, .is_double = false}));
    }
    for (const int layout : {2, 3}) {
      RestartForm form{.layout = layout, .encoding = encoding, .is_double = false};
      form.planar = true;
      append(all, variants_of(form));
      for (const bool planar : {false, true}) {
        form.multiblock = false;
        form.planar = planar;
        append(all, variants_of(form, true));
      }
    }
    append(all, variants_of({.layout = 102, .encoding = encoding, .is_double = false}, true));
    append(all, extension_exchanges(encoding));
  }
  return all;
}

std::vector<Exchange> readable_exchanges() {
  std::vector<Exchange> all = writable_exchanges({0, 1, 2});
  for (Exchange& exchange : all) {
    RestartForm& form = exchange.form;
    if (form.layout == 100 && !form.is_text() && !form.is_double) form.leading = false;
  }
  for (const int encoding : {0, 1, 2}) append(all, talven_exchanges(encoding));
  return all;
}

void PrintTo(const Exchange& exchange, std::ostream* stream) {
  *stream << exchange.form.name() << (exchange.several_blocks ? "_blocks" : "_block");
}

std::string exchange_name(const testing::TestParamInfo<Exchange>& parameter) {
  return testing::PrintToString(parameter.param);
}

}  // namespace interop
