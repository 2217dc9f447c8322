#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <p3dgrid/detect.hpp>
#include <p3dgrid/solution.hpp>

/// Forms, readings and headers as Python dictionaries. Their keys are those of `p3dgrid info
/// --json`.
namespace p3dgrid::python {

namespace py = pybind11;

[[nodiscard]] py::dict to_python(const GridForm& form);
[[nodiscard]] py::dict to_python(const RestartForm& form);
[[nodiscard]] py::dict to_python(const Reading& reading);
[[nodiscard]] py::dict to_python(const Detection& detection);
[[nodiscard]] py::tuple to_python(const BlockExtents& extents);
[[nodiscard]] py::list to_python(const Extents& extents);
/// The values that a header of this form holds.
[[nodiscard]] py::dict to_python(const RestartForm& form, const RunData& run);

/// The members of a form that a dictionary states; None states nothing. Throws TypeError for a key
/// that is no member, and ValueError for a value that the member cannot have.
[[nodiscard]] StatedGridForm grid_form_in(const py::dict& stated);
/// @copydoc grid_form_in
[[nodiscard]] StatedRestartForm restart_form_in(const py::dict& stated);
[[nodiscard]] RunData run_data_in(const py::dict& header);
[[nodiscard]] BlockExtents block_extents_in(const py::handle& extents);
/// Null for None.
[[nodiscard]] std::shared_ptr<const Extents> extents_in(const py::object& extents);

/// The Python exception for an error.
[[nodiscard]] py::object to_python(const Error& error);

}  // namespace p3dgrid::python
