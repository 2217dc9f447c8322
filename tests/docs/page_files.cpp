/// Writes and reads the example files of docs/formats.md with the library.
///
///     page_files write-grid FILE FORMAT REALS BLANKING COUNT EXTENTS
///     page_files read-grid FILE FORMAT REALS BLANKING COUNT
///     page_files write-restart FILE FORMAT REALS LAYOUT COUNT EXTENTS SECTIONS FLAGS
///     page_files read-restart FILE FORMAT REALS LAYOUT COUNT EXTENTS SECTIONS
///
/// FORMAT is a file-format code, REALS 4 or 8, BLANKING and COUNT (of blocks) are 0 or 1, EXTENTS
/// like 2x2x1,1x1x2, SECTIONS like 1-5,6-7, FLAGS like 41,999. A read prints a line per name with
/// its values. Files are little-endian on all machines. One whose name begins with "plane" has two
/// dimensions.

#include <MOD_P3DReader.hpp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace mod_p3dgrid;

namespace {

/// The numbers of a text with any separators.
std::vector<integer> numbers(const char* text) {
  std::vector<integer> all;
  while (*text != '\0') {
    char* end = nullptr;
    all.push_back(static_cast<integer>(std::strtol(text, &end, 10)));
    text = *end == '\0' ? end : end + 1;
  }
  return all;
}

struct Extents {
  std::vector<integer> idim, jdim, kdim, points;
  integer total = 0;

  explicit Extents(const char* text) {
    const std::vector<integer> all = numbers(text);
    for (std::size_t n = 0; n + 2 < all.size(); n += 3) {
      idim.push_back(all[n]);
      jdim.push_back(all[n + 1]);
      kdim.push_back(all[n + 2]);
      points.push_back(all[n] * all[n + 1] * all[n + 2]);
      total += points.back();
    }
  }
  [[nodiscard]] integer blocks() const { return static_cast<integer>(points.size()); }
};

struct Form {
  const char* file;
  integer iformat;
  bool dblprec;
  integer variant;  ///< blanking of a grid, layout of a restart file
  bool multiblock;

  explicit Form(char** words)
      : file(words[0]),
        iformat(std::atoi(words[1])),
        dblprec(std::atoi(words[2]) == 8),
        variant(std::atoi(words[3])),
        multiblock(std::atoi(words[4]) != 0) {}
};

template <class Value>
void print(const std::string& name, integer count, Value value) {
  std::printf("%s:", name.c_str());
  for (integer n = 1; n <= count; ++n) std::printf(" %.17g", static_cast<double>(value(n)));
  std::printf("\n");
}

std::string in_block(const char* what, std::size_t block) {
  return std::string(what) + " of block " + std::to_string(block + 1);
}

void write_grid(const Form& form, const Extents& extents) {
  allocatable<float, 2> xyz;
  allocatable<integer, 1> iblank;
  if (xyz.allocate(3, extents.total) != 0 || iblank.allocate(extents.total) != 0) std::abort();
  integer p = 0;
  for (std::size_t b = 0; b < extents.points.size(); ++b) {
    for (integer k = 1; k <= extents.kdim[b]; ++k) {
      for (integer j = 1; j <= extents.jdim[b]; ++j) {
        for (integer i = 1; i <= extents.idim[b]; ++i) {
          xyz(1, ++p) = static_cast<float>(i - 1 + 2 * static_cast<integer>(b));
          xyz(2, p) = 0.5F * static_cast<float>(j - 1);
          xyz(3, p) = static_cast<float>(k) - 0.75F;
          iblank(p) = i == 2 && j == 2 ? 0 : 1;
        }
      }
    }
  }
  writep3dgrid(form.file, form.iformat, form.dblprec, extents.blocks(), 3, xyz, extents.idim,
               extents.jdim, extents.kdim, iblank, form.variant != 0, form.multiblock);
}

void read_grid(const Form& form) {
  integer nblocks = 0;
  integer ndim = 0;
  allocatable<float, 2> xyz;
  allocatable<integer, 1> idim, jdim, kdim, iblank;
  readp3dgrid(form.file, form.iformat, form.dblprec, nblocks, ndim, xyz, idim, jdim, kdim, iblank,
              form.variant != 0, form.multiblock);
  if (!p3dlastfailure().file.empty()) std::exit(1);
  print("blocks", 1, [&](integer) { return nblocks; });
  integer first = 0;
  for (integer b = 1; b <= nblocks; ++b) {
    const integer extents[]{idim(b), jdim(b), kdim(b)};
    const integer points = extents[0] * extents[1] * extents[2];
    const auto block = static_cast<std::size_t>(b - 1);
    print(in_block("extents", block), 3, [&](integer n) { return extents[n - 1]; });
    for (integer c = 1; c <= 3; ++c) {
      const char name[]{"xyz"[c - 1], '\0'};
      print(in_block(name, block), points, [&](integer n) { return xyz(c, first + n); });
    }
    if (form.variant != 0) {
      print(in_block("blanking", block), points, [&](integer n) { return iblank(first + n); });
    }
    first += points;
  }
}

/// Fills the section table; returns the highest variable.
integer set_sections(const char* text) {
  using namespace mod_gridvars;
  const std::vector<integer> bounds = numbers(text);
  nfilesect = static_cast<integer>(bounds.size() / 2);
  numrstrtvar.fill(0);
  for (integer s = 1; s <= nfilesect; ++s) {
    const auto at = static_cast<std::size_t>(2 * (s - 1));
    rstrtvarsct(s, 1) = bounds[at];
    rstrtvarsct(s, 2) = bounds[at + 1];
    numrstrtvar(s) = bounds[at + 1] - bounds[at] + 1;
  }
  return bounds.back();
}

/// Sets the module variables that a restart file is written from.
void set_module_variables(const Extents& extents, integer variables) {
  nstep = 400;
  dtau = 0.25;
  if (nfvar.allocate(extents.blocks()) != 0 || dqvar.allocate(extents.blocks(), 4) != 0) {
    std::abort();
  }
  for (integer b = 1; b <= extents.blocks(); ++b) {
    nfvar(b) = variables;
    const double parameters[]{0.5, 2, 1e6, 0.25 * b};
    for (integer m = 1; m <= 4; ++m) dqvar(b, m) = parameters[m - 1];
  }
}

void write_restart(const Form& form, const Extents& extents, const char* sections,
                   const char* flags) {
  integer variables = set_sections(sections);
  set_module_variables(extents, variables);
  integer position = 0;
  for (const integer flag : numbers(flags)) {
    iflag(++position) = flag;
    if (flag == 41) variables = 8;
  }
  mod_gridvars::numrstrtvar(30) = form.variant == 101 ? variables - 5 : 0;
  allocatable<float, 2> flow, triplets;
  if (flow.allocate(variables, extents.total) != 0 || triplets.allocate(3, extents.total) != 0) {
    std::abort();
  }
  for (integer p = 1; p <= extents.total; ++p) {
    for (integer v = 1; v <= variables; ++v) flow(v, p) = static_cast<float>(10 * v + p);
    for (integer c = 1; c <= 3; ++c) triplets(c, p) = -static_cast<float>(10 * c + p);
  }
  writep3drestart(form.file, form.iformat, form.dblprec, extents.blocks(), extents.blocks(), flow,
                  triplets, extents.idim, extents.jdim, extents.kdim, form.variant,
                  form.multiblock);
  p3dcloseunit(301);
}

void print_header(const Extents& extents) {
  const auto one = [](const char* name, double value) {
    print(name, 1, [&](integer) { return value; });
  };
  one("version", fileversion);
  one("equation set", eqid);
  one("variables", talnvar);
  one("time integration", itimeint);
  one("switch ibeta", ibeta);
  one("sub-grid-scale model", isgsmodel);
  one("steps", nstep);
  one("step size", dtau);
  const double flow[]{talre, talxm1, talalfa, talbeta, talgam, tals1, talpr, talprt};
  print("flow parameters", 8, [&](integer n) { return flow[n - 1]; });
  for (integer b = 1; b <= extents.blocks(); ++b) {
    const auto block = static_cast<std::size_t>(b - 1);
    const auto parameters = [&](const auto& rows) {
      print(in_block("parameters", block), 4, [&](integer m) { return rows(b, m); });
    };
    if (sqvar.allocated()) parameters(sqvar);
    if (dqvar.allocated()) parameters(dqvar);
    if (nfvar.allocated()) {
      print(in_block("functions", block), 1, [&](integer) { return nfvar(b); });
    }
  }
}

void read_restart(const Form& form, const Extents& extents, const char* sections) {
  set_sections(sections);
  allocatable<float, 2> flow, triplets;
  readp3drestart(form.file, form.iformat, form.dblprec, extents.blocks(), extents.points, flow,
                 triplets, extents.idim, extents.jdim, extents.kdim, form.variant, form.multiblock);
  if (!p3dlastfailure().file.empty()) std::exit(1);
  print_header(extents);
  integer first = 0;
  for (std::size_t b = 0; b < extents.points.size(); ++b) {
    for (integer v = 1; v <= flow.extent(1); ++v) {
      const std::string name = "variable " + std::to_string(v);
      print(in_block(name.c_str(), b), extents.points[b],
            [&](integer n) { return flow(v, first + n); });
    }
    for (integer c = 1; triplets.allocated() && form.iformat == 1 && c <= 3; ++c) {
      const std::string name = "value " + std::to_string(c);
      print(in_block(name.c_str(), b), extents.points[b],
            [&](integer n) { return triplets(c, first + n); });
    }
    first += extents.points[b];
  }
}

}  // namespace

int main(int argc, char** argv) {
  p3dsetcoding([](std::string_view name) {
    const bool planar = name.starts_with("plane");
    return p3dgrid::StatedCoding{
        .byte_order = std::endian::little,
        .dimensions = planar ? p3dgrid::Dimensions::two : p3dgrid::Dimensions::three};
  });
  p3dsetmessages([](std::string_view) {});
  const std::string command = argc > 1 ? argv[1] : "";
  const auto is = [&](const char* name, int words) { return command == name && argc == 2 + words; };
  if (is("write-grid", 6)) {
    write_grid(Form(argv + 2), Extents(argv[7]));
  } else if (is("read-grid", 5)) {
    read_grid(Form(argv + 2));
  } else if (is("write-restart", 8)) {
    write_restart(Form(argv + 2), Extents(argv[7]), argv[8], argv[9]);
  } else if (is("read-restart", 7)) {
    read_restart(Form(argv + 2), Extents(argv[7]), argv[8]);
  } else {
    std::fprintf(stderr, "page_files: unknown command or number of arguments\n");
    return 2;
  }
}
