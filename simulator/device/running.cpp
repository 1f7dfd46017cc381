#include "simulator/device/running.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "base/application_folder.h"
#include "base/environment.h"
#include "base/json/appinfo.h"
#include "base/print_line.h"
#include "front/events.h"
#include "front/next.h"
#include "helper/trace.h"
#include "simulator/device/edge.h"
#include "simulator/device/faults.h"

namespace tavsim {
namespace {

std::atomic<bool> g_started = false;
std::recursive_mutex g_change;
bool g_changing = false;

bool saysWhetherInFront() {
    const std::string problem = whyNotInFront();
    if (!problem.empty()) {
        base::printLine(stderr, "tavsim: " + problem);
    }
    return problem.empty();
}

// Reads the TAVSIM_… variables, and the application's appinfo.json, whose values replace those of
// the profile. False, with a line in `error`, when one of them is wrong.
bool environmentSetup(Profile* newProfile, Options* options, std::string* error) {
    const std::string path = profilePath(base::environment("TAVSIM_DEVICE", kDefaultDevice));
    std::optional<Profile> read = readProfile(path, error);
    if (!read) {
        return false;
    }
    auto appinfo = base::readAppinfo(applicationFolder(), error);
    if (!appinfo) {
        return false;
    }
    *newProfile = std::move(*read);
    appinfo->merge(newProfile->appinfo);
    newProfile->appinfo = std::move(*appinfo);
    options->root = base::environment("TAVSIM_ROOT");
    options->pageFile = base::environment("TAVSIM_PAGE");
    options->journalFile = base::environment("TAVSIM_JOURNAL");
    options->scenarioFile = base::environment("TAVSIM_SCENARIO");
    options->scenarioRow = base::environment("TAVSIM_ROW");
    options->updatePictures = base::environment("TAVSIM_UPDATE_PICTURES") == "1";
    options->differences = base::environment("TAVSIM_DIFFERENCES");
    options->recordFile = base::environment("TAVSIM_RECORD");
    options->virtualTime = base::environment("TAVSIM_VIRTUAL_TIME") == "1";
    options->control = base::environment("TAVSIM_CONTROL") == "1";
    if (!options->pageFile.empty() || base::environment("TAVSIM_PLUGIN") == "1") {
        newProfile->plugin = true;
    }
    return true;
}

void startFromEnvironment() {
    Profile newProfile;
    Options options;
    std::string error;
    if (!environmentSetup(&newProfile, &options, &error) ||
        !startDevice(std::move(newProfile), options, &error)) {
        endProgram(error);
    }
    const std::string fault = base::environment("TAVSIM_FAIL");
    if (!fault.empty() && !setFaultFromText(fault)) {
        endProgram("TAVSIM_FAIL: \"" + fault +
                   "\" is not allocation, dispatch, host or read, a colon and a number, "
                   "with or without a + behind it");
    }
}

}  // namespace

std::string whyNotInFront() {
    const char* overtaken = front::firstOvertaken();
    if (overtaken == nullptr) {
        return {};
    }
    return "this program finds " + std::string(overtaken) +
           " and others before the simulated device, which therefore refuses to work. Run it with "
           "`tavsim run`, or link it with the output of `pkg-config --libs tavsim` before SDL.";
}

const std::string& applicationFolder() {
    static const std::string& folder = *new std::string(base::applicationFolder("/proc/self/exe"));
    return folder;
}

bool isStarted() {
    return g_started.load(std::memory_order_acquire);
}

bool isWanted() {
    static std::atomic<bool> isUsed = false;
    if (!isStarted() && !isUsed) {
        isUsed = front::usesLibrary();
    }
    return isStarted() || isUsed;
}

Profile& profile() {
    // Never destroyed, because the device ends after static objects are destroyed.
    static Profile& instance = *new Profile;
    return instance;
}

Profile& running() {
    if (isStarted()) {
        return profile();
    }
    const std::lock_guard lock(g_change);
    if (isStarted() || g_changing) {
        return profile();
    }
    static const bool isInFront = saysWhetherInFront();
    if (!isInFront) {
        throw NotInFront();
    }
    startFromEnvironment();
    return profile();
}

bool changeDevice(const std::function<bool()>& change) {
    const std::lock_guard lock(g_change);
    g_started = false;
    g_changing = true;
    front::wake();
    try {
        g_started = change();
    } catch (...) {
        g_changing = false;
        throw;
    }
    g_changing = false;
    return g_started;
}

}  // namespace tavsim

void helper::traceCannotBeHad(const std::string& problem) {
    tavsim::endProgram(problem);
}
