// The description of a simulated device, and the reading of profile files.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "platform/visibility.h"

namespace tavsim {

// The text of one reply; without a value the bus delivers a null text.
using Reply = std::optional<std::string>;

// The condition for a member of a request's payload.
struct PayloadPattern {
    std::string text;  // the JSON of a value, or a glob for the content of a string
    bool isGlob = false;
};

// A program of the user that answers requests.
struct ServiceCommand {
    std::vector<std::string> words;
    std::string folder;  // its working directory

    bool operator<(const ServiceCommand& other) const {
        return std::tie(words, folder) < std::tie(other.words, other.folder);
    }
};

// A bus service. A subscription receives the replies in order, one every `every` milliseconds, and
// starts over after the last one if `repeat` is set. Calls with one reply receive one each, in
// turn, and the last one from then on. Without replies and without `compute`, no reply ever comes.
// In replies, ${NAME} stands for a member of the request's payload.
struct Service {
    std::vector<Reply> replies;
    bool repeat = false;
    int delay = 0;  // milliseconds from the call to the first reply
    int every = 0;  // milliseconds between the replies to a subscription
    bool refuse = false;

    // Computes each reply, instead of the list. For a subscription it is called once, or every
    // `every` milliseconds if that is set.
    std::function<Reply(const std::string& uri, const std::string& payload)> compute;

    // Each request's delay is longer by a random number of milliseconds, up to this one. The same
    // seed gives the same delays.
    int spread = 0;
    int seed = 0;

    // The first case whose conditions the payload meets answers instead of the service.
    std::map<std::string, PayloadPattern> when =
        {};  // by the member's name or path, such as "item.id"
    std::vector<Service> cases = {};

    // Answers instead of the service.
    std::optional<ServiceCommand> program = {};
};

struct CompassReading {
    int intValue = 0;
    double doubleValue1 = 0.0;
    double doubleValue2 = 0.0;
};

// Delivers the readings, one every `interval` milliseconds; the last one repeats. Without readings,
// if `turn` is set, delivers a heading in doubleValue1 that grows by `turn` degrees a second.
struct Compass {
    std::vector<CompassReading> readings;
    int interval = 100;
    double turn = 0.0;
};

// In degrees, north and south, east and west.
constexpr double kHighestLatitude = 90.0;
constexpr double kHighestLongitude = 180.0;

// Metres; a receiver that is further off knows nothing.
constexpr double kLeastAccuracy = 100000.0;

struct Fix {
    double latitude = 0.0;
    double longitude = 0.0;
    double altitude = 0.0;
    double horizAccuracy = 0.0;
    double vertAccuracy = 0.0;
    double heading = 0.0;
    double velocity = 0.0;
};

// What receives the positions. Its fixes are random points, at most `accuracy` metres from where
// the device is; the same seed gives the same ones.
struct Receiver {
    int every = 0;        // milliseconds between two fixes; 0: a fix for each movement
    double accuracy = 0;  // 0: exact, with the accuracy that the device's position has
    int seed = 0;
};

// The device goes through the fixes, one every `interval` milliseconds, then the error codes in the
// same way.
struct LocationTrack {
    std::vector<Fix> fixes;
    std::vector<int> errors;
    int interval = 1000;
    Receiver receiver = {};
};

enum class Purchase { Succeeds, Refused, Silent };

struct Item {
    std::string id;
    std::string title;
    std::string price;
    Purchase purchase = Purchase::Succeeds;
};

struct Profile {
    std::string name;                    // the name of its file, without ".json"
    std::string title;                   // what the device is, in one line, for people
    std::optional<std::string> machine;  // none: the device does not know its name
    bool root = false;                   // the application runs as the root user
    bool plugin = false;
    std::optional<std::string> executable;  // none: the real one; empty: the host cannot tell
    std::map<std::string, std::string> portability;
    std::map<std::string, std::string> appinfo;
    std::map<std::string, std::string> properties;
    std::optional<std::map<std::string, std::string>> preferences;  // JSON texts; none: no database
    std::optional<std::string> uniqueId;                            // none: no such file
    std::map<std::string, std::string> templates;                   // role templates by file name
    std::set<std::string> refused;  // what the host refuses: "keyboard", "minimize", "touch",
                                    // "compass", "bridge", "orientation", "gestures", "banners",
                                    // "pauseUi", "screenTimeout", or the URI of a service
    Compass compass;
    LocationTrack location;
    std::vector<Item> items;                  // what the payment service sells
    std::map<std::string, Service> services;  // by URI, before the device's own services
};

// Whether the text looks like a service's URI.
bool isUri(const std::string& text);

// Whether a profile's "refuse" may contain this.
TAV_PLATFORM_API bool canBeRefused(const std::string& request);

// The names of requests that it may contain.
std::vector<std::string> refusableRequests();

// Reads a profile. Without a value, `error` is one line that names the source and the field.
TAV_PLATFORM_API std::optional<Profile> parseProfile(const std::string& document,
                                                     const std::string& source, std::string* error);
TAV_PLATFORM_API std::optional<Profile> readProfile(const std::string& path, std::string* error);

// Of a run that names none.
inline constexpr char kDefaultDevice[] = "cinnabar";

// The folder with the profiles that come with the simulator, and their names.
TAV_PLATFORM_API std::string profileFolder();
TAV_PLATFORM_API std::vector<std::string> profileNames();

// The file of a profile: the path itself when it holds a '/' or ends in .json, otherwise the
// profile of that name in profileFolder().
TAV_PLATFORM_API std::string profilePath(const std::string& nameOrPath);

}  // namespace tavsim
