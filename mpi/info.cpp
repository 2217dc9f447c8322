#include "tools/info.hpp"

#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>

#include "commands.hpp"
#include "input.hpp"
#include "pieces.hpp"
#include "shared_file.hpp"
#include "tools/console.hpp"
#include "tools/variable_names.hpp"
#include "values.hpp"

namespace p3dgrid::tool {
namespace {

struct InfoOptions {
  InputOptions input;
  bool json = false;
};

/// The values of an array at the points of a piece.
struct ArrayValues {
  const StoredArray* array;
  Reals reals = {};
  Array<std::int32_t> integers = {};
};

std::vector<ByteRange> places_of(const BlockIndex& block, const Piece& piece) {
  std::vector<ByteRange> places;
  for (const StoredArray& array : block) {
    if (!is_at_points(array)) continue;
    const auto more = array.of(piece.first, piece.last);
    places.insert(places.end(), more.begin(), more.end());
  }
  return places;
}

std::vector<ArrayValues> values_of(const BlockIndex& block, const Piece& piece, ByteOrder order,
                                   const std::vector<std::byte>& bytes) {
  std::vector<ArrayValues> all;
  const std::byte* from = bytes.data();
  const auto take = [&](const StoredArray& array, auto* to) {
    convert_values(from, {array.kind, order}, reinterpret_cast<std::byte*>(to),
                   {array.kind, ByteOrder::native}, piece.points());
    from += piece.points() * bytes_of(array.kind);
  };
  const auto count = static_cast<std::size_t>(piece.points());
  for (const StoredArray& array : block) {
    if (!is_at_points(array)) continue;
    ArrayValues& values = all.emplace_back(ArrayValues{&array});
    if (array.kind == ValueKind::integer4) {
      values.integers.resize(count);
      take(array, values.integers.data());
    } else if (array.kind == ValueKind::real4) {
      Array<float> reals(count);
      take(array, reals.data());
      values.reals = Reals(std::move(reals));
    } else {
      Array<double> reals(count);
      take(array, reals.data());
      values.reals = Reals(std::move(reals));
    }
  }
  return all;
}

/// Reads all pieces, each on one rank, and returns the results of `find(piece, values)` in the
/// order of the pieces, on the leader.
template <class Find>
auto findings_of_pieces(const Team& team, const Input& input, const std::vector<Piece>& pieces,
                        Find find) {
  using Found = decltype(find(pieces.front(), std::vector<ArrayValues>()));
  using Item = typename Found::value_type;
  static_assert(std::is_trivially_copyable_v<Item>);
  std::optional<SharedFile> file;
  team.run_on_all([&] { file.emplace(input.path, SharedFile::Use::read); });
  std::vector<std::byte> bytes;
  team.run_on_all([&] { bytes.reserve(most_piece_bytes); });
  const auto ranks = static_cast<std::size_t>(team.size());
  std::vector<Found> all(pieces.size());
  for (std::size_t round = 0; round < pieces.size(); round += ranks) {
    const std::size_t number = round + static_cast<std::size_t>(team.rank());
    const Piece mine = number < pieces.size() ? pieces[number] : Piece{};
    const BlockIndex& block = input.index[mine.block];
    Found found;
    team.run_on_all([&] { file->read(places_of(block, mine), bytes); });
    team.run_on_all([&] {
      found = find(mine, values_of(block, mine, input.found.reading.coding().byte_order, bytes));
    });
    std::vector<char> sent(found.size() * sizeof(Item));
    std::memcpy(sent.data(), found.data(), sent.size());
    const std::vector<char> received = team.gathered(sent);
    const std::size_t items = received.size() / sizeof(Item) / ranks;
    for (std::size_t n = 0; !received.empty() && n < ranks && round + n < all.size(); ++n) {
      all[round + n].resize(items);
      std::memcpy(all[round + n].data(), received.data() + n * items * sizeof(Item),
                  items * sizeof(Item));
    }
  }
  return all;
}

Report report_on_grid(const Team& team, const Input& input) {
  Report report{.found = input.found, .extents = input.extents};
  report.begin_surveys();
  report.shown = shown_blocks("all", input.path, input.extents.blocks());
  const std::vector<Piece> pieces = pieces_of(input.extents, input.index, team.size());
  const auto find = [&](const Piece& piece, std::vector<ArrayValues> values) {
    std::vector<GridFindings> found(1);
    Block points;
    for (ArrayValues& array : values) {
      if (array.array->content == Content::iblank) {
        points.iblank = std::move(array.integers);
      } else {
        (array.array->number == 1   ? points.x
         : array.array->number == 2 ? points.y
                                    : points.z) = std::move(array.reals);
      }
    }
    if (is_planar(input.found.reading.coding())) {
      points.z = zeros(points.x.precision(), piece.points());
    }
    found[0].include(piece.block, input.extents.of(piece.block), points, piece.first);
    return found;
  };
  const auto all = findings_of_pieces(team, input, pieces, find);
  for (std::size_t n = 0; team.is_leader() && n < all.size(); ++n) {
    report.include(pieces[n].block, all[n][0]);
  }
  return report;
}

Report report_on_restart(const Team& team, const Input& input) {
  Report report{.found = input.found, .extents = input.extents, .header = input.header};
  report.shown = shown_blocks("all", input.path, input.extents.blocks());
  std::vector<std::string> names(static_cast<std::size_t>(input.header.most_variables()));
  if (team.is_leader()) names = variable_names(input.path, input.header, {});
  report.begin_surveys(names);
  if (traits_of(input.header.form.layout).parameters > 0) report.parameters = input.parameters;
  const std::vector<Piece> pieces = pieces_of(input.extents, input.index, team.size());
  const RestartForm& form = input.header.form;
  const std::int32_t absent = absent_variable(traits_of(form.layout), form.coding);
  const auto find = [&](const Piece& piece, const std::vector<ArrayValues>& values) {
    std::vector<Findings> found(report.surveys->size());
    const auto include = [&](const FlowArray& array, const Reals& reals) {
      found[report.place_of(array)].include(piece.block, input.extents.of(piece.block), reals,
                                            piece.first);
    };
    for (const ArrayValues& array : values) {
      include({array.array->number, array.array->content == Content::triplets}, array.reals);
    }
    if (absent > 0) include({absent}, zeros(form.coding.precision, piece.points()));
    return found;
  };
  for (const auto& found : findings_of_pieces(team, input, pieces, find)) {
    for (std::size_t n = 0; n < found.size(); ++n) (*report.surveys)[n].include(found[n]);
  }
  return report;
}

void show(const Team& team, const InfoOptions& options) {
  if (options.json) keep_output_for_programs();
  std::optional<Input> input;
  team.run_on_all([&] { input.emplace(open_input(options.input)); });
  const auto print = [&](const Report& report) {
    if (options.json) return print_text(json_of(input->path, report));
    print_info(input->path, report);
  };
  if (input->found.reading.is_grid()) return print(report_on_grid(team, *input));
  print(report_on_restart(team, *input));
}

}  // namespace

Command shared_info_command(const Team& team) {
  const auto options = std::make_shared<InfoOptions>();
  Command command{.name = "info",
                  .meaning = "Show what a file is and what is in it",
                  .footer =
                      "Examples:\n"
                      "  mpirun -n 4 p3dgrid-mpi info grid.p3d\n"
                      "  mpirun -n 4 p3dgrid-mpi info flow.q --json",
                  .arguments = {{"FILE", &options->input.path, "Grid file or restart file"}},
                  .run = [options, &team] { show(team, *options); }};
  add_input_options(command, options->input);
  command.options.push_back({"--json", &options->json, "Print the same as JSON, and nothing else"});
  return command;
}

}  // namespace p3dgrid::tool
