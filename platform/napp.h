/* The native-application host library, for C++.
 *
 * Look-ups answer with a host status: 1 success, 100 the buffer is too small, 102 there is no such
 * value, anything else another failure. A buffer's length is in bytes, the terminator counted; what
 * a successful look-up writes is terminated, and a failed one leaves the empty string where the
 * buffer has room for it. Requests answer non-zero when they were accepted, 0 when refused. Those
 * of the page's bridge answer true or false, as the two callbacks do that they hand over. */
#ifndef TAV_PLATFORM_NAPP_H
#define TAV_PLATFORM_NAPP_H

#include "hdata.h"
#include "hkscaller.h"
#include "visibility.h"

enum {
    NAPP_SUCCESS = 1,
    NAPP_BUFFER_TOO_SMALL = 100,
    NAPP_NO_SUCH_VALUE = 102,
    NAPP_FAILURE = 103
};

extern "C" {

/* Receives each compass reading, on the application's thread, while the application polls, waits
 * for or pumps SDL events. */
typedef void (*NApp_CompassCallback)(int intValue, double doubleValue1, double doubleValue2);

struct TAVCallbacks {
    NApp_CompassCallback compassCallback;
};

/* Stores the callbacks; the record is the caller's and is not kept. The result means nothing.
 */
TAV_PLATFORM_API int NApp_registerTAV(const TAVCallbacks* callbacks);

/* The value of a key of the application's information, as text. */
TAV_PLATFORM_API int NApp_GetAppinfoValue(const char* key, char* buffer, int bufferLength);

/* The absolute path of a file in the application's data folder, whether or not there is such a
 * file; an empty name gives the folder. */
TAV_PLATFORM_API int NApp_GetDataFilePath(const char* name, char* buffer, int bufferLength);

/* The value of a member of a JSON object, as text: the content of a string, the JSON text of
 * anything else. A text that is not a JSON object is a failure. */
TAV_PLATFORM_API int NApp_GetJsonValue(const char* json, const char* member, char* buffer,
                                       int bufferLength);

/* A portability setting, or null when it is not set. It belongs to the host and is valid until the
 * next call. */
TAV_PLATFORM_API const char* NApp_GetPortabilityValue(const char* key);

/* The absolute path of the running executable. Not a status: non-zero on success, 0 on failure. */
TAV_PLATFORM_API int NApp_GetProcSelfExe(char* buffer, int bufferLength);

/* The process's bus caller; never null, never released. */
TAV_PLATFORM_API HKSCaller* NApp_GetKSCaller(void);

/* Starts or stops the delivery of compass readings. */
TAV_PLATFORM_API int NApp_EnableCompass(bool enable);

/* Shows (1) or hides (0) the on-screen keyboard. */
TAV_PLATFORM_API int NApp_SetKeyboardState(int visible);

/* Puts the application into the background. */
TAV_PLATFORM_API int NApp_Minimize(void);

/* 1 or -1. */
TAV_PLATFORM_API int NApp_SetTouchAggression(int aggression);

/* Writes the list of the native methods: their number, then their names. Returns true. */
typedef bool (*NApp_MethodListCallback)(HDataWriter* writer);

/* Performs one call of a native method: reads the name, the number of parameters and the
 * parameters, and writes whether the answer is an exception and its text. Returns false when the
 * message could not be read or there is no memory for the call; nothing is written then. */
typedef bool (*NApp_MethodCallback)(HDataReader* reader, HDataWriter* writer);

/* Connects the application's native methods with the page. Refused when the application does not
 * run as a plug-in. Both callbacks come on the application's thread, while it polls, waits for or
 * pumps SDL events. */
TAV_PLATFORM_API bool NApp_RegisterKiteHandlers(NApp_MethodListCallback methodList,
                                                NApp_MethodCallback methodCall);

/* Passes a call on to the page; the texts are copied. Refuses a null name and a count that is
 * negative or, with a null array, positive; a null argument arrives as JavaScript's null. */
TAV_PLATFORM_API bool NApp_JSCall(const char* functionName, const char* const* arguments,
                                  int argumentCount);
}

#endif
