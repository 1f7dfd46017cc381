// Commands for the web page whose plug-in the application is.
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/control/command.h"
#include "simulator/page/plugin.h"

namespace tavsim {
namespace {

std::vector<std::string> contents(std::string_view words) {
    std::vector<std::string> all;
    while (!words.empty()) {
        all.push_back(contentOf(takeWord(&words)).value_or(""));
    }
    return all;
}

// The text as it is, but in one line.
CommandResult exception(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return failed("page call: " + text);
}

CommandResult pageCall(Words words) {
    const std::shared_ptr<Page> page = livingPage();
    // The application lists the methods, and may end the page as it does.
    const auto methods = page != nullptr ? page->methods() : std::vector<std::string>();
    if (page == nullptr || !page->isAlive()) {
        return failed("page call: no page runs");
    }
    std::vector<std::string> arguments = contents(words.rest());
    const std::string method = arguments.front();
    arguments.erase(arguments.begin());
    if (std::ranges::find(methods, method) == methods.end()) {
        return failed("page call: no method " + base::quoted(method) +
                      base::suggestion(method, methods));
    }
    const std::optional<bridge::MethodReply> reply = page->call(method, arguments);
    if (!reply) {
        CommandResult result = failed("page call: the page's script is in a call itself");
        result.isEarly = true;
        return result;
    }
    return reply->isException ? exception(reply->text) : CommandResult{{}, reply->text + "\n"};
}

constexpr Command kPageRows[] = {
    {"page call", "METHOD [ARGUMENT...]",
     "Call a method of the application as its page does, and show the reply.", pageCall},
};

}  // namespace

constinit const std::span<const Command> kPageCommands = kPageRows;

}  // namespace tavsim
