// The name that a misspelt one was meant to be.
#ifndef TAV_BASE_SUGGESTION_H
#define TAV_BASE_SUGGESTION_H

#include <string>
#include <string_view>
#include <vector>

namespace base {

// To be said behind an error about `word`: `; did you mean "location"?` with the nearest of the
// names, the first of those that are as near. Empty when none is near.
std::string suggestion(std::string_view word, const std::vector<std::string>& names);

}  // namespace base

#endif
