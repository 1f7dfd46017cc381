#include "roles/families.h"

#include "roles/role_file.h"

namespace {

constexpr char kKobTemplates[] = "/usr/vire/ks2/templates/KOB";
constexpr char kVantorTemplates[] = "/usr/vire/ks2/templates/Vantor";
constexpr char kVantorExecutable[] = "js";

void generateRoles(const std::string& templateBase, const std::string& appId,
                   const std::string& exePath) {
    // Such an id would put its role files outside the store.
    if (appId.find('/') != std::string::npos) {
        return;
    }
    tav::ensureRoleDirectories();
    const std::string fileName = "/" + appId + ".json";
    roleGenerate(templateBase + ".pub", tav::kPublicRoles + fileName, appId, exePath);
    roleGenerate(templateBase + ".prv", tav::kPrivateRoles + fileName, appId, exePath);
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the symbol's name holds the types
void kobGenerateRole(std::string appId, std::string exePath) {
    generateRoles(kKobTemplates, appId, exePath);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the symbol's name holds the types
void vantorGenerateRole(std::string appId) {
    generateRoles(kVantorTemplates, appId, kVantorExecutable);
}
