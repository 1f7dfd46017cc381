#include "simulator/page/page.h"

#include <cstdio>

#include "base/print_line.h"
#include "simulator/device/journal.h"

namespace tavsim {

bridge::MethodReply Page::callMethod(std::string_view call, HDataWriter* answer) {
    bridge::MethodReply reply = bridge::callMethod(m_methods, call, answer);
    if (isAlive()) {
        tellCall(call, reply);
    }
    return reply;
}

void Page::tellCall(std::string_view call, const bridge::MethodReply& reply) {
    helper::ItemReader items(call);
    JournalEntry entry("page", "call", "method", items.readString());
    std::vector<helper::Text> arguments;
    for (int left = items.readInt(); left > 0 && items.isSuccessful(); --left) {
        arguments.push_back(items.readText());
    }
    entry.texts("arguments", arguments);
    entry.outcome((reply.isException ? "exception: " : "") + reply.text);
}

void Page::tellConsole(const std::string& level, const std::string& text) {
    base::printLine(level == "log" ? stdout : stderr, "[page] " + text);
    writeEntry("page", "console", "level", level, "text", text);
}

void Page::tellProblem(const std::string& problem) {
    base::printLine(stderr, problem);
    writeEntry("page", "console", "level", "error", "text", problem);
}

void Page::endWith(const std::string& reason) {
    tellProblem(m_name + ": stopped: " + reason);
    end();
}

}  // namespace tavsim
