#include "ours/operations.hpp"
#include "ours/source.hpp"

namespace bench {

using namespace mod_p3dgrid;

constexpr integer tecplot_unit = 594;

Outcome write_tecplot(const Request& request) {
  std::vector<double> xyz, flow;
  Source source = load_source(request.input, true);
  xyz.assign(source.xyz.begin(), source.xyz.end());
  flow.assign(source.flow.begin(), source.flow.end());
  source.xyz = std::vector<float>();
  source.flow = std::vector<float>();
  const double seconds = timed([&] {
    writetecplotfile_p3d("output", source.nblocks, {xyz.data(), coordinates, source.points},
                         {flow.data(), variables, source.points}, source.idim, source.jdim,
                         source.kdim, {}, false);
    p3dcloseunit(tecplot_unit);
  });
  return {seconds, 0};
}

}  // namespace bench
