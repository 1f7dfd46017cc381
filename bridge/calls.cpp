#include "bridge/calls.h"

#include <algorithm>

namespace bridge {
namespace {

constexpr char kNotRead[] = "The application could not read the call";

}  // namespace

std::vector<std::string> namesOf(const NativeMethods& methods) {
    HDataWriter writer;
    methods.list(&writer);
    helper::ItemReader list(itemsOf(writer));
    std::vector<std::string> names;
    for (int left = list.readInt(); left > 0 && list.isSuccessful(); --left) {
        names.push_back(list.readString());
    }
    return names;
}

std::string callItems(std::string_view name, const std::vector<helper::Text>& arguments) {
    helper::ItemWriter items;
    items.writeText(name);
    items.writeInt(static_cast<int32_t>(arguments.size()));
    for (const helper::Text& argument : arguments) {
        items.writeText(argument);
    }
    return items.message();
}

MethodReply callMethod(const NativeMethods& methods, std::string_view call, HDataWriter* answer) {
    HDataReader reader(call.data(), call.size());
    methods.call(&reader, answer);
    helper::ItemReader items(itemsOf(*answer));
    MethodReply reply;
    reply.isException = items.readBool();
    reply.text = items.readString();
    return items.isSuccessful() ? reply : MethodReply{true, kNotRead};
}

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

std::string_view itemsOf(const HDataWriter& writer) {
    return {static_cast<const char*>(writer.bytes()), writer.size()};
}

}  // namespace bridge
