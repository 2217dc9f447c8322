#include "support/fortran_restart.hpp"

#include <fstream>
#include <stdexcept>

#include "support/run_program.hpp"

namespace interop {
namespace {

const char* text_of(bool flag) {
  return flag ? "T" : "F";
}

/// The form as a namelist. Extents that the header holds are left for the program to find there.
void save_form(const std::string& path, const RestartForm& form,
               const std::vector<Extents>& extents) {
  std::ofstream file(path);
  file << "&form layout=" << form.layout << "\n encoding='" << name_of_encoding(form.encoding)
       << "'\n is_double=" << text_of(form.is_double)
       << "\n multiblock=" << text_of(form.multiblock) << "\n leading=" << text_of(form.leading)
       << "\n planar=" << text_of(form.planar) << "\n blocks=" << extents.size()
       << "\n points=" << empty_solution(extents, 0).points()
       << "\n variables=" << form.highest_variable() << "\n sections=" << form.sections.size()
       << "\n section=";
  for (const auto& [first, last] : form.sections) file << first << "," << last << ",";
  if (form.layout == 100 || form.layout == 102) {
    file << "\n extents=";
    for (const auto& [i, j, k] : extents) file << i << "," << j << "," << k << ",";
  }
  file << "\n/\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace

void FortranRestart::write(const RestartForm& form, const Solution& solution) const {
  save_solution_bits(scratch_.file("bits"), solution);
  run("write", file(), form, solution.extents);
}

Solution FortranRestart::read(const std::string& path, const RestartForm& form,
                              const std::vector<Extents>& extents) const {
  run("read", path, form, extents);
  Solution solution = empty_solution(extents, static_cast<std::size_t>(form.highest_variable()));
  load_solution_bits(scratch_.file("bits"), solution);
  return solution;
}

void FortranRestart::run(const char* verb, const std::string& path, const RestartForm& form,
                         const std::vector<Extents>& extents) const {
  save_form(scratch_.file("form"), form, extents);
  const Finished finished =
      run_program({program_, verb, scratch_.file("form"), scratch_.file("bits"), path});
  if (finished.status != 0) throw std::runtime_error("the Fortran program: " + finished.output);
}

}  // namespace interop
