// The application's own roles, at start-up.
#pragma once

#include "tav.h"

// Generates the roles of the running application, which only the root user can do. TAV_NOERROR when
// the generation was run, whatever its outcome. TAV_EOTHER when it was not; only the trace has the
// reason. Visible to other modules of the platform.
TAV_API int registerRoleFile();
