// The store of the bus's role files: its directories, and single files made from templates.
#pragma once

#include <string>

#include "tav.h"

namespace tav {

inline constexpr char kRoleStore[] = "/var/vire/ks2/roles";
inline constexpr char kPublicRoles[] = "/var/vire/ks2/roles/pub";
inline constexpr char kPrivateRoles[] = "/var/vire/ks2/roles/prv";

// Creates the missing folders of the role store, accessible to their owner only.
void ensureRoleDirectories();

// roleGenerate without copies of the texts.
void generateRoleFile(const char* templatePath, const char* rolePath, const char* appId,
                      const char* exePath);

}  // namespace tav

// Writes a role file from a template, with the application's id and executable in place of the
// template's placeholders, and lets the bus rescan its roles. Does nothing when the role file's
// path can be opened for reading. When reading the template fails midway, or memory is exhausted,
// no role file is left, so that the next start tries again. Reports no failure. Visible to other
// modules of the platform.
TAV_API void roleGenerate(std::string templatePath, std::string rolePath, std::string appId,
                          std::string exePath);
