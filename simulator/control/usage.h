// What a command's usage demands of its words.
#ifndef TAV_SIMULATOR_CONTROL_USAGE_H
#define TAV_SIMULATOR_CONTROL_USAGE_H

#include <string>
#include <string_view>

#include "simulator/control/words.h"

namespace tavsim {

// Whether the words are what the usage says. In a usage, a word in capitals names a kind of word
// and any other stands for itself; there is a|b for either, [a b] for what can be left out, and
// a... for one or more. `problem` says which value cannot be; it is empty where the form is wrong.
bool fitsUsage(std::string_view usage, Words words, std::string* problem);

}  // namespace tavsim

#endif
