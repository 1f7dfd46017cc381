#include "simulator/time/virtual_time.h"

#include <utility>

#include "base/print_line.h"
#include "simulator/time/timers.h"

namespace tavsim {
namespace {

constexpr int kLooksInAMillisecond = 1000;

constexpr char kNeverWaits[] =
    "tavsim: the program polls without waiting, so from now on a millisecond of virtual time "
    "passes "
    "with every 1000 calls of SDL_PollEvent, SDL_PumpEvents or SDL_GetTicks. SDL_Delay and "
    "SDL_WaitEvent let time pass at once.";

// Paced time would stand still if each check took long.
constexpr int kLooksInVain = 50;
constexpr Milliseconds kLongestLag = 1000;

constexpr char kNeverWaitsForReal[] =
    "tavsim: the program does not wait with SDL_Delay or SDL_WaitEvent, so the times of this "
    "recording depend on this machine";

int g_looks = 0;
bool g_firing = false;

void sayOnce(const char* text, bool* said) {
    if (!std::exchange(*said, true)) {
        base::printLine(stderr, text);
    }
}

void fireTimersUntil(Milliseconds until) {
    // A timer's function that waits makes the others wait too.
    if (std::exchange(g_firing, true)) {
        return;
    }
    for (auto due = nextTimer(); due && *due <= until; due = nextTimer()) {
        setTime(*due);
        fireNextTimer();
    }
    g_firing = false;
}

}  // namespace

void passTime(Milliseconds until) {
    g_looks = 0;
    fireTimersUntil(until);
    setTime(until);
}

void lookWithoutWaiting() {
    ++g_looks;
    if (isTimePaced() && g_looks >= kLooksInVain && lag() > kLongestLag) {
        static bool said = false;
        sayOnce(kNeverWaitsForReal, &said);
        passTime(after(now(), lag()));
    }
    if (g_looks >= kLooksInAMillisecond) {
        static bool said = false;
        sayOnce(kNeverWaits, &said);
        passTime(after(now(), 1));
    }
}

}  // namespace tavsim
