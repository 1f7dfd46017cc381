// The names of applications.
#pragma once

#include <glib.h>

#include <string>

namespace base {

// Whether it can be the application's name on the buses.
inline bool isApplicationId(const std::string& text) {
    constexpr size_t longest = 255;
    constexpr char form[] = "^[A-Za-z_-][A-Za-z0-9_-]*(\\.[A-Za-z_-][A-Za-z0-9_-]*)+\\z";
    return text.size() <= longest &&
           g_regex_match_simple(form, text.c_str(), G_REGEX_RAW, {}) != FALSE;
}

}  // namespace base
