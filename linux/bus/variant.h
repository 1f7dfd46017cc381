// D-Bus values that free themselves.
#pragma once

#include <glib.h>

#include <memory>

namespace tavlinux {

struct VariantUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantUnref>;

// Takes over a floating value, or null.
inline Variant owned(GVariant* floating) {
    return Variant(floating != nullptr ? g_variant_ref_sink(floating) : nullptr);
}

inline Variant childOf(GVariant* container, gsize index) {
    return Variant(g_variant_get_child_value(container, index));
}

// The value in the variant of a tuple (v).
inline Variant valueIn(GVariant* tuple) {
    return Variant(g_variant_get_variant(childOf(tuple, 0).get()));
}

// False for null, too.
inline bool isOfType(GVariant* value, const char* type) {
    return value != nullptr && g_variant_is_of_type(value, G_VARIANT_TYPE(type)) != FALSE;
}

}  // namespace tavlinux
