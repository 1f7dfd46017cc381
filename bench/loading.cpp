// What the library adds to a fresh process that uses the platform, SDL and SQLite already:
// tav_loading LIBTAV. Prints one JSON object: the microseconds that loading took, and the resident
// memory in KiB that loading and TAV_Init added, in all and the part that no other process shares.
#include <dlfcn.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "SDL.h"
#include "bench/memory.h"
#include "simulator/interface/device.h"

namespace {

using tavbench::memory;
using tavbench::Memory;

void fail(const char* what, const char* why) {
    std::fprintf(stderr, "tav_loading: %s: %s\n", what, why);
    std::exit(EXIT_FAILURE);
}

void usePlatform() {
    tavsim::Profile profile;
    profile.machine = "cinnabar";
    profile.preferences.emplace()["deviceName"] = "Kitchen";
    std::string error;
    if (!tavsim::device().start(profile, {}, &error)) {
        fail("the device", error.c_str());
    }
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fail("SDL", SDL_GetError());
    }
    sqlite3* database = nullptr;
    if (sqlite3_open("/var/kora/preferences/systemprefs.db", &database) != SQLITE_OK ||
        sqlite3_exec(database, "SELECT * FROM Preferences", nullptr, nullptr, nullptr) !=
            SQLITE_OK) {
        fail("SQLite", sqlite3_errmsg(database));
    }
    sqlite3_close(database);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fail("usage", "tav_loading LIBTAV");
    }
    usePlatform();
    memory();  // the first measurement itself takes memory
    const Memory before = memory();
    const auto start = std::chrono::steady_clock::now();
    void* library = dlopen(argv[1], RTLD_LAZY);
    const std::chrono::duration<double, std::micro> elapsed =
        std::chrono::steady_clock::now() - start;
    if (library == nullptr) {
        fail(argv[1], dlerror());
    }
    const auto init = reinterpret_cast<int (*)(int)>(dlsym(library, "TAV_Init"));
    if (init == nullptr || init(0) != 0) {
        fail(argv[1], "cannot be started");
    }
    const Memory after = memory();
    std::printf("{\"dlopen_us\": %.1f, \"resident_kib\": %ld, \"unshared_kib\": %ld}\n",
                elapsed.count(), after.resident - before.resident,
                after.unshared - before.unshared);
    tavsim::device().stop();
    SDL_Quit();
    return EXIT_SUCCESS;
}
