#include "base/json/appinfo.h"

#include <filesystem>

#include "base/application_id.h"
#include "base/file.h"
#include "base/json/text.h"

namespace base {
namespace {

constexpr size_t kMostBytes = 1 << 20;

}  // namespace

json::Reader applicationId(std::string* target) {
    return [target](const json::Value& value) {
        json::text(target)(value);
        if (!isApplicationId(*target)) {
            value.fail("must be a D-Bus name, such as org.example.Game");
        }
    };
}

std::optional<std::map<std::string, std::string>> readAppinfo(const std::string& folder,
                                                              std::string* error) {
    std::map<std::string, std::string> values;
    const std::string file = folder + "/" + kAppinfo;
    std::error_code problem;
    if (!std::filesystem::exists(file, problem)) {
        return values;
    }
    const std::optional<std::string> content = readFile(file, kMostBytes, error);
    const auto information = [&values](const json::Value& root) {
        json::eachMember(root, [&values](std::string_view name, const json::Value& member) {
            std::string& value = values[std::string(name)];
            if (name == "id") {
                applicationId (&value)(member);
            } else {
                value = textOf(member.element());
            }
        });
    };
    if (!content || !json::read(*content, file, information, error)) {
        return std::nullopt;
    }
    return values;
}

}  // namespace base
