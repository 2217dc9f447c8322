#include "vtk_file.hpp"

#include <bit>
#include <cerrno>
#include <p3dgrid/error.hpp>
#include <system_error>
#include <utility>

#include "progress.hpp"

namespace p3dgrid::tool {
namespace {

/// A file that is written.
class VtkFile {
 public:
  explicit VtkFile(const std::string& path)
      : path_(path), file_(std::fopen(path.c_str(), "wbe"), std::fclose) {
    if (!file_) fail();
  }

  void put(const void* bytes, std::size_t count) {
    if (std::fwrite(bytes, 1, count, file_.get()) != count) fail();
    written_ += static_cast<std::int64_t>(count);
    show_progress({.path = path_, .writing = true, .bytes = written_});
  }
  void put(const std::string& text) { put(text.data(), text.size()); }

  void close() {
    if (std::fclose(file_.release()) != 0) fail();
  }

 private:
  [[noreturn]] void fail() const {
    throw Error({.kind = ErrorKind::system,
                 .file = path_,
                 .reason = std::generic_category().message(errno)});
  }

  std::string path_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  std::int64_t written_ = 0;
};

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else if (c == '"') {
      result += "&quot;";
    } else {
      result += c;
    }
  }
  return result;
}

/// The root element, with the size of the counts before the appended arrays.
std::string root(const std::string& type) {
  const bool little = std::endian::native == std::endian::little;
  return "<?xml version=\"1.0\"?>\n<VTKFile type=\"" + type + "\" version=\"1.0\" byte_order=\"" +
         (little ? "Little" : "Big") + "Endian\" header_type=\"UInt64\">\n";
}

/// The description of an array. Moves the offset behind its bytes and their count.
std::string element(const VtkArray& array, std::int64_t& offset) {
  const std::string text = "        <DataArray type=\"" + std::string(array.type) + "\" Name=\"" +
                           escaped(array.name) + "\" NumberOfComponents=\"" +
                           std::to_string(array.components) + "\" format=\"appended\" offset=\"" +
                           std::to_string(offset) + "\"/>\n";
  offset += static_cast<std::int64_t>(sizeof(std::uint64_t)) + array.bytes;
  return text;
}

void append(VtkFile& file, const VtkArray& array) {
  const auto bytes = static_cast<std::uint64_t>(array.bytes);
  file.put(&bytes, sizeof bytes);
  array.write([&](const void* piece, std::size_t count) { file.put(piece, count); });
}

}  // namespace

VtkArray vtk_array(std::string name, Precision precision, std::int32_t components,
                   std::int64_t points) {
  const bool is_double = precision == Precision::double_precision;
  return {.name = std::move(name),
          .type = is_double ? "Float64" : "Float32",
          .components = components,
          .bytes = points * components * (is_double ? 8 : 4),
          .write = {}};
}

void write_vts(const std::string& path, const BlockExtents& extents,
               const std::vector<VtkArray>& point_data, const VtkArray& points) {
  VtkFile file(path);
  const std::string whole = "0 " + std::to_string(extents.i - 1) + " 0 " +
                            std::to_string(extents.j - 1) + " 0 " + std::to_string(extents.k - 1);
  file.put(root("StructuredGrid") + "  <StructuredGrid WholeExtent=\"" + whole +
           "\">\n    <Piece Extent=\"" + whole + "\">\n      <PointData>\n");
  std::int64_t offset = 0;
  for (const VtkArray& array : point_data) file.put(element(array, offset));
  file.put("      </PointData>\n      <Points>\n" + element(points, offset) +
           "      </Points>\n    </Piece>\n  </StructuredGrid>\n"
           "  <AppendedData encoding=\"raw\">\n_");
  for (const VtkArray& array : point_data) append(file, array);
  append(file, points);
  file.put("\n  </AppendedData>\n</VTKFile>\n");
  file.close();
}

void write_vtm(const std::string& path, const std::vector<std::string>& files) {
  VtkFile file(path);
  file.put(root("vtkMultiBlockDataSet") + "  <vtkMultiBlockDataSet>\n");
  for (std::size_t n = 0; n < files.size(); ++n) {
    file.put("    <DataSet index=\"" + std::to_string(n) + "\" name=\"block " +
             std::to_string(n + 1) + "\" file=\"" + escaped(files[n]) + "\"/>\n");
  }
  file.put("  </vtkMultiBlockDataSet>\n</VTKFile>\n");
  file.close();
}

}  // namespace p3dgrid::tool
