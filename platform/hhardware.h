/* What the device is, from the helper library. */
#ifndef TAV_PLATFORM_HHARDWARE_H
#define TAV_PLATFORM_HHARDWARE_H

#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The machine name; it belongs to the platform and is valid until the next call. Null when the
 * device does not know its name. */
TAV_PLATFORM_API const char* HHardware_getMachine(void);

#ifdef __cplusplus
}
#endif

#endif
