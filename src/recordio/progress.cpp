#include "recordio/progress.hpp"

#include <utility>

namespace mod_p3dgrid {

// Not destroyed at exit: units are flushed while static objects are destroyed.
constinit std::function<void(const FileProgress&)>* recordio::progress_observer = nullptr;

void p3dsetprogress(std::function<void(const FileProgress&)> observer) {
  auto* const installed =
      observer ? new std::function<void(const FileProgress&)>(std::move(observer)) : nullptr;
  delete std::exchange(recordio::progress_observer, installed);
}

}  // namespace mod_p3dgrid
