// The one check of a caller's buffer.
#pragma once

#include "core/report.h"
#include "tav.h"

namespace tav {

// How a function words a length of 0 or less.
enum class LengthMessage { NotPositive, Invalid };

// TAV_NOERROR, or the failure that is already reported under the function's name.
inline int checkBuffer(const char* function, const char* buffer, int length,
                       LengthMessage message = LengthMessage::NotPositive) {
    if (buffer == nullptr) {
        return TAV_FAIL(function, TAV_INVALIDINPUT, "buffer is NULL");
    }
    if (length > 0) {
        return TAV_NOERROR;
    }
    return message == LengthMessage::Invalid
               ? TAV_FAIL(function, TAV_INVALIDINPUT, "buffer length is invalid")
               : TAV_FAIL(function, TAV_INVALIDINPUT, "buffer length must be greater than 0");
}

}  // namespace tav
