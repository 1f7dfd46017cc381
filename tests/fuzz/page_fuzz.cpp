// What the server of a page in the browser sends. Input: messages, each a byte for its kind, one
// for the length of its content, and the content.
#include <sys/socket.h>

#include <algorithm>
#include <vector>

#include "bridge/browser_page.h"
#include "fuzz.h"
#include "js/handlers.h"

using bridge::MessageKind;
using tavfuzz::expect;

namespace {

constexpr int kMostRounds = 100;  // of 64 messages, more than an input can hold

std::shared_ptr<bridge::BrowserPage> g_page;

// Sends the messages. Returns the numbers of the questions in them.
std::vector<int> sendAll(std::string_view input, base::MessageSocket* server) {
    std::vector<int> questions;
    while (input.size() >= 2) {
        const auto kind = static_cast<std::uint8_t>(input[0]);
        const std::string_view content = input.substr(2, static_cast<unsigned char>(input[1]));
        input.remove_prefix(2 + content.size());
        server->queue(kind, content);
        helper::ItemReader items(content);
        const int number = items.readInt();
        const bool isQuestion = kind == static_cast<std::uint8_t>(MessageKind::MethodList) ||
                                kind == static_cast<std::uint8_t>(MessageKind::MethodCall);
        if (isQuestion && items.isSuccessful()) {
            questions.push_back(number);
        }
    }
    server->sendNow();
    return questions;
}

std::vector<int> takeAnswers(base::MessageSocket* server) {
    std::vector<int> answers;
    while (const std::optional<base::Message> message = server->receiveNow()) {
        if (message->kind == static_cast<std::uint8_t>(MessageKind::Answer)) {
            answers.push_back(helper::ItemReader(message->content).readInt());
        }
    }
    return answers;
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    tavfuzz::startDevice();
    TAV_RegisterJSHandler(
        "echo", [](TAV_JSParameters* call) { TAV_JSReply(call, TAV_GetJSParamString(call, 0)); });
    TAV_RegisterJSHandler("end", [](TAV_JSParameters* /*call*/) { g_page->end(); });
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    int ends[2];
    expect(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "there is a socket");
    base::MessageSocket server(ends[0]);
    int told = 0;
    g_page = std::make_shared<bridge::BrowserPage>(
        ends[1], bridge::BrowserPage::Events{[](std::string_view, const bridge::MethodReply&) {},
                                             [](const std::string&, const std::string&) {},
                                             [](const std::string&) {},
                                             [&](const std::string&) { ++told; }});
    g_page->setMethods({tav::jsGetMethodsCallback, tav::jsMethodCallback});
    const std::vector<int> questions = sendAll(tavfuzz::textOf(bytes, size), &server);
    for (int round = 0; round < kMostRounds; ++round) {
        g_page->serve();
    }
    const std::vector<int> answers = takeAnswers(&server);
    expect(answers.size() <= questions.size() &&
               std::equal(answers.begin(), answers.end(), questions.begin()),
           "each question has one answer");
    expect(g_page->isGone() || answers.size() == questions.size(), "no question stays open");
    expect(told <= 1 && (told == 0 || g_page->isGone()), "it is told once that the page is gone");
    expect(g_page->callFunction("note", {}) != g_page->isGone(),
           "only a page that is there is called");
    g_page.reset();
    return 0;
}
