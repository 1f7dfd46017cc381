#include "simulator/device/running.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "front/in_front.h"
#include "helper/end_program.h"
#include "helper/faults.h"
#include "simulator/device/edge.h"

namespace tavsim {
namespace {

constexpr char kDefaultDevice[] = "cinnabar";

bool g_started = false;

std::string environment(const char* name, const char* otherwise = "") {
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

// Also where a program loads the library by itself, and its names are known to nobody else.
bool usesLibrary() {
    return dlsym(RTLD_DEFAULT, "TAV_Init") != nullptr ||
           dlopen(TAV_LIBRARY, RTLD_LAZY | RTLD_NOLOAD) != nullptr;
}

// Behind the functions of SDL and libc, nothing would keep the program off this machine's files,
// and nothing would ever be delivered.
bool saysWhetherInFront() {
    const char* overtaken = front::firstOvertaken();
    if (overtaken != nullptr) {
        std::fprintf(stderr,
                     "tavsim: this program finds %s and others before the simulated device, which "
                     "therefore refuses to work. Run it with `tavsim run`, or link it with the "
                     "output of `pkg-config --libs tav` before SDL.\n",
                     overtaken);
    }
    return overtaken == nullptr;
}

void startFromEnvironment() {
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
    static std::atomic<bool> isUsed = false;
    if (!g_started && !isUsed) {
        isUsed = usesLibrary();
    }
    return g_started || isUsed;
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
    static const bool isInFront = saysWhetherInFront();
    if (!isInFront) {
        throw NotInFront();
    }
    startFromEnvironment();
    return profile();
}

void setStarted(bool started) {
    g_started = started;
}

}  // namespace tavsim
