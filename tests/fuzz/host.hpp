#pragma once

#include <functional>
#include <string>

#include "options.hpp"

namespace fuzz {

/// How a call came back to its caller.
enum class Outcome {
  done,         ///< returned, and no read has failed
  failed_read,  ///< returned after `dispfilereaderror`
  run_ended,    ///< the library, or the host when it was told of a failure, has ended the run
};

/// Sets module and host to how a run begins, and then as the options say.
void begin_run(const Options& options);

/// Makes a call and judges how it came back: done, or one read error with a reason, or an end of
/// the run that says why. Anything else aborts the process.
Outcome attempt(const std::function<void()>& call);

/// How many calls came back in each way.
struct Tally {
  int done = 0;
  int failed_reads = 0;
  int run_ends = 0;
};
[[nodiscard]] const Tally& tally();

/// Closes all units, releases everything, and aborts if a file stays open or something was printed.
void end_run();

/// Aborts if the library still holds a file open, after a call that closes all it opens.
void expect_all_closed();

/// Aborts the process, saying what is wrong, unless `holds`.
void require(bool holds, const char* what);

}  // namespace fuzz
