// Pressed keys and typed texts, on a keyboard with a US layout.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SDL.h"

namespace input {

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
