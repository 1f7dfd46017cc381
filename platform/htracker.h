/* Call tracing. */
#ifndef TAV_PLATFORM_HTRACKER_H
#define TAV_PLATFORM_HTRACKER_H

#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes one trace line: the tag that listeners select by ("tav_f" entry, "tav_e" failure, …), the
 * name of the function that traces, and printf-style text. A null string argument is allowed and
 * shows as (null). Costs next to nothing while nobody listens to the tag. Works as soon as the
 * platform's libraries are loaded, even during static initialisation. The result means nothing. */
TAV_PLATFORM_API int HTracker_funcTrack(const char* tag, const char* function, const char* format,
                                        ...) __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif

#endif
