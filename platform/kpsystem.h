/* System properties, from the preferences library. */
#ifndef TAV_PLATFORM_KPSYSTEM_H
#define TAV_PLATFORM_KPSYSTEM_H

#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Looks a property up. On success returns 0 and stores a new terminated string, which the caller
 * releases with g_free. Any other result is a failure, which leaves the pointer as it was. The
 * caller passes in a null pointer, and releases the result in both cases. */
TAV_PLATFORM_API int KPSystemCopyStringValue(const char* key, char** value);

#ifdef __cplusplus
}
#endif

#endif
