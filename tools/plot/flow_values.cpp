#include "plot/flow_values.hpp"

#include <functional>
#include <memory>

#include "restart_file.hpp"
#include "restart_stream.hpp"

namespace p3dgrid::tool::plot {
namespace {

using mod_p3dgrid::integer;

/// Value of a point, counted from 0 over all blocks.
using ValueAt = std::function<float(std::int64_t)>;

/// Reads a restart file's variables for all points.
class FlowSource {
 public:
  virtual ~FlowSource() = default;
  [[nodiscard]] virtual integer variables() const = 0;
  /// The values stay good until the next call.
  [[nodiscard]] virtual ValueAt values_of(integer variable) = 0;
};

class WholeFile : public FlowSource {
 public:
  explicit WholeFile(const FlowRequest& request)
      : restart_(read_restart(request.path, request.found, request.grid)) {}
  integer variables() const override { return restart_.variables(); }
  ValueAt values_of(integer variable) override {
    return [this, variable](std::int64_t point) { return restart_.flow(variable, point + 1); };
  }

 private:
  Restart restart_;
};

class OneAtATime : public FlowSource {
 public:
  explicit OneAtATime(const FlowRequest& request)
      : stream_(request.path, request.found, request.grid),
        variables_(stream_.begin().variables()) {}
  integer variables() const override { return variables_; }
  ValueAt values_of(integer variable) override {
    const auto values = stream_.read(variable);
    return [values](std::int64_t point) { return values[static_cast<std::size_t>(point)]; };
  }

 private:
  RestartStream stream_;
  integer variables_;
};

// Text is slow to read, so it is read once; single-precision files of layout 100 look different to
// a reader of one variable.
std::unique_ptr<FlowSource> source_of(const FlowRequest& request) {
  const RestartForm& form = request.found.restart();
  const bool whole =
      form.coding.encoding == Encoding::formatted ||
      (form.layout == Layout::triplets && !reads_triplets(traits_of(form.layout), form.coding));
  if (whole) return std::make_unique<WholeFile>(request);
  return std::make_unique<OneAtATime>(request);
}

}  // namespace

FlowVariable take_values(std::vector<Surface>& surfaces, const FlowRequest& request) {
  const auto source = source_of(request);
  const FlowVariable variable = flow_variable(request.variable, request.path,
                                              request.found.restart().layout, source->variables());
  std::vector<std::vector<float>> read(surfaces.size());  // of each point all that is needed
  const std::size_t needs = variable.needs.size();
  for (std::size_t n = 0; n < needs; ++n) {
    const ValueAt value = source->values_of(variable.needs[n]);
    for (std::size_t s = 0; s < surfaces.size(); ++s) {
      read[s].resize(surfaces[s].points.size() * needs);
      std::size_t at = n;
      surfaces[s].for_each_point([&](std::int64_t point) {
        read[s][at] = value(point);
        at += needs;
      });
    }
  }
  for (std::size_t s = 0; s < surfaces.size(); ++s) {
    for (auto point = read[s].begin(); point != read[s].end();
         point += static_cast<std::ptrdiff_t>(needs)) {
      surfaces[s].values.push_back(variable.from({point, needs}, request.gamma));
    }
  }
  return variable;
}

}  // namespace p3dgrid::tool::plot
