#include "MOD_P3DReader.hpp"

namespace mod_p3dgrid {

logical debugprint = true;
fixed_array<integer, 3> iflag;

integer eqid = 0;
integer fileversion = 0;
integer nstep = 0;
double dtau = 0;
integer itimeint = 0;
integer isgsmodel = 0;
integer ibeta = 0;
integer talnvar = 0;

double talalfa = 0;
double talbeta = 0;
double talgam = 0;
double talpr = 0;
double talprt = 0;
double talre = 0;
double tals1 = 0;
double talxm1 = 0;

double p3dxm1 = 0;
double p3dalfa = 0;
double p3dre = 0;
double p3dtau = 0;

allocatable<integer, 1> nfvar;
allocatable<float, 2> sqvar;
allocatable<double, 2> dqvar;

fixed_array<FileName, 15> tmpfile;

void p3dsetdebug(logical flag) {
  debugprint = flag;
}

const char* p3dversion() noexcept {
  return MOD_P3DGRID_VERSION;
}

}  // namespace mod_p3dgrid
