// Owners of what C functions release.
#pragma once

#include <memory>

#include "platform/hjson.h"
#include "platform/hstring.h"

namespace tav {

template <auto Release>
struct Releaser {
    void operator()(auto* object) const { Release(object); }
};

template <typename Object, auto Release>
using Owner = std::unique_ptr<Object, Releaser<Release>>;

using HStringPtr = Owner<HString, HString_free>;
using HJsonPtr = Owner<HJson, HJson_free>;

}  // namespace tav
