// Symbol interposition: replies and signals are delivered from within SDL's event functions.
#include "linux/host/in_front.h"

#include <atomic>
#include <string>

#include "base/print_line.h"
#include "front/events.h"
#include "front/next.h"
#include "helper/trace.h"
#include "linux/bus/pump.h"
#include "linux/host/page.h"
#include "screen/frames.h"

namespace tavlinux {
namespace {

constexpr char kRemedy[] =
    " before libtav's own, so it would receive no replies, readings or events, and its requests "
    "are refused. Start it with `tavsim run --real`, or link it with the output of "
    "`pkg-config --libs tav` before SDL.";

bool look() {
    const char* overtaken = front::firstOvertaken();
    if (overtaken != nullptr) {
        base::printLine(stderr, std::string("tav: this program finds ") + overtaken + kRemedy);
    }
    return overtaken == nullptr;
}

}  // namespace

bool isInFront() {
    static const bool result = look();
    return result;
}

}  // namespace tavlinux

namespace front {

constinit std::atomic<bool> g_isAwake = true;

bool takesPart() {
    return tavlinux::isApplicationThread() && tavlinux::isStarted();
}

void deliver() {
    tavlinux::pump();
    tavlinux::showPicture();
}

void looked(const SDL_Event*) {
}

void waitForNext() {
    constexpr int step = 10;  // milliseconds, as long as SDL itself waits between polls
    tavlinux::waitForDelivery(step);
}

void delay(unsigned milliseconds, void (*real)(unsigned milliseconds)) {
    real(tavlinux::sendToPage(milliseconds));
}

void keepFrame() {
    screen::keepFrame();
}

}  // namespace front

void helper::traceCannotBeHad(const std::string& problem) {
    base::printLine(stderr, "tav: " + problem);
}
