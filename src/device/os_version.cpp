#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "core/report.h"
#include "device/preferences.h"
#include "tav.h"

namespace {

constexpr char kVersionProperty[] = "com.vire.properties.version";

// The size of a long depends on the device. A number that is too large is truncated to 32 bits.
Sint32 parseNumber(const char* text) {
    constexpr long kMin = std::numeric_limits<Sint32>::min();
    constexpr long kMax = std::numeric_limits<Sint32>::max();
    return static_cast<Sint32>(std::clamp(std::strtol(text, nullptr, 10), kMin, kMax));
}

char* startOfWord(const char* text, char* inside) {
    while (inside != text && inside[-1] != ' ') {
        --inside;
    }
    return inside;
}

void cutAtBlank(char* text) {
    text[std::strcspn(text, " ")] = '\0';
}

// Splits the text into its numbers. The second dot may be in a later word than the first.
void parseVersion(char* text, TAV_OSVersion* version) {
    char* firstDot = std::strchr(text, '.');
    if (firstDot == nullptr) {
        return;
    }
    char* secondDot = std::strchr(firstDot + 1, '.');
    cutAtBlank(secondDot != nullptr ? secondDot : firstDot);
    *firstDot = '\0';
    version->major = parseNumber(startOfWord(text, firstDot));
    if (secondDot != nullptr) {
        *secondDot = '\0';
        version->revision = parseNumber(secondDot + 1);
    }
    version->minor = parseNumber(firstDot + 1);
}

}  // namespace

int TAV_GetOSVersion(TAV_OSVersion* version) {
    HTracker_funcTrack("tav_f", __func__, "%p", static_cast<void*>(version));
    if (version == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "sent-in version pointer is NULL");
    }
    *version = {};
    char text[sizeof version->versionText];
    if (tav::getKoraPrefSystemValue(kVersionProperty, text, sizeof text) != TAV_NOERROR) {
        return TAV_FAIL(__func__, TAV_EOTHER, "Unable to extract OS version information");
    }
    std::memcpy(version->versionText, text, std::strlen(text));
    parseVersion(text, version);
    return TAV_NOERROR;
}
