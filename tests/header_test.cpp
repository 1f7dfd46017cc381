// The public records are part of the binary interface, on 32-bit and 64-bit devices alike.
#include <cstddef>

#include "tav.h"

namespace {

struct DoubleAfterInt {
    int intValue;
    double doubleValue;
};
constexpr std::size_t kAfterInt = offsetof(DoubleAfterInt, doubleValue);
constexpr std::size_t kPointer = sizeof(void*);

// The offsets of the members after the first, and the size of the record.
static_assert(offsetof(TAV_ServiceParameters, reserved1) == kPointer &&
              offsetof(TAV_ServiceParameters, reserved2) == kPointer + 4 &&
              sizeof(TAV_ServiceParameters) == kPointer + 8);
static_assert(offsetof(TAV_JSParameters, parameters) == kPointer &&
              offsetof(TAV_JSParameters, reply) == 2 * kPointer &&
              offsetof(TAV_JSParameters, isException) == 3 * kPointer &&
              sizeof(TAV_JSParameters) == 4 * kPointer);
static_assert(offsetof(TAV_ScreenMetrics, heightPixels) == 4 &&
              offsetof(TAV_ScreenMetrics, horizontalDpi) == 8 &&
              offsetof(TAV_ScreenMetrics, verticalDpi) == 12 &&
              offsetof(TAV_ScreenMetrics, dpiRatio) == 16 && sizeof(TAV_ScreenMetrics) == 24);
static_assert(offsetof(TAV_OSVersion, minor) == 4 && offsetof(TAV_OSVersion, revision) == 8 &&
              offsetof(TAV_OSVersion, versionText) == 12 && sizeof(TAV_OSVersion) == 268);
static_assert(offsetof(TAV_NetInfo, netmask) == 4 && offsetof(TAV_NetInfo, broadcast) == 8 &&
              sizeof(TAV_NetInfo) == 12);
static_assert(offsetof(TAV_CompassReading, doubleValue1) == kAfterInt &&
              offsetof(TAV_CompassReading, doubleValue2) == kAfterInt + 8 &&
              sizeof(TAV_CompassReading) == kAfterInt + 16);
static_assert(offsetof(TAV_Location, longitude) == 8 && offsetof(TAV_Location, altitude) == 16 &&
              offsetof(TAV_Location, horizAccuracy) == 24 &&
              offsetof(TAV_Location, vertAccuracy) == 32 && offsetof(TAV_Location, heading) == 40 &&
              offsetof(TAV_Location, velocity) == 48 && sizeof(TAV_Location) == 56);

static_assert(sizeof(TAV_Orientation) == 4);
static_assert(TAV_ORIENTATION_BOTTOM == 0 && TAV_ORIENTATION_RIGHT == 1);
static_assert(TAV_ORIENTATION_TOP == 2 && TAV_ORIENTATION_LEFT == 3);
static_assert(TAV_NOERROR == 0 && TAV_ECONNECTION == 2 && TAV_INVALIDINPUT == 3);
static_assert(TAV_EOTHER == 4 && TAV_UNINIT == 5 && TAV_ELOCATIONSERVICE == 6);
static_assert(TAV_STRINGTOOSMALL == 8 && TAV_EDATAACCESS == 9);
static_assert(TAV_ENETWORK == 10 && TAV_EHOSTLOOKUP == 11);
static_assert(TAV_EVENT_LOCATION == 0xE100 && TAV_EVENT_LOCATION_FAILURE == 0xE101);
static_assert(TAV_EVENT_COMPASS == 0xE110);

}  // namespace
