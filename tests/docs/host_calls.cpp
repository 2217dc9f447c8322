/// Prints the calls that a host receives from the operations of examples/host.cpp and from a read
/// of a file that ends early.

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "MOD_P3DReader.hpp"
#include "support/recording_host.hpp"
#include "support/scratch_folder.hpp"

using namespace mod_p3dgrid;

namespace {

constexpr integer unformatted = 0;
constexpr integer solution_layout = 2;

void show(const char* operation, const std::function<void()>& perform) {
  test_support::calls.clear();
  perform();
  std::printf("%s\n", operation);
  for (const std::string& call : test_support::calls) std::printf("    %s\n", call.c_str());
}

}  // namespace

int main() {
  test_support::begin_run();
  test_support::Bytes grid;
  grid.record(test_support::Bytes().i4(1)).record(test_support::Bytes().i4s({1, 1, 1}));
  grid.record(test_support::Bytes().r4s({0, 0, 0}));
  test_support::write_file("grid.p3d", grid);
  test_support::write_file("short.p3d", grid.str().substr(0, grid.str().size() - 6));
  const std::vector<integer> one{1};
  allocatable<float, 2> flow, triplets, xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  integer nblocks = 0;
  integer ndim = 0;
  show("readp3dgrid", [&] {
    readp3dgrid("grid.p3d", unformatted, false, nblocks, ndim, xyz, idim, jdim, kdim, iblank, false,
                true);
  });
  if (flow.allocate(5, 1) != 0 || dqvar.allocate(1, 4) != 0) return 1;
  std::ranges::fill(flow.span(), 0.0F);
  std::ranges::fill(dqvar.span(), 0.0);
  show("writep3drestart", [&] {
    writep3drestart("flow.q", unformatted, true, 1, 1, flow, triplets, one, one, one,
                    solution_layout, true);
    p3dcloseunit(301);
  });
  flow.deallocate();
  dqvar.deallocate();
  show("checkp3drstrtheader", [&] {
    checkp3drstrtheader("grid.p3d", unformatted, "flow.q", unformatted, true, solution_layout,
                        true);
  });
  show("readp3drestart", [&] {
    readp3drestart("flow.q", unformatted, true, 1, one, flow, triplets, one, one, one,
                   solution_layout, true);
  });
  show("readp3dgrid of a file that ends early", [&] {
    for (auto* array : {&idim, &jdim, &kdim}) array->deallocate();
    xyz.deallocate();
    readp3dgrid("short.p3d", unformatted, false, nblocks, ndim, xyz, idim, jdim, kdim, iblank,
                false, true);
  });
}
