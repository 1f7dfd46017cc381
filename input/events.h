// Sends input to the application through SDL's event queue.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "SDL.h"

namespace input {

// How many events SDL's queue has room for. Nothing while there is no queue, because SDL's video is
// not initialized.
std::optional<size_t> queueRoom();

// Is told each event before it is pushed.
using EventObserver = void (*)(const SDL_Event& event);

// Sends all of the events as if the user had caused them. SDL's functions for the state of keys and
// mouse follow, and the application's event filter applies. False, with a line in `error` and
// nothing done, when the queue has not enough room.
bool sendEvents(const std::vector<SDL_Event>& events, EventObserver observer, std::string* error);

// The same for what a user does at this moment, who cannot be refused: what the queue has no room
// for is lost, as SDL does with the input of its window, motion first. The state follows even so.
void sendOrDrop(const std::vector<SDL_Event>& events);

}  // namespace input
