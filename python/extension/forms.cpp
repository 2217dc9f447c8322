#include "forms.hpp"

#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <p3dgrid/layout.hpp>
#include <string>
#include <utility>
#include <variant>

namespace p3dgrid::python {
namespace {

/// The key of a member: its name as an identifier.
template <class Value>
std::string key_of(const Member<Value>& member) {
  std::string key = member.name;
  std::ranges::replace(key, '-', '_');
  return key;
}

/// Numbers become numbers and choices booleans, as in JSON; other values become strings.
template <class Value>
py::object value_of(Value value) {
  const std::string word = name_of(value);
  if constexpr (std::is_same_v<Value, bool>) return py::bool_(value);
  const bool number = !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
  if (number) return py::int_(std::stoi(word));
  return py::str(word);
}

py::object value_of(const std::optional<Sections>& sections) {
  if (!sections) return py::none();
  py::list list;
  for (const Section& section : *sections) {
    list.append(py::make_tuple(section.first, section.last));
  }
  return py::tuple(list);
}

template <class Form>
py::dict dictionary_of(const Form& form) {
  py::dict result;
  Form::for_each_member(
      [&](const auto& member, const auto& value) {
        const bool has = is_in(member.scope, form.coding.encoding);
        result[key_of(member).c_str()] = has ? value_of(value) : py::object(py::none());
      },
      form);
  return result;
}

[[noreturn]] void refuse_value(const std::string& key, const py::handle& value,
                               const std::string& choices) {
  throw py::value_error(key + ": found " + py::cast<std::string>(py::repr(value)) + ", expected " +
                        choices);
}

template <class Value>
void take(const Member<Value>& member, const py::handle& value, std::optional<Value>& held) {
  std::string choices;
  for (const Value choice : member.choices) {
    const py::object known = value_of(choice);
    if (known.equal(value)) held = choice;
    choices += (choices.empty() ? "" : ", ") + py::cast<std::string>(py::repr(known));
  }
  if (!held) refuse_value(key_of(member), value, choices);
}

void take(const Member<std::optional<Sections>>& member, const py::handle& value,
          std::optional<Sections>& held) {
  try {
    held.emplace();
    for (const auto& [first, last] : py::cast<std::vector<std::array<std::int32_t, 2>>>(value)) {
      held->push_back({first, last});
    }
  } catch (const py::cast_error&) {
    refuse_value(key_of(member), value, "pairs of first and last variable");
  }
}

template <class Stated>
Stated form_in(const py::dict& stated) {
  Stated form;
  std::size_t known = 0;
  Stated::for_each_member(
      [&](const auto& member, auto& held) {
        const std::string key = key_of(member);
        if (!stated.contains(key.c_str())) return;
        ++known;
        const py::object value = stated[key.c_str()];
        if (!value.is_none()) take(member, value, held);
      },
      form);
  if (known == stated.size()) return form;
  std::string keys;
  Stated::for_each_member(
      [&](const auto& member, const auto&) { keys += (keys.empty() ? "" : ", ") + key_of(member); },
      form);
  throw py::type_error("members of a form are " + keys + "; found " +
                       py::cast<std::string>(py::str(", ").attr("join")(stated)));
}

const char* word_of(Fit::Agreement agreement) {
  switch (agreement) {
    case Fit::Agreement::whole:
      return "whole";
    case Fit::Agreement::padded:
      return "padded";
    case Fit::Agreement::longer:
      return "longer";
    case Fit::Agreement::remark:
      return "remark";
    case Fit::Agreement::so_far:
      return "so_far";
    case Fit::Agreement::cut:
      return "cut";
    case Fit::Agreement::other:
      break;
  }
  return "other";
}

const char* word_of(ErrorKind kind) {
  switch (kind) {
    case ErrorKind::system:
      return "system";
    case ErrorKind::damaged:
      return "damaged";
    case ErrorKind::unknown:
      return "unknown";
    case ErrorKind::ambiguous:
      return "ambiguous";
    case ErrorKind::wrong_kind:
      return "wrong_kind";
    case ErrorKind::mismatch:
      return "mismatch";
    case ErrorKind::unsupported:
      return "unsupported";
    case ErrorKind::argument:
      break;
  }
  return "argument";
}

/// Text with file names, whose bytes need not be UTF-8.
py::str text_of(const std::string& text) {
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(text.data(), std::ssize(text), "surrogateescape"));
}

py::list list_of(const std::vector<Reading>& readings) {
  py::list list;
  for (const Reading& reading : readings) list.append(to_python(reading));
  return list;
}

/// A value of a header and the name that it has in JSON.
struct HeaderField {
  const char* name;
  std::variant<std::int32_t RunData::*, double RunData::*> value;
};

constexpr std::array talven_fields = {
    HeaderField{"file_version", &RunData::fileversion}, HeaderField{"equation_set", &RunData::eqid},
    HeaderField{"flow_variables", &RunData::talnvar},
    HeaderField{"time_integration", &RunData::itimeint}, HeaderField{"ibeta", &RunData::ibeta}};
constexpr std::array step_fields = {HeaderField{"step_count", &RunData::nstep},
                                    HeaderField{"step_size", &RunData::dtau}};
constexpr std::array flow_fields = {HeaderField{"sub_grid_scale_model", &RunData::isgsmodel},
                                    HeaderField{"reynolds", &RunData::talre},
                                    HeaderField{"mach", &RunData::talxm1},
                                    HeaderField{"alpha", &RunData::talalfa},
                                    HeaderField{"beta", &RunData::talbeta},
                                    HeaderField{"gamma", &RunData::talgam},
                                    HeaderField{"s1", &RunData::tals1},
                                    HeaderField{"prandtl", &RunData::talpr},
                                    HeaderField{"turbulent_prandtl", &RunData::talprt}};
constexpr std::array species_fields = {HeaderField{"species", &RunData::species}};

}  // namespace

py::dict to_python(const GridForm& form) {
  return dictionary_of(form);
}

py::dict to_python(const RestartForm& form) {
  py::dict result = dictionary_of(form);
  if (!traits_of(form.layout).may_hold_count()) {
    result[key_of(restart_multiblock_member).c_str()] = py::none();
  }
  return result;
}

py::dict to_python(const Reading& reading) {
  py::dict result;
  result["form"] = std::visit([](const auto& form) { return to_python(form); }, reading.form);
  result["extents"] = reading.extents ? py::object(to_python(*reading.extents)) : py::none();
  result["description"] = describe(reading);
  result["agreement"] = word_of(reading.fit.agreement);
  result["difference"] = reading.fit.what;
  result["records"] = reading.records;
  result["checked"] = reading.checked;
  result["triplets"] = reading.triplets;
  return result;
}

py::dict to_python(const Detection& detection) {
  py::dict result;
  result["fitting"] = list_of(detection.fitting);
  result["nearest"] = list_of(detection.nearest);
  const bool settled = detection.fitting.size() == 1;
  result["reason"] = settled ? reason_for(detection.fitting.front(), detection.size) : "";
  result["foreign"] = detection.foreign;
  result["damage"] = detection.damage;
  result["beginning"] = detection.beginning;
  result["size"] = detection.size;
  result["bytes_read"] = detection.bytes_read;
  return result;
}

py::tuple to_python(const BlockExtents& extents) {
  return py::make_tuple(extents.i, extents.j, extents.k);
}

py::list to_python(const Extents& extents) {
  py::list list;
  for (std::size_t b = 0; b < extents.i.size(); ++b) list.append(to_python(extents.of(b)));
  return list;
}

py::dict to_python(const RestartForm& form, const RunData& run) {
  py::dict result;
  const auto add = [&](const auto& fields) {
    for (const HeaderField& field : fields) {
      std::visit([&](auto value) { result[field.name] = run.*value; }, field.value);
    }
  };
  const LayoutTraits& layout = traits_of(form.layout);
  const bool talven = layout.header == HeaderKind::talven;
  if (layout.more_parameters) add(species_fields);
  if (talven) add(talven_fields);
  if (layout.holds_step()) add(step_fields);
  if (talven && run.eqid == equations_with_parameters) add(flow_fields);
  return result;
}

StatedGridForm grid_form_in(const py::dict& stated) {
  return form_in<StatedGridForm>(stated);
}

StatedRestartForm restart_form_in(const py::dict& stated) {
  auto form = form_in<StatedRestartForm>(stated);
  // For a layout without a block count None is a stated value. Otherwise the member would be
  // detected.
  if (!form.multiblock && form.layout && !traits_of(*form.layout).may_hold_count()) {
    form.multiblock = RestartForm().multiblock;
  }
  return form;
}

RunData run_data_in(const py::dict& header) {
  RunData run;
  const auto take = [&](const auto& fields) {
    for (const HeaderField& field : fields) {
      if (!header.contains(field.name)) continue;
      std::visit(
          [&](auto value) {
            using Value = std::remove_reference_t<decltype(run.*value)>;
            run.*value = py::cast<Value>(header[field.name]);
          },
          field.value);
    }
  };
  take(species_fields);
  take(talven_fields);
  take(step_fields);
  take(flow_fields);
  return run;
}

BlockExtents block_extents_in(const py::handle& extents) {
  const auto [i, j, k] = py::cast<std::array<std::int32_t, 3>>(extents);
  return {i, j, k};
}

std::shared_ptr<const Extents> extents_in(const py::object& extents) {
  if (extents.is_none()) return nullptr;
  auto result = std::make_shared<Extents>();
  for (const py::handle block : extents) result->add(block_extents_in(block));
  return result;
}

py::object to_python(const Error& error) {
  const Error::Details& details = error.details();
  py::dict known;
  known["kind"] = word_of(details.kind);
  known["file"] = text_of(details.file);
  known["reason"] = text_of(details.reason);
  known["record"] = details.record;
  known["line"] = details.line;
  known["offset"] = details.offset;
  known["found"] = text_of(details.found);
  known["expected"] = text_of(details.expected);
  known["readings"] = list_of(details.readings);
  const py::object type = py::module_::import("p3dgrid._errors").attr("Error");
  return type(text_of(error.what()), **known);
}

}  // namespace p3dgrid::python
