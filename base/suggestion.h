// Suggestions for misspelt names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace base {

// The end of an error message about `word`: `; did you mean "location"?` with the nearest of the
// names, the first one of several. Empty when none is near.
std::string suggestion(std::string_view word, const std::vector<std::string>& names);

}  // namespace base
