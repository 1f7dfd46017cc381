#include "roles/families.h"

#include <cstdio>
#include <cstring>

#include "roles/role_file.h"

namespace {

constexpr char kKobPublic[] = "/usr/vire/ks2/templates/KOB.pub";
constexpr char kKobPrivate[] = "/usr/vire/ks2/templates/KOB.prv";
constexpr char kVantorPublic[] = "/usr/vire/ks2/templates/Vantor.pub";
constexpr char kVantorPrivate[] = "/usr/vire/ks2/templates/Vantor.prv";
constexpr char kVantorExecutable[] = "js";

// Room for every possible path. An id that does not fit is longer than any file name, so no file
// can have it as its name, whether the path is cut or not.
constexpr int kPathSize = 4096;

void generateRole(const char* templatePath, const char* directory, const char* appId,
                  const char* exePath) {
    char rolePath[kPathSize];
    std::snprintf(rolePath, sizeof rolePath, "%s/%s.json", directory, appId);
    tav::generateRoleFile(templatePath, rolePath, appId, exePath);
}

void generateRoles(const char* publicTemplate, const char* privateTemplate, const char* appId,
                   const char* exePath) {
    // With such an id, the role files would be outside of the store.
    if (std::strchr(appId, '/') != nullptr) {
        return;
    }
    tav::ensureRoleDirectories();
    generateRole(publicTemplate, tav::kPublicRoles, appId, exePath);
    generateRole(privateTemplate, tav::kPrivateRoles, appId, exePath);
}

}  // namespace

namespace tav {

void generateKobRoles(const char* appId, const char* exePath) {
    generateRoles(kKobPublic, kKobPrivate, appId, exePath);
}

}  // namespace tav

// NOLINTNEXTLINE(performance-unnecessary-value-param): the symbol's name holds the types
void kobGenerateRole(std::string appId, std::string exePath) {
    tav::generateKobRoles(appId.c_str(), exePath.c_str());
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the symbol's name holds the types
void vantorGenerateRole(std::string appId) {
    generateRoles(kVantorPublic, kVantorPrivate, appId.c_str(), kVantorExecutable);
}
