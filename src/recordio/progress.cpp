#include "recordio/progress.hpp"

#include <utility>

void mod_p3dgrid::p3dsetprogress(std::function<void(const FileProgress&)> observer) {
  recordio::progress_observer.set(std::move(observer));
}
