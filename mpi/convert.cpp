#include <algorithm>
#include <memory>
#include <optional>

#include "commands.hpp"
#include "input.hpp"
#include "pieces.hpp"
#include "shared_file.hpp"
#include "tools/console.hpp"
#include "tools/file_names.hpp"
#include "tools/options.hpp"
#include "tools/output_file.hpp"
#include "tools/restart_conversion.hpp"
#include "tools/table.hpp"
#include "values.hpp"

namespace p3dgrid::tool {
namespace {

struct ConvertOptions {
  InputOptions input;
  std::string output;
  StatedCoding change;
};

/// The output file.
struct Target {
  StatedGridForm grid;        ///< its form, of a grid
  StatedRestartForm restart;  ///< the same of a restart file
  Coding coding;
  std::string summary = {};
  std::vector<BlockIndex> index = {};
};

Target target_of(const Input& input, const StatedCoding& change) {
  Target target;
  if (input.found.reading.is_grid()) {
    const GridForm form = applied_to(input.found.grid(), StatedGridForm{.coding = change});
    target.grid = stated_as(form);
    target.coding = form.coding;
    target.summary = counted(input.extents) + ", " + describe(form);
    return target;
  }
  const SolutionHeader header = header_to_write(input.header, {.coding = change});
  target.restart = stated_as(header.form);
  target.coding = header.form.coding;
  target.summary = counted(input.extents) + ", " + counted(header.most_variables(), "variable") +
                   ", " + describe(header.form);
  return target;
}

/// Creates the file without the values at points.
void reserve(const std::string& path, const Input& input, const Target& target) {
  const auto blocks = static_cast<std::size_t>(input.extents.blocks());
  if (input.found.reading.is_grid()) {
    GridWriter writer(path, applied_to(GridForm(), target.grid), input.extents);
    for (std::size_t b = 0; b < blocks; ++b) writer.reserve();
    return writer.close();
  }
  SolutionWriter writer(path, header_to_write(input.header, target.restart));
  for (std::size_t b = 0; b < blocks; ++b) writer.reserve(input.parameters[b]);
  writer.close();
}

std::vector<BlockIndex> index_of(const std::string& path, const Input& input,
                                 const Target& target) {
  if (input.found.reading.is_grid()) return index_grid(path, target.grid).blocks;
  const Reading reading{.form = applied_to(RestartForm(), target.restart),
                        .extents = std::make_shared<const Extents>(input.extents),
                        .triplets = traits_of(input.header.form.layout).triplets};
  SolutionReader reader(path, reading);
  std::vector<BlockIndex> blocks;
  for (std::int32_t b = 0; b < reader.header().blocks; ++b) blocks.push_back(reader.locate(b));
  reader.require_agreement();
  return blocks;
}

/// An array in the file read and in the file written.
struct Pair {
  const StoredArray* from;
  const StoredArray* to;
};

/// The arrays of a block that have values at points and are in both files, in file order.
std::vector<Pair> pairs_of(const BlockIndex& read, const BlockIndex& written) {
  std::vector<Pair> pairs;
  auto from = read.begin();
  for (const StoredArray& to : written) {
    const auto found = std::find_if(from, read.end(), [&](const StoredArray& array) {
      return array.content == to.content && array.number == to.number;
    });
    if (found == read.end()) continue;
    from = found + 1;
    if (is_at_points(to)) pairs.push_back({&*found, &to});
  }
  return pairs;
}

/// The part of one rank in a round.
class Part {
 public:
  Part() = default;
  Part(const Piece& piece, std::vector<Pair> pairs) : piece_(piece), pairs_(std::move(pairs)) {}

  [[nodiscard]] std::vector<ByteRange> read_from() const { return ranges(&Pair::from); }
  [[nodiscard]] std::vector<ByteRange> write_to() const { return ranges(&Pair::to); }

  void convert(const std::vector<std::byte>& read, ByteOrder order, std::vector<std::byte>& written,
               ByteOrder new_order) const {
    std::int64_t bytes = 0;
    for (const Pair& pair : pairs_) bytes += piece_.points() * bytes_of(pair.to->kind);
    written.resize(static_cast<std::size_t>(bytes));
    const std::byte* from = read.data();
    std::byte* to = written.data();
    for (const Pair& pair : pairs_) {
      convert_values(from, {pair.from->kind, order}, to, {pair.to->kind, new_order},
                     piece_.points());
      from += piece_.points() * bytes_of(pair.from->kind);
      to += piece_.points() * bytes_of(pair.to->kind);
    }
  }

 private:
  [[nodiscard]] std::vector<ByteRange> ranges(const StoredArray* Pair::*side) const {
    std::vector<ByteRange> all;
    for (const Pair& pair : pairs_) {
      const auto more = (pair.*side)->of(piece_.first, piece_.last);
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }

  Piece piece_;
  std::vector<Pair> pairs_;
};

/// Copies the values. In each round every rank copies one piece.
void copy(const Team& team, const Input& input, const Target& target, const std::string& path) {
  std::optional<SharedFile> read;
  std::optional<SharedFile> written;
  team.run_on_all([&] { read.emplace(input.path, SharedFile::Use::read); });
  team.run_on_all([&] { written.emplace(path, SharedFile::Use::write); });
  const std::vector<Piece> pieces = pieces_of(input.extents, input.index, team.size());
  std::vector<std::byte> from;
  std::vector<std::byte> to;
  team.run_on_all([&] {  // a failed allocation must not leave the other ranks waiting
    from.reserve(most_piece_bytes);
    to.reserve(2 * most_piece_bytes);
  });
  const auto ranks = static_cast<std::size_t>(team.size());
  for (std::size_t round = 0; round < pieces.size(); round += ranks) {
    Part part;
    const std::size_t mine = round + static_cast<std::size_t>(team.rank());
    if (mine < pieces.size()) {
      const std::size_t block = pieces[mine].block;
      part = Part(pieces[mine], pairs_of(input.index[block], target.index[block]));
    }
    team.run_on_all([&] { read->read(part.read_from(), from); });
    team.run_on_all([&] {
      part.convert(from, input.found.reading.coding().byte_order, to, target.coding.byte_order);
    });
    team.run_on_all([&] { written->write(part.write_to(), to); });
  }
  team.run_on_all([&] { written->close(); });
}

void convert(const Team& team, const ConvertOptions& options) {
  std::optional<OutputFile> output;  // of the leader
  team.run_on_leader([&] {
    output.emplace(options.output, std::initializer_list<std::string>{options.input.path});
  });
  std::optional<Input> input;
  team.run_on_all([&] { input.emplace(open_input(options.input)); });
  Target target = target_of(*input, options.change);
  team.run_on_leader([&] {
    output->require_writable(is_text(target.coding) ? "p3dgrid-mpi writes no text; p3dgrid does"
                                                    : "");
    output->stream([&] { reserve(output->temporary_path(), *input, target); });
  });
  const std::string path = team.from_leader(output ? output->temporary_path() : "");
  team.run_on_all([&] { target.index = index_of(path, *input, target); });
  copy(team, *input, target, path);
  team.run_on_leader([&] {
    note_contradiction(options.output, target.coding);
    output->commit();
    print_summary(options.output + ": " + target.summary);
  });
}

}  // namespace

Command shared_convert_command(const Team& team) {
  const auto options = std::make_shared<ConvertOptions>();
  Command command{
      .name = "convert",
      .meaning = "Write a grid or a restart file in another encoding, precision or byte order",
      .footer =
          "Examples:\n"
          "  mpirun -n 4 p3dgrid-mpi convert grid.p3d grid.bin --to-format binary\n"
          "  mpirun -n 4 p3dgrid-mpi convert flow.q small.q --to-precision single",
      .arguments = {{"FILE", &options->input.path, "Grid file or restart file to read"},
                    {"OUT", &options->output, "File to write; replaced whole or not at all",
                     Argument::Use::output}},
      .run = [options, &team] { convert(team, *options); }};
  add_input_options(command, options->input);
  add_target_options(command, options->change);
  return command;
}

}  // namespace p3dgrid::tool
