// The store of the bus's role files: its directories, and single files made from templates.
#ifndef TAV_ROLES_ROLE_FILE_H
#define TAV_ROLES_ROLE_FILE_H

#include <string>

#include "tav.h"

namespace tav {

inline constexpr char kRoleStore[] = "/var/vire/ks2/roles";
inline constexpr char kPublicRoles[] = "/var/vire/ks2/roles/pub";
inline constexpr char kPrivateRoles[] = "/var/vire/ks2/roles/prv";

// Creates what is missing of the role store, for its owner alone.
void ensureRoleDirectories();

// What roleGenerate does, without copies of the texts.
void generateRoleFile(const char* templatePath, const char* rolePath, const char* appId,
                      const char* exePath);

}  // namespace tav

// Writes a role file from a template, with the application's id and executable in place of the
// template's placeholders, and has the bus rescan its roles. Leaves alone whatever can be opened
// for reading under the role file's path, and then runs no rescan either. Where reading the
// template or memory fails midway, no role file is left, so that the next start tries again.
// Reports nothing. Visible to other modules of the platform.
TAV_API void roleGenerate(std::string templatePath, std::string rolePath, std::string appId,
                          std::string exePath);

#endif
