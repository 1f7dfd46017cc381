#include "input/key_names.h"

#include <map>
#include <vector>

#include "base/json/writer.h"
#include "base/suggestion.h"

namespace input {
namespace {

// Keys with one code after the other.
struct Row {
    int first;
    std::vector<const char*> names;
};

const std::vector<Row>& rows() {
    static const auto& all = *new const std::vector<Row>{
        {SDLK_BACKSPACE, {"backspace", "tab"}},
        {SDLK_CLEAR, {"clear", "return"}},
        {SDLK_PAUSE, {"pause"}},
        {SDLK_ESCAPE, {"escape"}},
        {SDLK_SPACE, {"space"}},
        {SDLK_DELETE, {"delete"}},
        {SDLK_KP0,
         {"[0]", "[1]", "[2]", "[3]", "[4]", "[5]", "[6]", "[7]", "[8]", "[9]", "[.]", "[/]", "[*]",
          "[-]", "[+]", "enter", "equals"}},
        {SDLK_UP, {"up", "down", "right", "left", "insert", "home", "end", "page up", "page down"}},
        {SDLK_F1,
         {"f1", "f2", "f3", "f4", "f5", "f6", "f7", "f8", "f9", "f10", "f11", "f12", "f13", "f14",
          "f15"}},
        {SDLK_NUMLOCK,
         {"numlock",     "caps lock", "scroll lock", "right shift", "left shift",   "right ctrl",
          "left ctrl",   "right alt", "left alt",    "right meta",  "left meta",    "left super",
          "right super", "alt gr",    "compose",     "help",        "print screen", "sys req",
          "break",       "menu",      "power",       "euro",        "undo"}},
    };
    return all;
}

constexpr std::string_view kCharacters =
    "!\"#$&'()*+,-./0123456789:;<=>?@[\\]^_`abcdefghijklmnopqrstuvwxyz";

std::map<std::string, int> namedKeys() {
    std::map<std::string, int> keys;
    for (const Row& row : rows()) {
        for (size_t n = 0; n < row.names.size(); ++n) {
            keys[row.names[n]] = row.first + static_cast<int>(n);
        }
    }
    for (const char each : kCharacters) {
        keys[std::string(1, each)] = static_cast<unsigned char>(each);
    }
    for (int n = 0; n <= SDLK_WORLD_95 - SDLK_WORLD_0; ++n) {
        keys["world " + std::to_string(n)] = SDLK_WORLD_0 + n;
    }
    return keys;
}

}  // namespace

std::optional<SDLKey> keyNamed(std::string_view name, std::string* error) {
    static const auto& keys = *new const std::map<std::string, int>(namedKeys());
    const auto found = keys.find(std::string(name));
    if (found != keys.end()) {
        return static_cast<SDLKey>(found->second);
    }
    std::vector<std::string> names;
    names.reserve(keys.size());
    for (const auto& [each, key] : keys) {
        names.push_back(each);
    }
    *error = "no key " + base::quoted(name) + base::suggestion(name, names);
    return std::nullopt;
}

}  // namespace input
