/* Reading JSON texts, from the helper library. Keys name members of the text's outermost object. */
#ifndef TAV_PLATFORM_HJSON_H
#define TAV_PLATFORM_HJSON_H

#include "hstring.h"
#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HJson HJson;

/* Parses a text. The handle is released with HJson_free, does not refer to the text, and is
 * independent of other handles. Null when the text is null or is not one complete JSON value in
 * UTF-8, or memory is exhausted. */
TAV_PLATFORM_API HJson* HJson_create(const char* text);

/* Releases a handle; null is allowed. */
TAV_PLATFORM_API void HJson_free(HJson* json);

/* The member's value; 0 for an absent member, a null key or a value of another type. As an integer,
 * a number loses its fraction, and a number outside of 32 bits gives 0. */
TAV_PLATFORM_API int HJson_getBool(const HJson* json, const char* key);
TAV_PLATFORM_API int HJson_getInt(const HJson* json, const char* key);
TAV_PLATFORM_API double HJson_getDouble(const HJson* json, const char* key);

/* Non-zero when the member is there, whatever its value. */
TAV_PLATFORM_API int HJson_valueExists(const HJson* json, const char* key);

/* Parses the text and returns the member's value as a new string, to be released with HString_free:
 * the content of a string, the JSON text of any other value. Null when the text does not parse,
 * the key is null, there is no such member, or memory is exhausted. */
TAV_PLATFORM_API HString* HJson_getValueFromStr(const char* text, const char* key);

#ifdef __cplusplus
}
#endif

#endif
