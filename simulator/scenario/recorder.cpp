#include "simulator/scenario/recorder.h"

#include <glib.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "SDL.h"
#include "base/line_file.h"
#include "front/next.h"
#include "simulator/control/commands.h"
#include "simulator/control/watch.h"
#include "simulator/device/claim.h"
#include "simulator/device/edge.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/trusted_folder.h"
#include "simulator/input/origin.h"
#include "simulator/scenario/parameters.h"
#include "simulator/scenario/scenario.h"
#include "simulator/time/clock.h"

namespace tavsim {
namespace {

constexpr Milliseconds kPatience = 10000;    // the time-out for an application that ends by itself
constexpr char kNameless[] = "unknown key";  // SDL's name of what is no key

struct Recording {
    base::LineFile file;
    pid_t owner = 0;  // a fork of the application is not recorded
    Milliseconds last = 0;
    bool isMinimized = false;
    bool hasQuit = false;
};

// Never destroyed, because the device ends after static objects are destroyed.
Recording& recording() {
    static Recording& instance = *new Recording;
    return instance;
}

bool isRecording() {
    return recording().file.isOpen() && recording().owner == getpid();
}

void append(const std::string& line) {
    const std::string written = unfilled(line);
    tellRecorded(written);
    if (!recording().file.append(written)) {
        const std::string path = recording().file.path();
        const std::string reason = std::strerror(errno);
        recording().file.close();
        endProgram(path + ": the recording cannot be written: " + reason);
    }
}

void recordCommand(const std::string& line, Milliseconds time) {
    if (!isRecording()) {
        return;
    }
    recording().last = time;
    recording().hasQuit = line == kQuit;
    append("at " + std::to_string(time) + "ms: " + line);
}

std::string utf8Of(Uint16 character) {
    char bytes[6];
    const int length = g_unichar_to_utf8(character, bytes);
    return {bytes, static_cast<size_t>(length)};
}

// A key without a name can still type. A lock key sends a press when the lock goes on and a release
// when it goes off; both are a press of the key.
std::string keyCommand(const SDL_KeyboardEvent& event) {
    static const auto keyName = TAV_FRONT_NEXT(SDL_GetKeyName);
    const bool isDown = event.type == SDL_KEYDOWN;
    const SDL_keysym& key = event.keysym;
    const std::string name = keyName(key.sym);
    if (name == kNameless) {
        return isDown && key.unicode > ' ' ? "text " + utf8Of(key.unicode) : "";
    }
    const bool isLock = key.sym == SDLK_CAPSLOCK || key.sym == SDLK_NUMLOCK;
    return std::string("key ") + (isDown || isLock ? "down " : "up ") + name;
}

std::string touchCommand(const char* what, int x, int y) {
    return std::string("touch ") + what + " " + std::to_string(x) + " " + std::to_string(y);
}

std::string buttonCommand(const SDL_MouseButtonEvent& event) {
    return event.button != SDL_BUTTON_LEFT
               ? ""
               : touchCommand(event.type == SDL_MOUSEBUTTONDOWN ? "down" : "up", event.x, event.y);
}

// The window appears at the start, which is not input.
std::string windowCommand(const SDL_ActiveEvent& event) {
    const bool isMinimized = event.gain == 0;
    if ((event.state & SDL_APPACTIVE) == 0 || isMinimized == recording().isMinimized) {
        return {};
    }
    recording().isMinimized = isMinimized;
    return isMinimized ? "window minimize" : "window restore";
}

// Empty where there is none.
std::string commandFor(const SDL_Event& event) {
    switch (event.type) {
    case SDL_ACTIVEEVENT:
        return windowCommand(event.active);
    case SDL_QUIT:
        return kQuit;
    default:
        return inputCommand(event);
    }
}

// Creates the mark too.
bool wasRecorded() {
    base::LineFile mark;
    const std::string path = rootFolder() + kRecordingMark;
    return (access(path.c_str(), F_OK) == 0 && isClaimed(rootFolder(), kRunClaim)) ||
           !mark.open(path);
}

}  // namespace

std::string inputCommand(const SDL_Event& event) {
    switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        return keyCommand(event.key);
    case SDL_MOUSEMOTION:
        return touchCommand("move", event.motion.x, event.motion.y);
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        return buttonCommand(event.button);
    default:
        return {};
    }
}

void removeRecordingMark(const std::string& root) {
    unlink((root + kRecordingMark).c_str());
}

bool startRecording(const std::string& file, std::string* error) {
    if (wasRecorded()) {
        return true;
    }
    recording() = {};
    if (!recording().file.open(file)) {
        *error = file + ": the recording cannot be written: " + std::strerror(errno);
        return false;
    }
    recording().owner = getpid();
    if (profile().plugin) {
        recordCommand("plugin on", 0);
    }
    observeCommands(recordCommand);
    trackOrigins(true);
    return true;
}

void recordEvent(const SDL_Event& event) {
    if (!isRecording() || !isFromOutside(event)) {
        return;
    }
    if (const std::string command = commandFor(event); !command.empty()) {
        recordCommand(command, now());
    }
}

void stopRecording() {
    observeCommands(nullptr);
    trackOrigins(false);
    if (!isRecording()) {
        return;
    }
    if (!recording().hasQuit) {
        append("expect ended within " + std::to_string(now() - recording().last + kPatience) +
               "ms");
    }
    recording().file.close();
}

}  // namespace tavsim
