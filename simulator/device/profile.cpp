#include "simulator/device/profile.h"

#include <dlfcn.h>
#include <simdjson.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "base/file.h"
#include "base/json/reader.h"
#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/device/service_reader.h"

namespace fs = std::filesystem;
namespace json = base::json;

namespace tavsim {
namespace {

constexpr std::string_view kRefusable[] = {"keyboard", "minimize",     "touch",    "compass",
                                           "bridge",   "orientation",  "gestures", "banners",
                                           "pauseUi",  "screenTimeout"};

// A faster turn would only be noise.
constexpr double kFastestTurn = 36000.0;

constexpr size_t kLargestFile = 16 << 20;
constexpr size_t kMostFiles = 16;

bool isFileName(std::string_view name) {
    return !name.empty() && name[0] != '.' && name.find('/') == std::string_view::npos;
}

json::Reader texts(std::map<std::string, std::string>* target) {
    return json::members(target, [](std::string* member) { return json::text(member); });
}

json::Reader preferences(std::optional<std::map<std::string, std::string>>* target) {
    return [target](const json::Value& value) {
        if (!*target) {
            target->emplace();
        }
        json::members(&**target, json::raw)(value);
    };
}

json::Reader templates(std::map<std::string, std::string>* target) {
    return [target](const json::Value& value) {
        texts(target)(value);
        json::eachMember(value, [](std::string_view name, const json::Value& content) {
            if (!isFileName(name)) {
                content.fail("must be named like a file");
            }
        });
    };
}

json::Reader refusals(std::set<std::string>* target) {
    return [target](const json::Value& value) {
        target->clear();
        json::eachElement(value, [target](const json::Value& each) {
            std::string request;
            const json::Reader name = json::text(&request);
            name(each);
            if (!canBeRefused(request)) {
                each.fail(base::quoted(request) + " is nothing that the host can refuse");
            }
            target->insert(request);
        });
    };
}

json::Reader compassReading(CompassReading* reading) {
    return json::sequence({json::integer(&reading->intValue), json::number(&reading->doubleValue1),
                           json::number(&reading->doubleValue2)});
}

json::Reader compass(Compass* compass) {
    return json::fields({{"interval", json::integer(&compass->interval, 1)},
                         {"turn", json::number(&compass->turn, -kFastestTurn, kFastestTurn)},
                         {"readings", json::list(&compass->readings, compassReading)}});
}

json::Reader fix(Fix* fix) {
    return json::fields(
        {{"latitude", json::number(&fix->latitude, -kHighestLatitude, kHighestLatitude)},
         {"longitude", json::number(&fix->longitude, -kHighestLongitude, kHighestLongitude)},
         {"altitude", json::number(&fix->altitude)},
         {"horizAccuracy", json::number(&fix->horizAccuracy)},
         {"vertAccuracy", json::number(&fix->vertAccuracy)},
         {"heading", json::number(&fix->heading)},
         {"velocity", json::number(&fix->velocity)}});
}

json::Reader location(LocationTrack* track) {
    return json::fields(
        {{"interval", json::integer(&track->interval, 1)},
         {"every", json::integer(&track->receiver.every, 0)},
         {"accuracy", json::number(&track->receiver.accuracy, 0, kLeastAccuracy)},
         {"seed", json::integer(&track->receiver.seed)},
         {"fixes", json::list(&track->fixes, fix)},
         {"errors", json::list(&track->errors, [](int* code) { return json::integer(code); })}});
}

json::Reader purchase(Purchase* purchase) {
    return json::word<Purchase>(purchase, {{"succeeds", Purchase::Succeeds},
                                           {"refused", Purchase::Refused},
                                           {"silent", Purchase::Silent}});
}

json::Reader item(Item* item) {
    json::Reader known = json::fields({{"id", json::text(&item->id)},
                                       {"title", json::text(&item->title)},
                                       {"price", json::text(&item->price)},
                                       {"purchase", purchase(&item->purchase)}});
    return [item, known = std::move(known)](const json::Value& value) {
        known(value);
        if (item->id.empty()) {
            value.fail("must have an id");
        }
    };
}

json::Reader fieldsOf(Profile* profile, const std::string& folder) {
    const auto service = [folder](Service* each) { return serviceReader(each, folder); };
    return json::fields({{"extends", [](const json::Value&) {}},  // was read before
                         {"title", json::text(&profile->title)},
                         {"machine", json::text(&profile->machine)},
                         {"root", json::flag(&profile->root)},
                         {"plugin", json::flag(&profile->plugin)},
                         {"executable", json::text(&profile->executable)},
                         {"portability", texts(&profile->portability)},
                         {"appinfo", texts(&profile->appinfo)},
                         {"properties", texts(&profile->properties)},
                         {"preferences", preferences(&profile->preferences)},
                         {"uniqueId", json::text(&profile->uniqueId)},
                         {"templates", templates(&profile->templates)},
                         {"refuse", refusals(&profile->refused)},
                         {"compass", compass(&profile->compass)},
                         {"location", location(&profile->location)},
                         {"items", json::list(&profile->items, item)},
                         {"services", json::members(&profile->services, service)}});
}

std::string noSuchProfile(const fs::path& path) {
    if (path.parent_path() != profileFolder()) {
        return path.string() + ": no such device profile";
    }
    const std::string name = path.stem();
    const std::string meant = base::suggestion(name, profileNames());
    return "no device " + base::quoted(name) +
           (meant.empty() ? "; `tavsim devices` lists those that there are" : meant);
}

std::optional<std::string> readDocument(const std::string& path, std::string* error) {
    std::error_code problem;
    if (!fs::exists(path, problem)) {
        *error = noSuchProfile(path);
        return std::nullopt;
    }
    return base::readFile(path, kLargestFile, error);
}

// The file that is being read, and after it the files that extend it.
using Files = std::vector<fs::path>;

Files withFile(const std::string& path, Files files) {
    std::error_code problem;
    files.insert(files.begin(), fs::weakly_canonical(path, problem));
    return files;
}

bool readOver(Profile* profile, const std::string& document, const std::string& source,
              const Files& files, std::string* error);

// Reads the profile that another one extends.
void readBase(Profile* profile, const json::Value& name, const fs::path& folder,
              const Files& extending) {
    std::string base;
    const json::Reader text = json::text(&base);
    text(name);
    const fs::path path = folder / profilePath(base);
    const Files files = withFile(path, extending);
    std::string error;
    if (base.empty()) {
        name.fail("must name a profile");
    } else if (std::count(files.begin(), files.end(), files.front()) > 1) {
        name.fail("the profile extends itself");
    } else if (files.size() > kMostFiles) {
        name.fail("more than 16 profiles extend one another");
    } else if (const auto document = readDocument(path, &error);
               !document || !readOver(profile, *document, path, files, &error)) {
        name.fail(error);
    }
}

// Reads a document's fields; they override those that the profile has.
bool readOver(Profile* profile, const std::string& document, const std::string& source,
              const Files& files, std::string* error) {
    const json::Reader reader = [&](const json::Value& value) {
        std::error_code problem;
        const fs::path folder = fs::absolute(source, problem).parent_path();
        json::Value::Element base;
        if (value.element()["extends"].get(base) == simdjson::SUCCESS) {
            readBase(profile, value.member("extends", base), folder, files);
        }
        fieldsOf(profile, folder)(value);
    };
    return json::read(document, source, reader, error);
}

}  // namespace

bool isUri(const std::string& text) {
    return text.find("://") != std::string::npos;
}

bool canBeRefused(const std::string& request) {
    return isUri(request) || std::ranges::find(kRefusable, request) != std::end(kRefusable);
}

std::vector<std::string> refusableRequests() {
    return {std::begin(kRefusable), std::end(kRefusable)};
}

std::optional<Profile> parseProfile(const std::string& document, const std::string& source,
                                    std::string* error) {
    Profile profile;
    if (!readOver(&profile, document, source, withFile(source, {}), error)) {
        return std::nullopt;
    }
    return profile;
}

std::optional<Profile> readProfile(const std::string& path, std::string* error) {
    const std::optional<std::string> document = readDocument(path, error);
    std::optional<Profile> profile = document ? parseProfile(*document, path, error) : std::nullopt;
    if (profile) {
        profile->name = fs::path(path).stem();
    }
    return profile;
}

std::string profileFolder() {
    Dl_info own;
    if (dladdr(reinterpret_cast<const void*>(&profileFolder), &own) == 0) {
        return {};
    }
    std::error_code problem;
    // Where a path cannot be preloaded, a link to the library is.
    const fs::path library = fs::weakly_canonical(own.dli_fname, problem);
    return (library.parent_path() / TAVSIM_DATA_FROM_LIBRARY / "devices").lexically_normal();
}

std::vector<std::string> profileNames() {
    std::vector<std::string> names;
    for (const fs::path path : base::entriesOf(profileFolder())) {
        names.push_back(path.stem());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string profilePath(const std::string& nameOrPath) {
    const bool isPath =
        nameOrPath.find('/') != std::string::npos || fs::path(nameOrPath).extension() == ".json";
    return isPath ? nameOrPath : profileFolder() + "/" + nameOrPath + ".json";
}

}  // namespace tavsim
