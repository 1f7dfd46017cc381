#include "input/keyboard.h"

#include <glib.h>

#include <algorithm>
#include <map>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "front/next.h"

namespace input {
namespace {

constexpr std::string_view kPlain = "`1234567890-=[]\\;',./";
constexpr std::string_view kShifted = "~!@#$%^&*()_+{}|:\"<>?";
constexpr std::string_view kKeypad = "0123456789./*-+\r=";  // from SDLK_KP0 on
constexpr std::string_view kControls = "\b\t\r\x1b\x7f";    // that have keys of their own
constexpr gunichar kHighestCharacter = 0xFFFF;              // in an event

struct Modifier {
    SDLKey key;
    int flag;
};

constexpr Modifier kModifiers[] = {
    {SDLK_LSHIFT, KMOD_LSHIFT}, {SDLK_RSHIFT, KMOD_RSHIFT}, {SDLK_LCTRL, KMOD_LCTRL},
    {SDLK_RCTRL, KMOD_RCTRL},   {SDLK_LALT, KMOD_LALT},     {SDLK_RALT, KMOD_RALT},
    {SDLK_LMETA, KMOD_LMETA},   {SDLK_RMETA, KMOD_RMETA},   {SDLK_MODE, KMOD_MODE},
    {SDLK_NUMLOCK, KMOD_NUM},   {SDLK_CAPSLOCK, KMOD_CAPS}};

int modifierOf(SDLKey key) {
    const auto* const found = std::ranges::find(kModifiers, key, &Modifier::key);
    return found != std::end(kModifiers) ? found->flag : int{KMOD_NONE};
}

bool isLock(SDLKey key) {
    return key == SDLK_NUMLOCK || key == SDLK_CAPSLOCK;
}

bool isLetter(int character) {
    return character < 0x80 && g_ascii_isalpha(static_cast<char>(character));
}

int modifiersNow() {
    static const auto modState = TAV_FRONT_NEXT(SDL_GetModState);
    return modState();
}

bool isUnicodeWanted() {
    static const auto enableUnicode = TAV_FRONT_NEXT(SDL_EnableUNICODE);
    return enableUnicode(-1) != 0;
}

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

KeyStrokes::KeyStrokes() : m_modifiers(modifiersNow()) {
}

// An event has the modifiers without the one that it presses or releases. A lock key changes with
// each press; its events say whether it is on or off.
void KeyStrokes::press(SDLKey key) {
    if (isLock(key)) {
        m_modifiers ^= modifierOf(key);
        add(key, (m_modifiers & modifierOf(key)) != 0 ? SDL_PRESSED : SDL_RELEASED, 0);
        return;
    }
    add(key, SDL_PRESSED, characterOf(key));
    m_modifiers |= modifierOf(key);
}

void KeyStrokes::release(SDLKey key) {
    if (isLock(key)) {
        return;
    }
    m_modifiers &= ~modifierOf(key);
    add(key, SDL_RELEASED, 0);
}

bool KeyStrokes::type(const std::string& text, std::string* error) {
    if (!g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) {
        *error = "the text is no UTF-8";
        return false;
    }
    for (const char* at = text.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
        const gunichar character = g_utf8_get_char(at);
        if (g_unichar_iscntrl(character) || character > kHighestCharacter) {
            char code[16];
            g_snprintf(code, sizeof code, "U+%04X", character);
            *error = std::string("SDL's key events cannot carry ") + code;
            return false;
        }
        typeCharacter(static_cast<Uint16>(character));
    }
    return true;
}

// With the shift key if the character needs it.
void KeyStrokes::typeCharacter(Uint16 character) {
    int key = SDLK_UNKNOWN;
    bool isShifted = false;
    const size_t shifted =
        character < 0x80 ? kShifted.find(static_cast<char>(character)) : std::string_view::npos;
    if (shifted != std::string_view::npos) {
        key = static_cast<unsigned char>(kPlain[shifted]);
        isShifted = true;
    } else if (isLetter(character)) {
        key = static_cast<unsigned char>(g_ascii_tolower(static_cast<char>(character)));
        isShifted = (key != character) != ((m_modifiers & KMOD_CAPS) != 0);
    } else if (character < 0x80 || (character >= SDLK_WORLD_0 && character <= SDLK_WORLD_95)) {
        key = character;
    }
    const bool pressesShift = isShifted && (m_modifiers & KMOD_SHIFT) == 0;
    if (pressesShift) {
        press(SDLK_LSHIFT);
    }
    add(static_cast<SDLKey>(key), SDL_PRESSED, character);
    release(static_cast<SDLKey>(key));
    if (pressesShift) {
        release(SDLK_LSHIFT);
    }
}

void KeyStrokes::add(SDLKey key, Uint8 state, Uint16 unicode) {
    SDL_Event event{};
    event.key.type = state == SDL_PRESSED ? SDL_KEYDOWN : SDL_KEYUP;
    event.key.state = state;
    event.key.keysym.sym = key;
    event.key.keysym.mod = static_cast<SDLMod>(m_modifiers);
    event.key.keysym.unicode = isUnicodeWanted() ? unicode : Uint16{0};
    m_events.push_back(event);
}

// The character that the key types with the pressed modifiers; 0 for none.
Uint16 KeyStrokes::characterOf(SDLKey key) const {
    const bool shift = (m_modifiers & KMOD_SHIFT) != 0;
    if (isLetter(key)) {
        const bool isUpper = shift != ((m_modifiers & KMOD_CAPS) != 0);
        const char letter =
            isUpper ? g_ascii_toupper(static_cast<char>(key)) : static_cast<char>(key);
        return static_cast<Uint16>((m_modifiers & KMOD_CTRL) != 0 ? letter & 0x1f : letter);
    }
    if (key >= SDLK_KP0 && key <= SDLK_KP_EQUALS) {
        const bool isTyping = key > SDLK_KP_PERIOD || (m_modifiers & KMOD_NUM) != 0;
        return isTyping ? static_cast<Uint16>(kKeypad[static_cast<size_t>(key - SDLK_KP0)])
                        : Uint16{0};
    }
    const bool isAscii = key < 0x80;
    const size_t plain = isAscii ? kPlain.find(static_cast<char>(key)) : std::string_view::npos;
    if (shift && plain != std::string_view::npos) {
        return static_cast<Uint16>(kShifted[plain]);
    }
    const bool isPrinted = isAscii && key >= SDLK_SPACE && key < SDLK_DELETE;
    const bool isControl = isAscii && key != SDLK_UNKNOWN &&
                           kControls.find(static_cast<char>(key)) != std::string_view::npos;
    const bool isOfTheWorld = key >= SDLK_WORLD_0 && key <= SDLK_WORLD_95;
    return isPrinted || isControl || isOfTheWorld ? static_cast<Uint16>(key) : Uint16{0};
}

void followKey(const SDL_KeyboardEvent& event) {
    static const auto keyState = TAV_FRONT_NEXT(SDL_GetKeyState);
    static const auto setModState = TAV_FRONT_NEXT(SDL_SetModState);
    keyState(nullptr)[event.keysym.sym] = event.state;
    const int flag = modifierOf(event.keysym.sym);
    const int modifiers = modifiersNow();
    setModState(
        static_cast<SDLMod>(event.state == SDL_PRESSED ? modifiers | flag : modifiers & ~flag));
}

}  // namespace input
