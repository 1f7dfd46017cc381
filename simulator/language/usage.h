// What a command's usage demands of its words.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "simulator/language/words.h"

namespace tavsim {

// Whether the words are what the usage says. In a usage, a word in capitals names a kind of word
// and any other stands for itself; there is a|b for either, [a b] for what can be left out, and
// a... for one or more. `problem` says which value cannot be; it is empty where the form is wrong.
// With a folder, files that are named must be of use, and relative ones are looked for in there.
bool fitsUsage(std::string_view usage, Words words, std::string* problem,
               const std::optional<std::string>& folder = {});

// Whether the first of the words is the path of a file.
bool beginsWithFile(std::string_view usage);

}  // namespace tavsim
