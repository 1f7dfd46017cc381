/* Growable strings of the helper library. */
#ifndef TAV_PLATFORM_HSTRING_H
#define TAV_PLATFORM_HSTRING_H

#include <stddef.h>

#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Made by HString_alloc only. Callers may read the fields; only the functions change them. */
typedef struct HString {
    char* text;    /* always terminated */
    size_t length; /* in bytes, the terminator not counted */
    size_t capacity;
} HString;

/* A new empty string, released with HString_free; null when memory is exhausted. */
TAV_PLATFORM_API HString* HString_alloc(void);

/* Appends printf-style text. A null string argument shows as (null). Returns non-zero on success;
 * 0 when memory is exhausted, and the string is then as it was. */
TAV_PLATFORM_API int HString_append(HString* string, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/* The text, terminated; valid until the string is next changed or freed. */
TAV_PLATFORM_API const char* HString_toStr(const HString* string);

/* Releases the string; null is allowed. */
TAV_PLATFORM_API void HString_free(HString* string);

#ifdef __cplusplus
}
#endif

#endif
