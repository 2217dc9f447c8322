/// Runs one operation of the library a number of times and prints what it took.
///
///     ours ROUNDS OPERATION FORM PRECISION INPUT OUTPUT existing|new
///     ours source FILE POINTS
///
/// Prints a line `seconds S` for each round, then `peak KIB` and `check SUM`. Rounds beyond the
/// first find memory that the process has used before.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "ours/operations.hpp"
#include "ours/source.hpp"

namespace {

using Operation = bench::Outcome (*)(const bench::Request&);

const std::map<std::string_view, Operation> operations{
    {"nothing", bench::nothing},
    {"grid-read", bench::read_grid},
    {"grid-write", bench::write_grid},
    {"restart-read", bench::read_restart},
    {"restart-write", bench::write_restart},
    {"variable-read", bench::read_variable},
    {"tecplot-write", bench::write_tecplot},
};

void measure(int rounds, Operation operation, const bench::Request& request) {
  mod_p3dgrid::p3dsetmessages([](std::string_view) {});
  mod_p3dgrid::p3dsetpaths([&request](std::string_view name) {
    if (name == "input") return request.input;
    return name == "output" ? request.output : request.output + "." + std::string(name);
  });
  bench::Outcome outcome;
  for (int round = 0; round < rounds; ++round) {
    if (request.new_output) std::filesystem::remove(request.output);
    outcome = operation(request);
    std::printf("seconds %.9f\n", outcome.seconds);
  }
  std::printf("peak %lld\ncheck %lld\n", static_cast<long long>(bench::peak_kib()),
              static_cast<long long>(outcome.check));
}

int run(int argc, char** argv) {
  if (argc == 4 && argv[1] == std::string_view("source")) {
    bench::make_source(argv[2], std::stoll(argv[3]));
    return 0;
  }
  const auto operation = argc == 8 ? operations.find(argv[2]) : operations.end();
  if (operation == operations.end()) {
    std::fputs("usage: ours ROUNDS OPERATION FORM PRECISION INPUT OUTPUT existing|new\n", stderr);
    return 2;
  }
  measure(std::stoi(argv[1]), operation->second,
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
