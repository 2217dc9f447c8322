/// The operations, for hosts in Fortran.

#include "MOD_P3DReader.hpp"
#include "fortran/arrays.hpp"
#include "fortran/names.hpp"

namespace mod_p3dgrid::fortran {
namespace {

template <class Real>
void read_grid(const char* filename, const GivenFile& file, integer& nblocks, integer& ndim,
               Descriptor xyz, Descriptor idim, Descriptor jdim, Descriptor kdim,
               Descriptor iblank) {
  HostArray<Real, 2> coordinates(xyz);
  HostArray<integer, 1> i(idim), j(jdim), k(kdim), blanking(iblank);
  readp3dgrid(HostName(filename, file.name_length), file.iformat, file.dblprec, nblocks, ndim,
              coordinates, i, j, k, blanking, file.useiblank, file.multiblock);
}

template <class Real>
void read_restart(const char* filename, const GivenFile& file, const GivenArray& blockpoints,
                  Descriptor varvalues, Descriptor auxvalues) {
  HostArray<Real, 2> flow(varvalues), triplets(auxvalues);
  readp3drestart(HostName(filename, file.name_length), file.iformat, file.dblprec, file.nblocks,
                 blockpoints, flow, triplets, file.idim, file.jdim, file.kdim, file.rsttype,
                 file.multiblock);
}

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

void mod_p3dgrid_readp3dgrid_single(const char* filename, const GivenFile& file, integer* nblocks,
                                    integer* ndim, Descriptor xyz, Descriptor idim, Descriptor jdim,
                                    Descriptor kdim, Descriptor iblank) {
  read_grid<float>(filename, file, *nblocks, *ndim, xyz, idim, jdim, kdim, iblank);
}

void mod_p3dgrid_readp3dgrid_double(const char* filename, const GivenFile& file, integer* nblocks,
                                    integer* ndim, Descriptor xyz, Descriptor idim, Descriptor jdim,
                                    Descriptor kdim, Descriptor iblank) {
  read_grid<double>(filename, file, *nblocks, *ndim, xyz, idim, jdim, kdim, iblank);
}

/// @param npoints  null if it is absent
void mod_p3dgrid_readp3dgridheader(const char* filename, const GivenFile& file, integer* nblocks,
                                   integer* ndim, integer* npoints) {
  const HostName name(filename, file.name_length);
  if (npoints == nullptr) {
    readp3dgridheader(name, file.iformat, *nblocks, *ndim, file.multiblock);
  } else {
    readp3dgridheader(name, file.iformat, *nblocks, *ndim, file.multiblock, *npoints);
  }
}

void mod_p3dgrid_writep3dgrid(const char* filename, const GivenFile& file, integer ndim,
                              const GivenArray& xyz, const GivenArray& iblank) {
  const HostName name(filename, file.name_length);
  with_reals(xyz, [&](auto coordinates) {
    writep3dgrid(name, file.iformat, file.dblprec, file.nblocks, ndim, coordinates, file.idim,
                 file.jdim, file.kdim, iblank, file.useiblank, file.multiblock);
  });
}

void mod_p3dgrid_readrestartheader(const char* filename, const GivenFile& file, integer* nblocks) {
  readrestartheader(HostName(filename, file.name_length), file.iformat, file.dblprec, *nblocks,
                    file.rsttype, file.multiblock);
}

void mod_p3dgrid_readrestartheader_extents(const char* filename, const GivenFile& file,
                                           integer* nblocks, Descriptor idim, Descriptor jdim,
                                           Descriptor kdim) {
  HostArray<integer, 1> i(idim), j(jdim), k(kdim);
  readrestartheader(HostName(filename, file.name_length), file.iformat, file.dblprec, *nblocks,
                    file.rsttype, file.multiblock, i, j, k);
}

void mod_p3dgrid_writerestartheader(const char* filename, const GivenFile& file) {
  writerestartheader(HostName(filename, file.name_length), file.iformat, file.dblprec, file.nblocks,
                     file.idim, file.jdim, file.kdim, file.rsttype, file.multiblock);
}

void mod_p3dgrid_checkp3drstrtheader(const char* gridfile, const GivenFile& grid,
                                     const char* rstfile, const GivenFile& restart) {
  const HostName grid_name(gridfile, grid.name_length);
  const HostName restart_name(rstfile, restart.name_length);
  checkp3drstrtheader(grid_name, grid.iformat, restart_name, restart.iformat, restart.dblprec,
                      restart.rsttype, restart.multiblock);
}

void mod_p3dgrid_readp3drestart_single(const char* filename, const GivenFile& file,
                                       const GivenArray& blockpoints, Descriptor varvalues,
                                       Descriptor auxvalues) {
  read_restart<float>(filename, file, blockpoints, varvalues, auxvalues);
}

void mod_p3dgrid_readp3drestart_double(const char* filename, const GivenFile& file,
                                       const GivenArray& blockpoints, Descriptor varvalues,
                                       Descriptor auxvalues) {
  read_restart<double>(filename, file, blockpoints, varvalues, auxvalues);
}

void mod_p3dgrid_writep3drestart(const char* filename, const GivenFile& file, integer nparamrows,
                                 const GivenArray& varvalues, const GivenArray& auxvalues) {
  const HostName name(filename, file.name_length);
  with_reals(varvalues, [&]<class Real>(array_view<const Real, 2> flow) {
    writep3drestart(name, file.iformat, file.dblprec, nparamrows, file.nblocks, flow,
                    reals<const Real>(auxvalues), file.idim, file.jdim, file.kdim, file.rsttype,
                    file.multiblock);
  });
}

void mod_p3dgrid_readnextp3dvar(integer ivar, const char* filename, const GivenFile& file,
                                const GivenArray& blockpoints, const GivenArray& varvalues) {
  const HostName name(filename, file.name_length);
  const auto read = [&](auto flow) {
    readnextp3dvar(ivar, name, file.iformat, file.dblprec, file.nblocks, blockpoints, flow,
                   file.idim, file.jdim, file.kdim, file.rsttype, file.multiblock);
  };
  if (varvalues.real_bytes == sizeof(float)) return read(reals<float>(varvalues));
  read(reals<double>(varvalues));
}

void mod_p3dgrid_writenextp3dvar(integer ivar, const char* prefix, const GivenFile& file,
                                 const GivenArray& blockpoints, const GivenArray& varvalues) {
  // Names of temporary files are kept by the module, which has room for 40 characters.
  const FileName name(std::string_view(prefix, file.name_length));
  with_reals(varvalues, [&](auto flow) {
    writenextp3dvar(ivar, name, file.dblprec, file.nblocks, blockpoints, flow, file.idim, file.jdim,
                    file.kdim);
  });
}

void mod_p3dgrid_combinep3dvarfiles(const GivenArray& leadvalues, const char* filename,
                                    const GivenFile& file, integer nparamrows) {
  const HostName name(filename, file.name_length);
  with_reals(leadvalues, [&](auto triplets) {
    combinep3dvarfiles(triplets, name, file.iformat, file.dblprec, nparamrows, file.nblocks,
                       file.idim, file.jdim, file.kdim, file.rsttype, file.multiblock);
  });
}

void mod_p3dgrid_writetecplotfile_p3d(const char* filename, const GivenFile& file,
                                      const GivenArray& xyz, const GivenArray& qvar,
                                      const GivenArray& iblank) {
  writetecplotfile_p3d(HostName(filename, file.name_length), file.nblocks, reals<const double>(xyz),
                       reals<const double>(qvar), file.idim, file.jdim, file.kdim, iblank,
                       file.useiblank);
}

}  // extern "C"

#pragma GCC visibility pop

}  // namespace mod_p3dgrid::fortran
