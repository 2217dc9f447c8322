/// Runs one operation of the library and prints its cost.
///
///     ours WARM_MIB|huge OPERATION FORM PRECISION INPUT OUTPUT existing|new
///     ours source FILE POINTS
///
/// Prints lines `seconds S`, `peak KIB` and `check SUM`. Before the operation it allocates and
/// frees WARM_MIB of memory. With `huge` the library requests huge pages instead.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ours/operations.hpp"
#include "ours/source.hpp"

namespace {

using Operation = bench::Outcome (*)(const bench::Request&);

const std::map<std::string_view, Operation> operations{
    {"nothing", bench::nothing},
    {"grid-read", bench::read_grid},
    {"front-grid-read", bench::read_grid_by_front},
    {"front-restart-read", bench::read_restart_by_front},
    {"grid-write", bench::write_grid},
    {"grid-convert", bench::convert_grid},
    {"restart-read", bench::read_restart},
    {"restart-write", bench::write_restart},
    {"variable-read", bench::read_variable},
    {"variable-write", bench::write_variable},
    {"combine", bench::combine_variables},
    {"check", bench::check_restart},
    {"tecplot-write", bench::write_tecplot},
};

void use_memory(std::size_t mib) {
  const std::vector<char> memory(mib * 1024 * 1024, 1);
  // Keeps the compiler from removing memory that is never read.
  asm volatile("" : : "r"(memory.data()) : "memory");
}

void measure(const std::string& memory, Operation operation, const bench::Request& request) {
  mod_p3dgrid::p3dsetmessages([](std::string_view) {});
  mod_p3dgrid::p3dsetpaths(
      [&request](std::string_view name) { return bench::path_of(request, name); });
  if (request.new_output) std::filesystem::remove(request.output);
  if (memory == "huge") {
    mod_p3dgrid::p3dsethugepages(true);
  } else if (memory != "0") {
    use_memory(std::stoull(memory));
  }
  const bench::Outcome outcome = operation(request);
  std::printf("seconds %.9f\npeak %lld\ncheck %lld\n", outcome.seconds,
              static_cast<long long>(bench::peak_kib()), static_cast<long long>(outcome.check));
}

int run(int argc, char** argv) {
  if (argc == 4 && argv[1] == std::string_view("source")) {
    bench::make_source(argv[2], std::stoll(argv[3]));
    return 0;
  }
  const auto operation = argc == 8 ? operations.find(argv[2]) : operations.end();
  if (operation == operations.end()) {
    std::fputs("usage: ours WARM_MIB|huge OPERATION FORM PRECISION INPUT OUTPUT existing|new\n",
               stderr);
    return 2;
  }
  measure(argv[1], operation->second,
          {argv[3], argv[4], argv[5], argv[6], argv[7] == std::string_view("new")});
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ours: %s\n", error.what());
    return 1;
  }
}
