#include "recordio/progress.hpp"

#include <utility>

namespace mod_p3dgrid {
namespace {

std::function<void(const FileProgress&)>& observer() {
  // Never destroyed: units are flushed while static objects are.
  static auto& function = *new std::function<void(const FileProgress&)>;
  return function;
}

}  // namespace

void recordio::report_progress(const FileProgress& progress) {
  if (observer()) observer()(progress);
}

void p3dsetprogress(std::function<void(const FileProgress&)> observer) {
  mod_p3dgrid::observer() = std::move(observer);
}

}  // namespace mod_p3dgrid
