#include "environment.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "base/environment.h"
#include "bridge/page_file.h"
#include "simulator/interface/device.h"
#include "tools/process/process.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

constexpr char kLinkName[] = "libtavsim.so";
// AddressSanitizer complains when a library is preloaded before it, but works.
constexpr char kSanitizerOption[] = "verify_asan_link_order=0";

bool canBePreloaded(const std::string& path) {
    // Blanks and colons separate the names, and the dynamic linker expands what follows a dollar.
    return !path.empty() && path.find_first_of(" :$") == std::string::npos;
}

// The path of the library that this program itself uses.
std::string simulatorLibrary() {
    Dl_info info;
    const auto* const own = reinterpret_cast<const void*>(&tavsim::device);
    return dladdr(own, &info) != 0 ? absolutePath(info.dli_fname) : std::string();
}

void set(const char* name, const std::string& value) {
    value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
}

std::string join(const std::string& first, const std::string& second) {
    return first + (first.empty() || second.empty() ? "" : ":") + second;
}

// Without a display, SDL 1.2 draws with letters into the terminal.
void drawNowhereWithoutDisplay() {
    for (const char* name : {"SDL_VIDEODRIVER", "DISPLAY", "WAYLAND_DISPLAY"}) {
        if (!base::environment(name).empty()) {
            return;
        }
    }
    set("SDL_VIDEODRIVER", "dummy");
    std::fprintf(
        stderr, "tavsim: there is no display: the program draws nowhere (SDL_VIDEODRIVER=dummy)\n");
}

}  // namespace

std::string absolutePath(const std::string& path) {
    std::error_code problem;
    return path.empty() ? path : fs::absolute(path, problem).string();
}

std::string preloadableSimulator(RunFolder& folder) {
    std::string library = simulatorLibrary();
    if (canBePreloaded(library)) {
        return library;
    }
    const std::string& fresh = folder.freshFolder();
    std::string link = fresh.empty() ? fresh : fresh + "/" + kLinkName;
    const bool isLinked = canBePreloaded(link) && symlink(library.c_str(), link.c_str()) == 0;
    return isLinked ? link : std::string();
}

std::string preloadableLinux(std::string* why) {
    const fs::path library = fs::path(simulatorLibrary()).replace_filename(TAV_LINUX_LIBRARY);
    std::error_code problem;
    if (!fs::exists(library, problem)) {
        *why = library.string() + ": is not there; tavsim was built without it (TAV_LINUX)";
        return {};
    }
    if (!canBePreloaded(library)) {
        *why = library.string() +
               ": cannot be preloaded, as its path holds a blank, a colon or a dollar";
        return {};
    }
    return library;
}

void setEnvironment(const RunRequest& request, const std::string& root,
                    const std::string& simulator) {
    set("TAVSIM_DEVICE", absolutePath(tavsim::profilePath(request.device)));
    set("TAVSIM_ROOT", root);
    set("TAVSIM_PAGE", absolutePath(request.page));
    set("TAVSIM_JOURNAL", absolutePath(request.journal));
    set("TAVSIM_RECORD", absolutePath(request.record));
    set("TAVSIM_SCENARIO", absolutePath(request.scenario));
    set("TAVSIM_ROW", request.row);
    set("TAVSIM_UPDATE_PICTURES", request.updatePictures ? "1" : "");
    set("TAVSIM_DIFFERENCES", absolutePath(request.differences));
    set("TAVSIM_PLUGIN", request.plugin ? "1" : "");
    set("TAVSIM_VIRTUAL_TIME", request.virtualTime ? "1" : "");
    set("TAVSIM_CONTROL", "1");
    set("TAVSIM_PANEL", request.panel ? "1" : "");
    if (bridge::isDocument(request.page)) {
        drawInPage(request.page);
    }
    drawNowhereWithoutDisplay();
    preload(simulator);
}

void preload(const std::string& library) {
    set("LD_PRELOAD", join(library, base::environment("LD_PRELOAD")));
    set("ASAN_OPTIONS", join(base::environment("ASAN_OPTIONS"), kSanitizerOption));
}

}  // namespace tools
