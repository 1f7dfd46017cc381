// How often a process wakes up while nothing happens: linux_idle. Prints one JSON object: the
// wake-ups of its threads in a second in which the application sleeps, with a subscription open,
// and in a second in SDL_WaitEvent, with the library and with SDL alone.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "SDL.h"
#include "tav.h"

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kWhile(1);
constexpr char kBus[] = "vire://org.freedesktop.DBus/";

bool isAnswered = false;

void onReply(TAV_ServiceParameters*, void*) {
    isAnswered = true;
}

long wakeUps() {
    long sum = 0;
    for (const fs::directory_entry& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream status(thread.path() / "status");
        for (std::string word; status >> word;) {
            long count = 0;
            if (word == "voluntary_ctxt_switches:" && status >> count) {
                sum += count;
            }
        }
    }
    return sum;
}

long wakeUpsAsleep() {
    const long before = wakeUps();
    std::this_thread::sleep_for(kWhile);
    return wakeUps() - before - 1;  // without the one that ends the sleep
}

long wakeUpsWaiting() {
    const long before = wakeUps();
    std::thread other([] {
        std::this_thread::sleep_for(kWhile);
        SDL_Event event{};
        event.type = SDL_USEREVENT;
        SDL_PushEvent(&event);
    });
    SDL_Event event;
    SDL_WaitEvent(&event);
    const long after = wakeUps();
    other.join();
    return after - before;
}

}  // namespace

int main() {
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        return EXIT_FAILURE;
    }
    TAV_Init(0);
    const long plain = wakeUpsWaiting();  // before the first request, as SDL alone
    const std::string bus = kBus;
    TAV_ServiceCallWithCallback((bus + "NameAcquired").c_str(), "{}", onReply, nullptr, SDL_FALSE);
    TAV_ServiceCallWithCallback((bus + "GetId").c_str(), "{}", onReply, nullptr, SDL_TRUE);
    SDL_Event event;
    while (!isAnswered) {
        SDL_PollEvent(&event);
    }
    wakeUpsAsleep();  // until the bus has answered the library's own requests
    const long asleep = wakeUpsAsleep();
    const long waiting = wakeUpsWaiting();
    std::printf("{\"asleep\": %ld, \"waiting\": %ld, \"waiting_plain\": %ld}\n", asleep, waiting,
                plain);
    TAV_Quit();
    SDL_Quit();
    return EXIT_SUCCESS;
}
