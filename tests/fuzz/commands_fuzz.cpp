// Commands to a running device. Input: one command a line.
#include <sqlite3.h>

#include "SDL.h"
#include "fuzz.h"
#include "simulator/bus/profile_services.h"
#include "simulator/control/commands.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/state.h"
#include "tav.h"

using tavfuzz::expect;

namespace {

constexpr std::size_t kMostCommands = 64;
constexpr char kDatabase[] = "/var/kora/preferences/systemprefs.db";

struct Looks {
    std::map<std::string, std::string> properties;
    std::map<std::string, std::string> appinfo;
    std::set<std::string> refused;
    bool plugin;
    std::size_t openCalls;
    std::int64_t journalLength;
    std::map<std::string, std::string> state;

    bool operator==(const Looks&) const = default;
};

Looks deviceLooks() {
    const tavsim::Profile& profile = tavsim::device().profile;
    return {profile.properties,
            profile.appinfo,
            tavsim::refusedRequests(),
            profile.plugin,
            tavsim::device().openCalls().size(),
            tavsim::journalLength(),
            tavsim::deviceState()};
}

void ignoreReply(TAV_ServiceParameters* /*parameters*/, void* /*userData*/) {
}

// An application that has calls open, so that replies and fixes find somebody.
void startOver() {
    TAV_EnableLocationTracking(SDL_FALSE);
    tavsim::device().profile = {};
    tavsim::clearRefusals();
    tavsim::clearProfileServices();
    tavsim::device().pump();
    for (SDL_Event event; SDL_PollEvent(&event) != 0;) {}
    TAV_EnableLocationTracking(SDL_TRUE);
    TAV_ServiceCallWithCallback("vire://a/b", "{}", ignoreReply, nullptr, SDL_FALSE);
}

void carryOut(const std::string& line) {
    const Looks before = deviceLooks();
    const bool fitsNoUsage = tavsim::whyMalformed(line).starts_with("usage: ");
    expect(deviceLooks() == before, "looking at a command changes nothing");
    const tavsim::CommandResult result = tavsim::carryOut(line);
    expect(!fitsNoUsage || !result.error.empty(), "what fits no usage is refused");
    expect(result.output.empty() || result.output.ends_with('\n'), "output is whole lines");
    if (!result.error.empty()) {
        expect(result.error.find('\n') == std::string::npos, "an error is one line");
        expect(result.output.empty() && !result.follow, "a failed command puts nothing out");
        expect(deviceLooks() == before, "a failed command changes nothing");
    }
}

}  // namespace

// The preferences live in memory as long as a connection to them is open. There is no surface, so
// that no picture of it is ever written.
int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    expect(SDL_Init(SDL_INIT_VIDEO) == 0, "SDL starts");
    expect(sqlite3_initialize() == SQLITE_OK &&
               sqlite3_vfs_register(sqlite3_vfs_find("memdb"), 1) == SQLITE_OK,
           "SQLite has files in memory");
    tavfuzz::startDevice();
    static sqlite3* database = nullptr;
    const std::string path = tavsim::device().root() + kDatabase;
    expect(sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                           nullptr) == SQLITE_OK &&
               sqlite3_exec(database, "CREATE TABLE Preferences (KEY TEXT PRIMARY KEY, VALUE TEXT)",
                            nullptr, nullptr, nullptr) == SQLITE_OK,
           "the database opens");
    TAV_Init(0);
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    tavfuzz::Input input(bytes, size);
    startOver();
    for (std::size_t count = 0; count < kMostCommands && !input.isEmpty(); ++count) {
        carryOut(input.line());
    }
    TAV_UnregisterServiceCallback(ignoreReply);
    return 0;
}
