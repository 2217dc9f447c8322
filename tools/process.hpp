#pragma once

#include <functional>
#include <string_view>

namespace p3dgrid::tool {

/// Puts the process into a state in which failures come back as failures: a closed pipe and a
/// file-size limit as errors of the write instead of signals, and the three standard streams
/// taken, so that no file of the user's ever becomes standard output.
void prepare_process();

/// Routes what the library has to say into this program: its messages to the console, the end of
/// a run into a Failure.
void connect_library();

/// Sends the library's messages to `sink` instead, while it lives.
class LibraryMessages {
 public:
  explicit LibraryMessages(std::function<void(std::string_view)> sink);
  LibraryMessages(const LibraryMessages&) = delete;
  LibraryMessages& operator=(const LibraryMessages&) = delete;
  ~LibraryMessages();
};

}  // namespace p3dgrid::tool
