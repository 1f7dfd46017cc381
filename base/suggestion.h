// Suggestions for misspelt names.
#ifndef TAV_BASE_SUGGESTION_H
#define TAV_BASE_SUGGESTION_H

#include <string>
#include <string_view>
#include <vector>

namespace base {

// The end of an error message about `word`: `; did you mean "location"?` with the nearest of the
// names, the first one of several. Empty when none is near.
std::string suggestion(std::string_view word, const std::vector<std::string>& names);

}  // namespace base

#endif
