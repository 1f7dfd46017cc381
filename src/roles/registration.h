// The application's own roles, at start-up.
#ifndef TAV_ROLES_REGISTRATION_H
#define TAV_ROLES_REGISTRATION_H

#include "tav.h"

// Has the roles of the running application generated, which only the root user can do. TAV_NOERROR
// once the generation was run, whatever came of it; TAV_EOTHER, with the reason in the trace alone,
// when it was not. Visible to other modules of the platform.
TAV_API int registerRoleFile();

#endif
