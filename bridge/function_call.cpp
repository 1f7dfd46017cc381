#include "bridge/function_call.h"

#include <algorithm>

namespace bridge {

bool isCallable(const char* function, const char* const* arguments, int argumentCount) {
    const bool hasArguments = argumentCount == 0 || (argumentCount > 0 && arguments != nullptr);
    return function != nullptr && hasArguments;
}

std::vector<helper::Text> textsOf(const char* const* arguments, int argumentCount) {
    std::vector<helper::Text> texts(static_cast<size_t>(argumentCount));
    std::transform(arguments, arguments + argumentCount, texts.begin(), [](const char* text) {
        return text != nullptr ? helper::Text(text) : std::nullopt;
    });
    return texts;
}

}  // namespace bridge
