#include "platform/hstring.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "helper/failing.h"

namespace {

// Room for at least `length` bytes and the terminator; false when memory is exhausted.
bool reserve(HString* string, size_t length) {
    if (length < string->capacity) {
        return true;
    }
    const size_t capacity = length < 2 * string->capacity ? 2 * string->capacity : length + 1;
    char* text = static_cast<char*>(std::realloc(string->text, capacity));
    if (text == nullptr) {
        return false;
    }
    string->text = text;
    string->capacity = capacity;
    return true;
}

}  // namespace

HString* HString_alloc() {
    if (helper::fails(helper::Operation::Allocation)) {
        return nullptr;
    }
    HString* string = static_cast<HString*>(std::calloc(1, sizeof(HString)));
    if (string == nullptr || !reserve(string, 0)) {
        std::free(string);
        return nullptr;
    }
    string->text[0] = '\0';
    return string;
}

int HString_append(HString* string, const char* format, ...) {
    if (string == nullptr || helper::fails(helper::Operation::Allocation)) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int added = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (added < 0 || !reserve(string, string->length + static_cast<size_t>(added))) {
        return 0;
    }
    va_start(arguments, format);
    std::vsnprintf(string->text + string->length, static_cast<size_t>(added) + 1, format,
                   arguments);
    va_end(arguments);
    string->length += static_cast<size_t>(added);
    return 1;
}

const char* HString_toStr(const HString* string) {
    return string->text;
}

void HString_free(HString* string) {
    if (string != nullptr) {
        std::free(string->text);
        std::free(string);
    }
}
