#include "application.h"

#include <filesystem>
#include <map>
#include <string_view>

#include "base/file.h"
#include "base/json/appinfo.h"
#include "base/json/reader.h"
#include "tools/web/security.h"

namespace fs = std::filesystem;
namespace json = base::json;

namespace page {
namespace {

constexpr size_t kMostBytes = 1 << 20;

json::Reader origin(std::string* target) {
    return [target](const json::Value& value) {
        json::text(target)(value);
        if (!web::isOrigin(*target)) {
            value.fail("must be an origin, such as https://tiles.example");
        }
    };
}

// A path of a file in the folder.
json::Reader file(std::string* target) {
    return [target](const json::Value& value) {
        json::text(target)(value);
        const fs::path path = fs::path(*target).lexically_normal();
        if (path.empty() || path.is_absolute() || *path.begin() == ".." || !path.has_filename()) {
            value.fail("must be the name of a file in this folder");
        }
        *target = path.string();
    };
}

// Its other members are the application's own affair.
json::Reader information(Application* application) {
    return [application](const json::Value& value) {
        std::string id;
        const std::map<std::string_view, json::Reader> known = {
            {"id", base::applicationId(&id)},
            {"main", file(&application->main)},
            {"program", file(&application->program)},
            {"hosts", json::list(&application->hosts, origin)}};
        json::eachMember(value, [&](std::string_view name, const json::Value& member) {
            if (const auto reader = known.find(name); reader != known.end()) {
                reader->second(member);
            }
        });
    };
}

bool read(const std::string& path, Application* application, std::string* error) {
    const std::optional<std::string> content = base::readFile(path, kMostBytes, error);
    return content && json::read(*content, path, information(application), error);
}

}  // namespace

std::optional<Application> readApplication(const std::string& folder, std::string* error) {
    Application application;
    const std::string path = folder + "/" + base::kAppinfo;
    if (!read(path, &application, error)) {
        return std::nullopt;
    }
    if (application.program.empty()) {
        *error = path + R"(: names no program; add it, such as "program": "game")";
        return std::nullopt;
    }
    for (const std::string& name : {application.main, application.program}) {
        if (*error = base::whyNoFile(folder + "/" + name); !error->empty()) {
            *error += "; " + path + " names it";
            return std::nullopt;
        }
    }
    return application;
}

bool readHosts(const std::string& folder, std::vector<std::string>* hosts, std::string* error) {
    Application application;
    const std::string path = folder + "/" + base::kAppinfo;
    std::error_code problem;
    if (fs::exists(path, problem) && !read(path, &application, error)) {
        return false;
    }
    *hosts = application.hosts;
    return true;
}

}  // namespace page
