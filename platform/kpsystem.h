/* System properties, from the preferences library. */
#ifndef TAV_PLATFORM_KPSYSTEM_H
#define TAV_PLATFORM_KPSYSTEM_H

#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Looks a property up. On success returns 0 and stores a new string, which the caller releases with
 * g_free; any other result is a failure and leaves the pointer as it was. */
TAV_PLATFORM_API int KPSystemCopyStringValue(const char* key, char** value);

#ifdef __cplusplus
}
#endif

#endif
