#include "linux/services/position.h"

#include <cmath>

namespace tavlinux {
namespace {

// GeoClue reports an unknown altitude as the lowest double.
double valueOf(GVariant* properties, const char* name) {
    double value = kUnknown;
    g_variant_lookup(properties, name, "d", &value);
    return std::isfinite(value) && value != -G_MAXDOUBLE ? value : kUnknown;
}

}  // namespace

Position positionFrom(GVariant* properties) {
    return {valueOf(properties, "Latitude"), valueOf(properties, "Longitude"),
            valueOf(properties, "Altitude"), valueOf(properties, "Accuracy"),
            valueOf(properties, "Heading"),  valueOf(properties, "Speed")};
}

}  // namespace tavlinux
