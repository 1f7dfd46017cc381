#include "tavsim.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "base/file.h"
#include "simulator/control/commands.h"
#include "simulator/device/edge.h"
#include "simulator/device/journal.h"
#include "simulator/device/state.h"
#include "simulator/interface/device.h"
#include "simulator/language/pattern.h"
#include "simulator/language/vocabulary.h"

namespace tavsim {
namespace {

constexpr int kFailed = -1;
constexpr int kNoEntry = -1;
constexpr int kCannotSearch = -2;
constexpr const char* kNoText = nullptr;
constexpr char kWhiteSpace[] = " \t\r\n";

const char* g_error = "";

template <typename Result>
Result fail(Result result, std::string reason) {
    static std::string& kept = *new std::string;
    kept = std::move(reason);
    g_error = kept.c_str();
    return result;
}

bool isThreadRight() {
    return !isStarted() || isOnApplicationThread() ||
           fail(false, "the device belongs to the thread that started it");
}

bool isDeviceThere() {
    if (!isStarted()) {
        return fail(false, "no device runs; TAVSim_Start() starts one");
    }
    return isThreadRight();
}

// What an exported function does, if that is possible now. No exception leaves it.
template <typename Result, typename Function>
Result guarded(Result failure, bool (*isPossible)(), const Function& run) try {
    return isPossible() ? run() : failure;
} catch (...) {
    refuseOrEnd();
    g_error = "there is not enough memory";
    return failure;
}

std::string textOr(const char* text) {
    return text != nullptr ? text : "";
}

std::optional<Profile> profileFrom(const std::string& textOrName, std::string* error) {
    const size_t first = textOrName.find_first_not_of(kWhiteSpace);
    return first != std::string::npos && textOrName[first] == '{'
               ? parseProfile(textOrName, "profile", error)
               : readProfile(profilePath(textOrName), error);
}

Options optionsFrom(const TAVSim_Options& given) {
    Options options;
    options.virtualTime = given.realTime == 0;
    options.control = given.control != 0;
    options.root = textOr(given.root);
    options.pageFile = textOr(given.page);
    options.journalFile = textOr(given.journal);
    return options;
}

std::int64_t firstKeptLine() {
    return journalLength() - static_cast<std::int64_t>(journalLines().size());
}

bool isFault(int fault) {
    return (fault >= TAVSIM_ALLOCATION && fault <= TAVSIM_READ) ||
           fail(false, "there is no such fault");
}

Fault faultFrom(int fault) {
    static_assert(TAVSIM_ALLOCATION == static_cast<int>(Fault::Allocation) &&
                  TAVSIM_DISPATCH == static_cast<int>(Fault::Dispatch) &&
                  TAVSIM_HOST == static_cast<int>(Fault::HostRequest) &&
                  TAVSIM_READ == static_cast<int>(Fault::Read));
    return static_cast<Fault>(fault);
}

int planFault(int fault, int n, void (*plan)(Fault fault, int n)) {
    return guarded(kFailed, isDeviceThere, [&] {
        if (!isFault(fault)) {
            return kFailed;
        }
        if (n < 0) {
            return fail(kFailed, "things are counted from 1");
        }
        plan(faultFrom(fault), n);
        return 0;
    });
}

}  // namespace
}  // namespace tavsim

using namespace tavsim;

extern "C" {

const char* TAVSim_GetError(void) {
    return g_error;
}

int TAVSim_Start(const char* profile, const TAVSim_Options* options) {
    return guarded(kFailed, isThreadRight, [&] {
        device().stop();
        if (profile == nullptr) {
            return fail(kFailed, "the profile is null");
        }
        if (const std::string problem = whyNotInFront(); !problem.empty()) {
            return fail(kFailed, problem);
        }
        const Options chosen = optionsFrom(options != nullptr ? *options : TAVSim_Options{});
        std::string error;
        std::optional<Profile> read = profileFrom(profile, &error);
        if (!read) {
            return fail(kFailed, error);
        }
        if (!chosen.pageFile.empty()) {
            read->plugin = true;
            if (error = base::whyNoFile(chosen.pageFile); !error.empty()) {
                return fail(kFailed, error);
            }
        }
        return device().start(std::move(*read), chosen, &error) ? 0 : fail(kFailed, error);
    });
}

int TAVSim_Stop(void) {
    return guarded(kFailed, isThreadRight, [] {
        device().stop();
        return 0;
    });
}

int TAVSim_Advance(int milliseconds) {
    return guarded(kFailed, isDeviceThere, [&] {
        if (milliseconds < 0) {
            return fail(kFailed, "time cannot go back");
        }
        if (!isTimeVirtual()) {
            return fail(kFailed, "the device is not in virtual time");
        }
        device().advance(milliseconds);
        return 0;
    });
}

const char* TAVSim_Command(const char* line) {
    return guarded(kNoText, isDeviceThere, [&] {
        if (line == nullptr) {
            return fail(kNoText, "the command is null");
        }
        CommandResult result = carryOut(line);
        if (!result.error.empty()) {
            return fail(kNoText, std::move(result.error));
        }
        static std::string& output = *new std::string;
        output = std::move(result.output);
        return output.c_str();
    });
}

const char* TAVSim_State(const char* name) {
    return guarded(kNoText, isDeviceThere, [&] {
        if (name == nullptr) {
            return fail(kNoText, "the name is null");
        }
        if (const std::string problem = whyNoState(name); !problem.empty()) {
            return fail(kNoText, problem);
        }
        const auto found = deviceState().find(name);
        return found != deviceState().end()
                   ? found->second.c_str()
                   : fail(kNoText, "the application has done nothing to " + std::string(name));
    });
}

int TAVSim_JournalLength(void) {
    return guarded(kFailed, isDeviceThere, [] { return static_cast<int>(journalLength()); });
}

const char* TAVSim_JournalLine(int index) {
    return guarded(kNoText, isDeviceThere, [&] {
        if (index < firstKeptLine() || index >= journalLength()) {
            return fail(kNoText, "the journal has no line " + std::to_string(index));
        }
        return journalLines()[static_cast<size_t>(index - firstKeptLine())].c_str();
    });
}

int TAVSim_FindEntry(const char* pattern, int from) {
    return guarded(kCannotSearch, isDeviceThere, [&] {
        if (pattern == nullptr) {
            return fail(kCannotSearch, "the pattern is null");
        }
        std::string error;
        const std::optional<Awaited> wanted = readAwaited(pattern, &error);
        if (!wanted) {
            return fail(kCannotSearch, error);
        }
        if (wanted->within || wanted->count) {
            return fail(kCannotSearch,
                        wanted->within ? "the journal is searched as it is; let time pass before"
                                       : "one entry is looked for; count what is found");
        }
        const auto& lines = journalLines();
        const auto kept = static_cast<std::int64_t>(lines.size());
        const auto skipped =
            static_cast<std::ptrdiff_t>(std::clamp<std::int64_t>(from - firstKeptLine(), 0, kept));
        const auto found =
            std::find_if(lines.begin() + skipped, lines.end(),
                         [&](const std::string& line) { return matches(line, wanted->pattern); });
        return found != lines.end()
                   ? static_cast<int>(firstKeptLine() + std::distance(lines.begin(), found))
                   : kNoEntry;
    });
}

int TAVSim_FailNth(int fault, int n) {
    return planFault(fault, n, failNthFault);
}

int TAVSim_FailFrom(int fault, int n) {
    return planFault(fault, n, failFaultsFrom);
}

int TAVSim_Occurrences(int fault) {
    return guarded(kFailed, isDeviceThere, [&] {
        return isFault(fault) ? device().occurrences(faultFrom(fault)) : kFailed;
    });
}
}
