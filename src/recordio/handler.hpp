#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace mod_p3dgrid {

/// A function that the host has set; none at the start of a run. It may set another one while it is
/// called. Not destroyed at exit: units are flushed while static objects are destroyed.
template <class Signature>
class Handler {
 public:
  constexpr Handler() : function_() {}
  Handler(const Handler&) = delete;
  Handler& operator=(const Handler&) = delete;
  ~Handler() {}

  /// An empty function removes the handler.
  void set(std::function<Signature> function) {
    function_ = function ? std::make_shared<decltype(function)>(std::move(function)) : nullptr;
  }

  explicit operator bool() const { return function_ != nullptr; }

  template <class... Arguments>
  decltype(auto) operator()(Arguments&&... arguments) const {
    const auto function = function_;
    return (*function)(std::forward<Arguments>(arguments)...);
  }

 private:
  union {  // not destroyed
    std::shared_ptr<const std::function<Signature>> function_;
  };
};

}  // namespace mod_p3dgrid
