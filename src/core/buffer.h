// The one check of a caller's buffer.
#ifndef TAV_CORE_BUFFER_H
#define TAV_CORE_BUFFER_H

#include "core/report.h"
#include "tav.h"

namespace tav {

inline constexpr char kLengthNotPositive[] = "buffer length must be greater than 0";
inline constexpr char kLengthInvalid[] = "buffer length is invalid";

// TAV_NOERROR, or the failure that is already reported under the function's name. Functions differ
// in how they word a length of 0 or less, so they name their wording.
inline int checkBuffer(const char* function, const char* buffer, int length,
                       const char* lengthMessage) {
    if (buffer == nullptr) {
        return TAV_FAIL(function, TAV_INVALIDINPUT, "buffer is NULL");
    }
    if (length <= 0) {
        return TAV_FAIL(function, TAV_INVALIDINPUT, "%s", lengthMessage);
    }
    return TAV_NOERROR;
}

}  // namespace tav

#endif
