#pragma once

#include <functional>
#include <string>
#include <vector>

#include "detect/evidence.hpp"
#include "detect/found.hpp"
#include "detect/verdict.hpp"

namespace p3dgrid {

/// The verdict on a file with nothing stated, worked out only where it is asked for.
using OpenVerdict = std::function<Verdict()>;

/// Takes the only reading of a verdict, or says why there is none: throws a Failure that names the
/// file, and what would help.
/// @param stated  what has been stated, which the verdict goes by
[[nodiscard]] Found settle(const std::string& path, Evidence& file, const Verdict& verdict,
                           const std::vector<FormOption>& stated, const OpenVerdict& open);

/// What would help to read a file that is not what was stated, as part of a sentence: other
/// options, or that nothing would. Empty where nothing is known.
/// @param verdict  on what has been stated
[[nodiscard]] std::string help_with(Evidence& file, const std::vector<FormOption>& stated,
                                    const Verdict& verdict, const OpenVerdict& open);

}  // namespace p3dgrid
