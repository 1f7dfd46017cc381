#include "simulator/running.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "simulator/faults.h"

namespace sim {
namespace {

constexpr char kDefaultDevice[] = "cinnabar";
constexpr int kBadSetup = 2;

bool g_started = false;

std::string environment(const char* name, const char* otherwise = "") {
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

}  // namespace

bool environmentSetup(Profile* profile, Options* options, std::string* error) {
    const std::string path = profilePath(environment("TAVSIM_DEVICE", kDefaultDevice));
    std::optional<Profile> read = readProfile(path, error);
    if (!read) {
        return false;
    }
    *profile = std::move(*read);
    options->root = environment("TAVSIM_ROOT");
    options->pageFile = environment("TAVSIM_PAGE");
    options->journalFile = environment("TAVSIM_JOURNAL");
    options->virtualTime = environment("TAVSIM_VIRTUAL_TIME") == "1";
    options->control = environment("TAVSIM_CONTROL") == "1";
    if (!options->pageFile.empty() || environment("TAVSIM_PLUGIN") == "1") {
        profile->plugin = true;
    }
    return true;
}

bool isWanted() {
    static const bool usesLibrary = dlsym(RTLD_DEFAULT, "TAV_Init") != nullptr;
    return g_started || usesLibrary;
}

Device& running() {
    if (g_started) {
        return device();
    }
    Profile profile;
    Options options;
    std::string error;
    if (!environmentSetup(&profile, &options, &error) ||
        !device().start(std::move(profile), options, &error)) {
        std::fprintf(stderr, "tavsim: %s\n", error.c_str());
        std::exit(kBadSetup);
    }
    const std::string fault = environment("TAVSIM_FAIL");
    if (!fault.empty() && !setFaultFromText(fault)) {
        std::fprintf(stderr,
                     "tavsim: TAVSIM_FAIL: \"%s\" is not allocation, dispatch, host or read, a "
                     "colon and a number\n",
                     fault.c_str());
        std::exit(kBadSetup);
    }
    return device();
}

void setStarted(bool started) {
    g_started = started;
}

}  // namespace sim
