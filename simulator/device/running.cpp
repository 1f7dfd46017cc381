#include "simulator/device/running.h"

#include <dlfcn.h>

#include <cstdlib>

#include "helper/end_program.h"
#include "helper/faults.h"

namespace tavsim {
namespace {

constexpr char kDefaultDevice[] = "cinnabar";

bool g_started = false;

std::string environment(const char* name, const char* otherwise = "") {
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

}  // namespace

bool environmentSetup(Profile* newProfile, Options* options, std::string* error) {
    const std::string path = profilePath(environment("TAVSIM_DEVICE", kDefaultDevice));
    std::optional<Profile> read = readProfile(path, error);
    if (!read) {
        return false;
    }
    *newProfile = std::move(*read);
    options->root = environment("TAVSIM_ROOT");
    options->pageFile = environment("TAVSIM_PAGE");
    options->journalFile = environment("TAVSIM_JOURNAL");
    options->virtualTime = environment("TAVSIM_VIRTUAL_TIME") == "1";
    options->control = environment("TAVSIM_CONTROL") == "1";
    if (!options->pageFile.empty() || environment("TAVSIM_PLUGIN") == "1") {
        newProfile->plugin = true;
    }
    return true;
}

bool isWanted() {
    static const bool usesLibrary = dlsym(RTLD_DEFAULT, "TAV_Init") != nullptr;
    return g_started || usesLibrary;
}

Profile& profile() {
    // Never destroyed: the device ends after static objects do.
    static Profile& instance = *new Profile;
    return instance;
}

Profile& running() {
    if (g_started) {
        return profile();
    }
    Profile newProfile;
    Options options;
    std::string error;
    if (!environmentSetup(&newProfile, &options, &error) ||
        !startDevice(std::move(newProfile), options, &error)) {
        helper::endProgram(error);
    }
    const std::string fault = environment("TAVSIM_FAIL");
    if (!fault.empty() && !helper::setFaultFromText(fault)) {
        helper::endProgram("TAVSIM_FAIL: \"" + fault +
                           "\" is not allocation, dispatch, host or read, a colon and a number");
    }
    return profile();
}

void setStarted(bool started) {
    g_started = started;
}

}  // namespace tavsim
