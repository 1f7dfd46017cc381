// Conversion of text for the JavaScript engine, which stores a character above U+FFFF as two
// surrogates of three bytes each.
#ifndef TAV_SIMULATOR_PAGE_ENGINE_TEXT_H
#define TAV_SIMULATOR_PAGE_ENGINE_TEXT_H

#include <string>
#include <string_view>

namespace tavsim {

// From UTF-8. An invalid byte becomes U+FFFD.
std::string toEngineText(std::string_view utf8);

// To UTF-8. A surrogate without its partner becomes U+FFFD.
std::string fromEngineText(std::string_view engineText);

}  // namespace tavsim

#endif
