#include "support/module_state.hpp"

#include "MOD_P3DReader.hpp"
#include "recordio/unformatted_record.hpp"
#include "restart/staging.hpp"

namespace test_support {

void reset_staging() {
  using namespace mod_p3dgrid;
  restart_staging<float> = {};
  restart_staging<double> = {};
  one_variable_staging<float> = {};
  one_variable_staging<double> = {};
  one_variable_steps.deallocate();
}

void reset_module_state() {
  using namespace mod_p3dgrid;
  recordio::set_subrecord_limit(recordio::default_subrecord_limit);
  p3dsetdebug(true);
  iflag.fill(0);
  eqid = fileversion = nstep = itimeint = isgsmodel = ibeta = talnvar = 0;
  dtau = talalfa = talbeta = talgam = talpr = talprt = talre = tals1 = talxm1 = 0;
  p3dxm1 = p3dalfa = p3dre = p3dtau = 0;
  nfvar.deallocate();
  sqvar.deallocate();
  dqvar.deallocate();
  reset_staging();
  mod_p3dgrid::tmpfile.fill({});
  mod_gridvars::nfilesect = 1;
  mod_gridvars::rstrtvarsct.fill(0);
  mod_gridvars::rstrtvarsct(1, 1) = 1;
  mod_gridvars::rstrtvarsct(1, 2) = 5;
  mod_gridvars::numrstrtvar.fill(0);
  mod_gridvars::numrstrtvar(1) = 5;
  mod_gridvars::readallvars = true;
}

}  // namespace test_support
