// The families of role templates.
#pragma once

#include <string>

#include "tav.h"

namespace tav {

// kobGenerateRole without copies of the texts.
void generateKobRoles(const char* appId, const char* exePath);

}  // namespace tav

// Both create the role store and the application's public and private role file, where they are
// missing. The id is a plain file name; with a '/' in it, nothing happens. Both families write the
// same files, so the first one that runs decides. Visible to other modules of the platform.

// From the development kit's templates, which name the application's executable.
TAV_API void kobGenerateRole(std::string appId, std::string exePath);

// From the templates for applications that run in the JavaScript engine.
TAV_API void vantorGenerateRole(std::string appId);
