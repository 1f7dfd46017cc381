// Owners of the helper library's objects.
#pragma once

#include <memory>

#include "platform/hjson.h"
#include "platform/hstring.h"

namespace tav {

struct HStringDeleter {
    void operator()(HString* string) const { HString_free(string); }
};
using HStringPtr = std::unique_ptr<HString, HStringDeleter>;

struct HJsonDeleter {
    void operator()(HJson* json) const { HJson_free(json); }
};
using HJsonPtr = std::unique_ptr<HJson, HJsonDeleter>;

}  // namespace tav
