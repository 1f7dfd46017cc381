// Calls between an application and its page: of native methods, and of the page's functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "helper/items.h"
#include "platform/napp.h"

namespace bridge {

struct NativeMethods {
    NApp_MethodListCallback list = nullptr;
    NApp_MethodCallback call = nullptr;
};

// What came of a call of a native method: its reply, or the text of its exception.
struct MethodReply {
    bool isException = false;
    std::string text = {};
};

std::vector<std::string> namesOf(const NativeMethods& methods);

// The items of a call, of a native method or of the page: name, number of arguments, arguments.
std::string callItems(std::string_view name, const std::vector<helper::Text>& arguments);

// `answer` gets what the application writes: nothing when it could not read the call's items, which
// counts as an exception.
MethodReply callMethod(const NativeMethods& methods, std::string_view call, HDataWriter* answer);

// Whether these can be the arguments of NApp_JSCall(), and the texts in them, which stay there.
bool isCallable(const char* function, const char* const* arguments, int argumentCount);
std::vector<helper::Text> textsOf(const char* const* arguments, int argumentCount);

// What has been written so far; valid until the next write.
std::string_view itemsOf(const HDataWriter& writer);

}  // namespace bridge
