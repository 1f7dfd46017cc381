#include "simulator/device/profile.h"

#include <dlfcn.h>
#include <simdjson.h>

#include <filesystem>
#include <limits>
#include <string_view>

#include "helper/json_text.h"
#include "helper/json_writer.h"

namespace dom = simdjson::dom;
namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr std::string_view kRefusable[] = {"keyboard", "minimize",     "touch",    "compass",
                                           "bridge",   "orientation",  "gestures", "banners",
                                           "pauseUi",  "screenTimeout"};

// Reads one JSON document into a profile and remembers the first thing that is wrong. A path such
// as services.vire://x/y.delay says where.
class Reader {
public:
    explicit Reader(const std::string& source) : m_source(source) {}

    const std::string& error() const { return m_error; }

    using Handler = std::function<void(dom::element, const std::string&)>;
    using Fields = std::map<std::string_view, Handler>;

    void read(const std::string& json, Profile* profile) {
        dom::parser parser;
        dom::element document;
        const simdjson::error_code problem = parser.parse(json).get(document);
        if (problem != simdjson::SUCCESS) {
            m_error = m_source + ": not JSON: " + simdjson::error_message(problem);
            return;
        }
        readProfile(document, profile);
    }

private:
    void fail(const std::string& path, const std::string& text) {
        if (m_error.empty()) {
            m_error = m_source + ": " + (path.empty() ? "" : path + ": ") + text;
        }
    }

    // Escaped, since a name may hold a line break and an error is one line.
    static std::string below(const std::string& path, std::string_view name) {
        return (path.empty() ? "" : path + ".") + helper::escapedJson(name);
    }

    void eachMember(dom::element element, const std::string& path,
                    const std::function<void(std::string_view, dom::element)>& member) {
        dom::object object;
        if (element.get(object) != simdjson::SUCCESS) {
            fail(path, "must be an object");
            return;
        }
        for (const auto& [key, value] : object) {
            member(key, value);
        }
    }

    void eachElement(dom::element element, const std::string& path, const Handler& handler) {
        dom::array array;
        if (element.get(array) != simdjson::SUCCESS) {
            fail(path, "must be a list");
            return;
        }
        size_t index = 0;
        for (const dom::element value : array) {
            handler(value, path + "[" + std::to_string(index++) + "]");
        }
    }

    void fields(dom::element element, const std::string& path, const Fields& known) {
        eachMember(element, path, [&](std::string_view key, dom::element value) {
            const auto handler = known.find(key);
            if (handler == known.end()) {
                fail(below(path, key), "unknown field");
                return;
            }
            handler->second(value, below(path, key));
        });
    }

    // Handlers that store what they read.

    Handler text(std::string* target) {
        return [this, target](dom::element element, const std::string& path) {
            std::string_view value;
            if (element.get(value) != simdjson::SUCCESS) {
                fail(path, "must be a string");
                return;
            }
            if (value.find('\0') != std::string_view::npos) {
                fail(path, "must not hold a zero byte");
                return;
            }
            *target = value;
        };
    }

    Handler text(std::optional<std::string>* target) {
        return [this, target](dom::element element, const std::string& path) {
            text (&target->emplace())(element, path);
        };
    }

    Handler flag(bool* target) {
        return [this, target](dom::element element, const std::string& path) {
            if (element.get(*target) != simdjson::SUCCESS) {
                fail(path, "must be true or false");
            }
        };
    }

    Handler number(double* target) {
        return [this, target](dom::element element, const std::string& path) {
            if (element.get(*target) != simdjson::SUCCESS) {
                fail(path, "must be a number");
            }
        };
    }

    Handler integer(int* target, int lowest = std::numeric_limits<int>::min()) {
        return [this, target, lowest](dom::element element, const std::string& path) {
            int64_t value = 0;
            const bool isInteger = element.get(value) == simdjson::SUCCESS;
            if (!isInteger || value < lowest || value > std::numeric_limits<int>::max()) {
                fail(path, lowest == std::numeric_limits<int>::min()
                               ? "must be a whole number of 32 bits"
                               : "must be a whole number from " + std::to_string(lowest) + " up");
                return;
            }
            *target = static_cast<int>(value);
        };
    }

    Handler texts(std::map<std::string, std::string>* target) {
        return [this, target](dom::element element, const std::string& path) {
            eachMember(element, path, [&](std::string_view key, dom::element value) {
                text (&(*target)[std::string(key)])(value, below(path, key));
            });
        };
    }

    Handler preferences(std::optional<std::map<std::string, std::string>>* target) {
        return [this, target](dom::element element, const std::string& path) {
            auto& values = target->emplace();
            eachMember(element, path, [&](std::string_view key, dom::element value) {
                values[std::string(key)] = simdjson::minify(value);
            });
        };
    }

    Handler templates(std::map<std::string, std::string>* target) {
        return [this, target](dom::element element, const std::string& path) {
            texts(target)(element, path);
            for (const auto& [name, content] : *target) {
                if (name.empty() || name[0] == '.' || name.find('/') != std::string::npos) {
                    fail(below(path, name), "must be named like a file");
                }
            }
        };
    }

    Handler refusals(std::set<std::string>* target) {
        return [this, target](dom::element element, const std::string& path) {
            eachElement(element, path, [&](dom::element value, const std::string& place) {
                std::string request;
                text (&request)(value, place);
                if (!canBeRefused(request)) {
                    fail(place,
                         "\"" + helper::escapedJson(request) + "\" is nothing that the host can refuse");
                }
                target->insert(request);
            });
        };
    }

    void readReading(dom::element element, const std::string& path, Compass* compass) {
        CompassReading reading;
        size_t count = 0;
        eachElement(element, path, [&](dom::element value, const std::string& place) {
            switch (count++) {
            case 0:
                integer (&reading.intValue)(value, place);
                break;
            case 1:
                number (&reading.doubleValue1)(value, place);
                break;
            default:
                number (&reading.doubleValue2)(value, place);
            }
        });
        if (count != 3) {
            fail(path, "must be a list of a whole number and two numbers");
        }
        compass->readings.push_back(reading);
    }

    Handler compass(Compass* target) {
        return [this, target](dom::element element, const std::string& path) {
            const Handler reading = [this, target](dom::element value, const std::string& place) {
                readReading(value, place, target);
            };
            fields(element, path,
                   {{"interval", integer(&target->interval, 1)},
                    {"turn", number(&target->turn)},
                    {"readings", [&](dom::element value, const std::string& place) {
                         eachElement(value, place, reading);
                     }}});
        };
    }

    void readFix(dom::element element, const std::string& path, LocationTrack* track) {
        Fix fix;
        fields(element, path,
               {{"latitude", number(&fix.latitude)},
                {"longitude", number(&fix.longitude)},
                {"altitude", number(&fix.altitude)},
                {"horizAccuracy", number(&fix.horizAccuracy)},
                {"vertAccuracy", number(&fix.vertAccuracy)},
                {"heading", number(&fix.heading)},
                {"velocity", number(&fix.velocity)}});
        track->fixes.push_back(fix);
    }

    Handler location(LocationTrack* target) {
        return [this, target](dom::element element, const std::string& path) {
            const Handler fix = [this, target](dom::element value, const std::string& place) {
                readFix(value, place, target);
            };
            const Handler code = [this, target](dom::element value, const std::string& place) {
                integer (&target->errors.emplace_back())(value, place);
            };
            fields(element, path,
                   {{"interval", integer(&target->interval, 1)},
                    {"fixes", [&](dom::element value,
                                  const std::string& place) { eachElement(value, place, fix); }},
                    {"errors", [&](dom::element value, const std::string& place) {
                         eachElement(value, place, code);
                     }}});
        };
    }

    Handler purchase(Purchase* target) {
        return [this, target](dom::element element, const std::string& path) {
            const std::string word = helper::textOf(element);
            if (word == "succeeds") {
                *target = Purchase::Succeeds;
            } else if (word == "refused") {
                *target = Purchase::Refused;
            } else if (word == "silent") {
                *target = Purchase::Silent;
            } else {
                fail(path, "must be succeeds, refused or silent");
            }
        };
    }

    Handler items(std::vector<Item>* target) {
        return [this, target](dom::element element, const std::string& path) {
            eachElement(element, path, [&](dom::element value, const std::string& place) {
                Item item;
                fields(value, place,
                       {{"id", text(&item.id)},
                        {"title", text(&item.title)},
                        {"price", text(&item.price)},
                        {"purchase", purchase(&item.purchase)}});
                if (item.id.empty()) {
                    fail(place, "must have an id");
                }
                target->push_back(std::move(item));
            });
        };
    }

    // A string is sent as it stands, null as a null text, anything else as JSON.
    static Reply replyFrom(dom::element element) {
        return element.is_null() ? Reply() : Reply(helper::textOf(element));
    }

    void readService(dom::element element, const std::string& path, Service* service) {
        fields(element, path,
               {{"reply", [&](dom::element value,
                              const std::string&) { service->replies = {replyFrom(value)}; }},
                {"replies",
                 [&](dom::element value, const std::string& place) {
                     eachElement(value, place, [&](dom::element reply, const std::string&) {
                         service->replies.push_back(replyFrom(reply));
                     });
                 }},
                {"repeat", flag(&service->repeat)},
                {"delay", integer(&service->delay, 0)},
                {"every", integer(&service->every, 0)},
                {"refuse", flag(&service->refuse)}});
        if (service->repeat && service->every == 0) {
            fail(below(path, "repeat"), "needs \"every\", the milliseconds between the replies");
        }
    }

    Handler services(std::map<std::string, Service>* target) {
        return [this, target](dom::element element, const std::string& path) {
            eachMember(element, path, [&](std::string_view uri, dom::element value) {
                readService(value, below(path, uri), &(*target)[std::string(uri)]);
            });
        };
    }

    void readProfile(dom::element document, Profile* profile) {
        fields(document, "",
               {{"title", text(&profile->title)},
                {"machine", text(&profile->machine)},
                {"root", flag(&profile->root)},
                {"plugin", flag(&profile->plugin)},
                {"executable", text(&profile->executable)},
                {"portability", texts(&profile->portability)},
                {"appinfo", texts(&profile->appinfo)},
                {"properties", texts(&profile->properties)},
                {"preferences", preferences(&profile->preferences)},
                {"uniqueId", text(&profile->uniqueId)},
                {"templates", templates(&profile->templates)},
                {"refuse", refusals(&profile->refused)},
                {"compass", compass(&profile->compass)},
                {"location", location(&profile->location)},
                {"items", items(&profile->items)},
                {"services", services(&profile->services)}});
    }

    std::string m_source;
    std::string m_error;
};

}  // namespace

bool canBeRefused(const std::string& request) {
    if (request.find("://") != std::string::npos) {
        return true;
    }
    for (const std::string_view name : kRefusable) {
        if (name == request) {
            return true;
        }
    }
    return false;
}

std::optional<Profile> parseProfile(const std::string& json, const std::string& source,
                                    std::string* error) {
    Profile profile;
    Reader reader(source);
    reader.read(json, &profile);
    if (!reader.error().empty()) {
        *error = reader.error();
        return std::nullopt;
    }
    return profile;
}

std::optional<Profile> readProfile(const std::string& path, std::string* error) {
    simdjson::padded_string json;
    std::error_code problem;
    if (!fs::is_regular_file(path, problem)) {
        *error = path + ": no such device profile";
        return std::nullopt;
    }
    if (simdjson::padded_string::load(path).get(json) != simdjson::SUCCESS) {
        *error = path + ": cannot be read";
        return std::nullopt;
    }
    return parseProfile(std::string(json.data(), json.size()), path, error);
}

std::string profileFolder() {
    Dl_info own;
    if (dladdr(reinterpret_cast<const void*>(&profileFolder), &own) == 0) {
        return {};
    }
    std::error_code problem;
    const fs::path library = fs::absolute(own.dli_fname, problem);
    return (library.parent_path() / TAVSIM_DATA_FROM_LIBRARY / "devices").lexically_normal();
}

std::string profilePath(const std::string& nameOrPath) {
    const bool isPath =
        nameOrPath.find('/') != std::string::npos || fs::path(nameOrPath).extension() == ".json";
    return isPath ? nameOrPath : profileFolder() + "/" + nameOrPath + ".json";
}

}  // namespace tavsim
