#include "simulator/language/vocabulary.h"

#include <simdjson.h>

#include <algorithm>

#include "base/json/writer.h"
#include "base/suggestion.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

using Names = std::vector<std::string>;

constexpr std::string_view kStates =
    "banners, compass, gestures, item *, keyboard, launched, location, media, movement, "
    "orientation, pauseUi, port * *, screenTimeout, touch, vibrator, window";

constexpr EntryForm kForms[] = {
    {"bus", "call, callWithResponse, subscribe", "uri, payload, option, outcome"},
    {"bus", "reply",
     "token, uri, reply, latitude, longitude, altitude, horizAccuracy, vertAccuracy, heading, "
     "velocity"},
    {"bus", "cancel", "token, outcome"},
    {"bus", "rescan", "roles, program, status, outcome"},
    {"host", "NApp_EnableCompass", "enable, outcome"},
    {"host", "NApp_SetKeyboardState", "visible, outcome"},
    {"host", "NApp_SetTouchAggression", "aggression, outcome"},
    {"host", "NApp_JSCall", "function, arguments, outcome"},
    {"host", "NApp_GetAppinfoValue, NApp_GetDataFilePath, NApp_GetJsonValue", "key, status"},
    {"host", "NApp_GetPortabilityValue, KPSystemCopyStringValue", "key, outcome"},
    {"host",
     "NApp_registerTAV, NApp_Minimize, NApp_RegisterKiteHandlers, NApp_GetProcSelfExe, "
     "HHardware_getMachine",
     "outcome"},
    {"host", "compass reading", "intValue, doubleValue1, doubleValue2"},
    {"sdl", "SDL_NimboHookSetOrientation", "orientation, outcome"},
    {"sdl",
     "SDL_NimboHookSetGesturesEnable, SDL_NimboHookBannerMessagesEnable, "
     "SDL_NimboHookCustomPauseUiEnable, SDL_NimboHookScreenTimeoutEnable",
     "enable, outcome"},
    {"sdl", "SDL_NimboHookIsComponent", "outcome"},
    {"page", "call", "method, arguments, outcome"},
    {"page", "console", "level, text"},
    {"device", kStates, "outcome"},
    {"device", "input", "input, outcome"},
    {"device", "request not understood", "uri, payload"},
};

constexpr std::string_view kOfEachEntry = "at, kind, what";
constexpr std::string_view kOtherStates = "battery, machine, open calls, plugin, refused";
constexpr std::string_view kPreferences = "deviceName, region, locale";
constexpr std::string_view kProperties = "com.vire.properties.version";

constexpr std::string_view kSeparator = ", ";
constexpr size_t kLongestGlob = 256;  // for a name, with which the time to compare grows

template <typename Predicate>
bool anyOf(std::string_view list, const Predicate& isIt) {
    while (!list.empty()) {
        const std::string_view name = list.substr(0, list.find(kSeparator));
        if (isIt(name)) {
            return true;
        }
        list.remove_prefix(std::min(name.size() + kSeparator.size(), list.size()));
    }
    return false;
}

bool has(std::string_view list, std::string_view name) {
    return anyOf(list, [name](std::string_view one) { return matchesGlob(name, one); });
}

bool hasLike(std::string_view list, std::string_view glob) {
    return glob.size() <= kLongestGlob &&
           anyOf(list, [glob](std::string_view one) { return base::globsMeet(one, glob); });
}

// The end of a message that there is no such name.
std::string insteadOf(std::string_view name, std::string_view list) {
    const std::string meant = base::suggestion(name, namesIn(list));
    return base::quoted(name) + (meant.empty() ? "; known: " + std::string(list) : meant);
}

std::string whyNotIn(std::string_view list, const char* title, std::string_view name) {
    return has(list, name) ? "" : title + insteadOf(name, list);
}

// Without what stands twice.
std::string joined(const Names& names) {
    Names once;
    std::string text;
    for (const std::string& name : names) {
        if (std::find(once.begin(), once.end(), name) == once.end()) {
            text += (once.empty() ? "" : kSeparator);
            text += name;
            once.push_back(name);
        }
    }
    return text;
}

std::string all(std::string_view EntryForm::*column, std::string_view kind) {
    Names names;
    for (const EntryForm& form : kForms) {
        if (base::globsMeet(form.kind, kind)) {
            const Names some = namesIn(form.*column);
            names.insert(names.end(), some.begin(), some.end());
        }
    }
    return joined(names);
}

std::string membersOf(const EntryForm& form) {
    return std::string(kOfEachEntry).append(kSeparator).append(form.members);
}

std::string_view globOf(const Pattern& pattern, std::string_view member) {
    const auto found = std::find_if(pattern.begin(), pattern.end(), [&](const auto& one) {
        return one.member == member && one.comparison == Comparison::Like;
    });
    return found != pattern.end() ? std::string_view(found->glob) : "*";
}

bool hasMember(const EntryForm& form, std::string_view path) {
    const std::string_view name = topOf(path);
    return (has(form.members, name) || has(kOfEachEntry, name)) &&
           (name.size() == path.size() || has(kJsonMembers, name));
}

bool canMatch(const EntryForm& form, const Pattern& pattern) {
    return hasLike(form.kind, globOf(pattern, "kind")) &&
           hasLike(form.whats, globOf(pattern, "what")) &&
           std::all_of(pattern.begin(), pattern.end(),
                       [&form](const MemberPattern& one) { return hasMember(form, one.member); });
}

std::string whyNoMember(std::string_view member) {
    const std::string_view name = topOf(member);
    const std::string members = joined(namesIn(
        std::string(kOfEachEntry).append(kSeparator).append(all(&EntryForm::members, "*"))));
    if (!has(members, name)) {
        return "no member " + insteadOf(name, members);
    }
    if (name != member && !has(kJsonMembers, name)) {
        return base::quoted(member) + ": only " + std::string(kJsonMembers) +
               " hold JSON that a path leads into";
    }
    return {};
}

// The pattern's members are all names, and the forms have its kind and its what.
std::string whyNoFormHas(const Pattern& pattern, const std::vector<const EntryForm*>& forms) {
    for (const MemberPattern& one : pattern) {
        Names names;
        for (const EntryForm* form : forms) {
            const Names some = namesIn(membersOf(*form));
            names.insert(names.end(), some.begin(), some.end());
        }
        const std::string_view name = topOf(one.member);
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            return "such an entry has no " + base::quoted(name) + "; it has " + joined(names);
        }
    }
    return "no entry has all these members together";
}

}  // namespace

std::span<const EntryForm> entryForms() {
    return kForms;
}

std::vector<std::string> namesIn(std::string_view list) {
    Names names;
    while (!list.empty()) {
        names.emplace_back(list.substr(0, list.find(kSeparator)));
        list.remove_prefix(std::min(names.back().size() + kSeparator.size(), list.size()));
    }
    return names;
}

std::string whyNoEntry(const Pattern& pattern) {
    if (std::any_of(std::begin(kForms), std::end(kForms),
                    [&](const EntryForm& form) { return canMatch(form, pattern); })) {
        return {};
    }
    for (const MemberPattern& one : pattern) {
        if (std::string problem = whyNoMember(one.member); !problem.empty()) {
            return problem;
        }
    }
    const std::string_view kind = globOf(pattern, "kind");
    const std::string_view what = globOf(pattern, "what");
    const std::string kinds = all(&EntryForm::kind, "*");
    if (!hasLike(kinds, kind)) {
        return "no kind " + insteadOf(kind, kinds);
    }
    const std::string whats = all(&EntryForm::whats, kind);
    if (!hasLike(whats, what)) {
        return "no what " + insteadOf(what, whats);
    }
    std::vector<const EntryForm*> forms;
    for (const EntryForm& form : kForms) {
        if (base::globsMeet(form.kind, kind) && hasLike(form.whats, what)) {
            forms.push_back(&form);
        }
    }
    return whyNoFormHas(pattern, forms);
}

bool hasEntryForm(std::string_view line) {
    dom::parser parser;
    dom::object entry;
    std::string_view kind, what;
    if (parser.parse(line.data(), line.size()).get(entry) != simdjson::SUCCESS ||
        entry["kind"].get(kind) != simdjson::SUCCESS ||
        entry["what"].get(what) != simdjson::SUCCESS) {
        return false;
    }
    return std::any_of(std::begin(kForms), std::end(kForms), [&](const EntryForm& form) {
        return form.kind == kind && has(form.whats, what) &&
               std::all_of(entry.begin(), entry.end(),
                           [&](const auto& member) { return has(membersOf(form), member.key); });
    });
}

std::string whyNoState(std::string_view name) {
    const std::string states = std::string(kOtherStates).append(kSeparator).append(kStates);
    return whyNotIn(states, "no state ", name);
}

std::string whyNoPreference(std::string_view name) {
    return whyNotIn(kPreferences, "no preference ", name);
}

std::string whyNoProperty(std::string_view name) {
    return whyNotIn(kProperties, "no system property ", name);
}

}  // namespace tavsim
