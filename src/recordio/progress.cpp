#include "recordio/progress.hpp"

#include <memory>
#include <utility>

namespace mod_p3dgrid {
namespace {

using Observer = std::function<void(const FileProgress&)>;

// Not destroyed at exit: units are flushed while static objects are destroyed.
std::shared_ptr<const Observer>& observer_in_use() {
  static auto& observer = *new std::shared_ptr<const Observer>;
  return observer;
}

}  // namespace

constinit bool recordio::progress_is_observed = false;

void recordio::call_progress_observer(const FileProgress& progress) {
  // A copy, because the observer may install another one.
  const auto observer = observer_in_use();
  (*observer)(progress);
}

void p3dsetprogress(std::function<void(const FileProgress&)> observer) {
  recordio::progress_is_observed = observer != nullptr;
  observer_in_use() = observer ? std::make_shared<const Observer>(std::move(observer)) : nullptr;
}

}  // namespace mod_p3dgrid
