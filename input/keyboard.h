// The names of keys, and pressed keys and typed texts on a keyboard with a US layout.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SDL.h"

namespace input {

// The key that SDL_GetKeyName() gives this name, known where SDL is not. Without one, `error` is a
// line that may suggest another.
std::optional<SDLKey> keyNamed(std::string_view name, std::string* error);

// Builds the events of keys that are pressed and released one after the other.
class KeyStrokes {
public:
    KeyStrokes();

    void press(SDLKey key);
    void release(SDLKey key);

    // Types a UTF-8 text. False, with a line in `error`, when no key event can carry it.
    bool type(const std::string& text, std::string* error);

    const std::vector<SDL_Event>& events() const { return m_events; }

private:
    void add(SDLKey key, Uint8 state, Uint16 unicode);
    void typeCharacter(Uint16 character);
    Uint16 characterOf(SDLKey key) const;

    std::vector<SDL_Event> m_events;
    int m_modifiers;
};

// Updates the result of SDL_GetKeyState() and SDL_GetModState().
void followKey(const SDL_KeyboardEvent& event);

}  // namespace input
