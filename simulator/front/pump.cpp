#include "simulator/front/pump.h"

#include <poll.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "SDL.h"
#include "base/environment.h"
#include "front/events.h"
#include "front/next.h"
#include "screen/frames.h"
#include "simulator/bus/bus.h"
#include "simulator/bus/service_program.h"
#include "simulator/bus/services.h"
#include "simulator/control/control.h"
#include "simulator/device/edge.h"
#include "simulator/device/journal.h"
#include "simulator/device/running.h"
#include "simulator/input/origin.h"
#include "simulator/page/plugin.h"
#include "simulator/scenario/recorder.h"
#include "simulator/time/pause.h"
#include "simulator/time/queue.h"
#include "simulator/time/timers.h"

namespace tavsim {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr Milliseconds kWaitStep = 10;  // between two checks of SDL's queue
// Sockets are not served in every poll, because that takes system calls.
constexpr Milliseconds kControlPause = 5;

constexpr Milliseconds kNoMoment = -1;

Milliseconds g_servedMoment = kNoMoment;  // in paced time, at which commands were last taken
int g_deliveries = 0;  // that are being made: a delivery may look for events itself

void serveOutside() {
    serveControl();
    serveServicePrograms();
}

void serveOutsideNowAndThen() {
    static Milliseconds served = 0;
    const Milliseconds time = realTimeAtLeast();
    // The clock of a restarted device begins at 0 again.
    if (time - served >= kControlPause || time < served || isTimeHeld()) {
        served = time;
        serveOutside();
    }
}

// The effects of commands are delivered at once. In a recording, they are delivered when they are
// in a scenario, in which commands are deliveries themselves, before all others of their moment. So
// they are not carried out at a moment whose deliveries have been made.
void serveAndDeliver(void (*serve)()) {
    if (isTimePaced()) {
        const bool isNewMoment = std::exchange(g_servedMoment, now()) != now();
        deliverDue(isNewMoment ? serve : [] {});
    } else {
        serve();
        deliverDue([] {});
    }
    if (const std::shared_ptr<Page> page = livingPage()) {
        page->serve();
    }
}

// The time of the next delivery or timer, for which nothing from outside is needed.
std::optional<Milliseconds> nextMoment() {
    const std::optional<Milliseconds> delivery = nextDue();
    const std::optional<Milliseconds> timer = nextTimer();
    return delivery && timer ? std::min(delivery, timer) : delivery ? delivery : timer;
}

void sleepAStep() {
    static const auto realDelay = TAV_FRONT_NEXT(SDL_Delay);
    const Milliseconds untilDue = nextDue().value_or(now() + kWaitStep) - now();
    const Milliseconds step = std::clamp<Milliseconds>(untilDue, 1, kWaitStep);
    if (const Milliseconds left = useWait(step, Wait::ForEvents); left > 0) {
        realDelay(static_cast<Uint32>(left));
    }
}

void take(const SDL_Event& event) {
    recordEvent(event);
    const std::string input = inputCommand(event);
    if (!input.empty() && isStarted() && isPaymentOpen()) {
        JournalEntry("device", "input", "input", input)
            .outcome("not the application's: a payment is awaited");
    }
    if (event.type == SDL_QUIT && isStarted() && holdQuit()) {
        refuseOpenPurchases();
    }
}

void sendQuitAgain() {
    static const auto pushEvent = TAV_FRONT_NEXT(SDL_PushEvent);
    SDL_Event again{};
    again.type = SDL_QUIT;
    noteOwnEvent(again);
    pushEvent(&again);
}

// Then a program that handles SDL's events is on the device, whether it uses the library or not.
bool isShownInPanel() {
    static const bool isShown = base::environment("TAVSIM_PANEL") == "1";
    return isShown;
}

}  // namespace

void startPump() {
    g_servedMoment = kNoMoment;
    setMeanwhile(sendWhileWaiting);
}

void pumpNow() {
    serveAndDeliver(serveOutside);
}

bool sendWhileWaiting(Milliseconds longest, Wait wait) {
    const auto end = SteadyClock::now() + std::chrono::milliseconds(longest);
    while (true) {
        std::vector<pollfd> sockets = controlsToPoll();
        const std::shared_ptr<Page> page = livingPage();
        pollfd pages = page != nullptr ? page->toPoll() : pollfd{-1, 0, 0};
        if (wait == Wait::ForTime) {
            pages.events &= POLLOUT;
        }
        if (pages.events != 0) {
            sockets.push_back(pages);
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
        const auto limit = static_cast<int>(std::clamp<Milliseconds>(left.count(), 0, INT_MAX));
        if (sockets.empty() || poll(sockets.data(), sockets.size(), limit) <= 0) {
            return false;
        }
        if (wait == Wait::ForEvents && pages.events != 0 &&
            (sockets.back().revents & ~POLLOUT) != 0) {
            return true;
        }
        sendToControls();
        if (page != nullptr) {
            page->send();
        }
    }
}

void pumpUntil(Milliseconds time) {
    pumpNow();
    for (auto due = nextDue(); due && *due <= time; due = nextDue()) {
        passTime(*due);
        pumpNow();
    }
    passTime(time);
}

}  // namespace tavsim

namespace front {

constinit std::atomic<bool> g_isAwake = false;

bool takesPart() {
    return (tavsim::isStarted() || tavsim::isTimeVirtual()) && tavsim::isOnApplicationThread();
}

void deliver() try {
    if (tavsim::isTimeVirtual()) {
        tavsim::lookWithoutWaiting();
    }
    if (!tavsim::isStarted() && tavsim::isShownInPanel()) {
        tavsim::running();
    }
    if (tavsim::isStarted()) {
        ++tavsim::g_deliveries;
        tavsim::serveAndDeliver(tavsim::serveOutsideNowAndThen);
        --tavsim::g_deliveries;
    }
} catch (...) {
    tavsim::endProgramByException();
}

void looked(const SDL_Event* event) try {
    if (event != nullptr) {
        tavsim::take(*event);
    } else if (tavsim::isStarted() && tavsim::g_deliveries == 0 && tavsim::letQuitGo()) {
        tavsim::sendQuitAgain();
    }
} catch (...) {
    tavsim::endProgramByException();
}

void waitForNext() try {
    if (!tavsim::isTimeVirtual()) {
        tavsim::sleepAStep();
        return;
    }
    const std::optional<tavsim::Milliseconds> next = tavsim::nextMoment();
    if (tavsim::isTimePaced()) {
        const tavsim::Milliseconds step =
            tavsim::after(tavsim::now(), tavsim::inPace(tavsim::kWaitStep));
        tavsim::passTime(tavsim::waitInPace(std::min(next.value_or(step), step)));
        return;
    }
    if (!next) {
        tavsim::sleepAStep();
    }
    tavsim::passTime(next.value_or(tavsim::now()));
} catch (...) {
    tavsim::endProgramByException();
}

void keepFrame() try { screen::keepFrame(); } catch (...) {
    tavsim::endProgramByException();
}

}  // namespace front
