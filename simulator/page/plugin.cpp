#include "simulator/page/plugin.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <vector>

#include "base/file.h"
#include "base/print_line.h"
#include "bridge/browser_page.h"
#include "bridge/page_file.h"
#include "platform/napp.h"
#include "simulator/device/edge.h"
#include "simulator/device/journal.h"
#include "simulator/device/refusals.h"
#include "simulator/device/root.h"
#include "simulator/device/running.h"
#include "simulator/device/trusted_folder.h"
#include "simulator/page/script_page.h"
#include "simulator/time/clock.h"

namespace tavsim {
namespace {

constexpr size_t kLargestScript = 16 << 20;

// A page in the user's browser, which speaks unprompted.
class DocumentPage : public Page {
public:
    using Page::Page;
    ~DocumentPage() override { DocumentPage::end(); }

    // False, with errno, when nobody serves the page at the socket's path.
    bool connect(const std::string& socket) {
        m_connection = bridge::BrowserPage::connect(
            socket, {tellCall, tellConsole, tellProblem,
                     [this](const std::string& reason) { endWith(reason); }});
        return m_connection != nullptr;
    }

    void end() override {
        if (m_connection != nullptr) {
            m_connection->end();
        }
    }

    bool isAlive() const override { return m_connection != nullptr && !m_connection->isGone(); }

    void setMethods(const bridge::NativeMethods& methods) override {
        Page::setMethods(methods);
        m_connection->setMethods(methods);
    }

    std::optional<bridge::MethodReply> call(const std::string& method,
                                            const std::vector<std::string>& arguments) override {
        HDataWriter unused;
        return callMethod(bridge::callItems(method, {arguments.begin(), arguments.end()}), &unused);
    }

    bool callFunction(const std::string& name,
                      const std::vector<helper::Text>& arguments) override {
        return m_connection->callFunction(name, arguments);
    }

    void serve() override { m_connection->serve(); }
    void send() override { m_connection->send(); }
    pollfd toPoll() const override {
        return {m_connection->socket(), m_connection->pollEvents(), 0};
    }

private:
    std::shared_ptr<bridge::BrowserPage> m_connection;
};

// The host's state of the plug-in.
struct Plugin {
    std::string pageFile;
    bool isConnected = false;
    std::shared_ptr<Page> page;
};

Plugin& plugin() {
    // Never destroyed, because the device ends the page after static objects are destroyed.
    static Plugin& instance = *new Plugin;
    return instance;
}

bool fails(const std::string& name, const char* what) {
    base::printLine(stderr, name + what + std::strerror(errno));
    return false;
}

bool openDocument(const std::string& name) {
    const auto page = std::make_shared<DocumentPage>(name);
    if (!page->connect(rootFolder() + kPageSocket)) {
        return fails(name, ": nobody serves the page (`tavsim run --page` does): ");
    }
    plugin().page = page;
    return true;
}

// If the script cannot be read, there is no page, but the plug-in is not refused.
bool openScript(const std::string& pageFile, const std::string& name) {
    std::string error;
    const std::optional<std::string> source = base::readFile(pageFile, kLargestScript, &error);
    if (!source) {
        base::printLine(stderr, error);
        return true;
    }
    const auto page = std::make_shared<ScriptPage>(name);
    if (!page->start(*source)) {
        return fails(name, ": cannot be run: ");
    }
    plugin().page = page;
    return true;
}

// False, with a line on standard error, when the page cannot be reached or started.
bool openPage(const std::string& pageFile) {
    const std::string name = std::filesystem::path(pageFile).filename();
    return bridge::isDocument(pageFile) ? openDocument(name) : openScript(pageFile, name);
}

bool connect(NApp_MethodListCallback methodList, NApp_MethodCallback methodCall) {
    const bool accepts = hostAccepts("bridge") && running().plugin;
    if (!accepts || methodList == nullptr || methodCall == nullptr) {
        return false;
    }
    const bool needsPage = !plugin().isConnected && !plugin().pageFile.empty();
    if (needsPage && !openPage(plugin().pageFile)) {
        return false;
    }
    plugin().isConnected = true;
    if (plugin().page != nullptr) {
        plugin().page->setMethods({methodList, methodCall});
    }
    return true;
}

bool callPage(const char* function, const char* const* arguments, int argumentCount) {
    if (!hostAccepts("bridge") || !plugin().isConnected ||
        !bridge::isCallable(function, arguments, argumentCount)) {
        return false;
    }
    if (plugin().pageFile.empty()) {
        return true;
    }
    const std::shared_ptr<Page> page = livingPage();
    return page != nullptr &&
           page->callFunction(function, bridge::textsOf(arguments, argumentCount));
}

}  // namespace

bool startPage(const std::string& pageFile, std::string* error) {
    stopPage();
    plugin().pageFile = pageFile;
    *error = isTimeVirtual() && !isTimePaced() ? bridge::whyNotInVirtualTime(pageFile) : "";
    return error->empty();
}

void stopPage() {
    if (plugin().page != nullptr) {
        plugin().page->end();
    }
    plugin() = {};
}

std::shared_ptr<Page> livingPage() {
    const std::shared_ptr<Page>& page = plugin().page;
    return page != nullptr && page->isAlive() ? page : nullptr;
}

}  // namespace tavsim

bool NApp_RegisterKiteHandlers(NApp_MethodListCallback methodList,
                               NApp_MethodCallback methodCall) try {
    const bool accepts = tavsim::connect(methodList, methodCall);
    tavsim::JournalEntry("host", __func__).outcome(tavsim::acceptance(accepts));
    return accepts;
} catch (...) {
    return tavsim::refused(false);
}

bool NApp_JSCall(const char* functionName, const char* const* arguments, int argumentCount) try {
    const bool accepts = tavsim::callPage(functionName, arguments, argumentCount);
    tavsim::JournalEntry entry("host", __func__, "function", functionName);
    if (accepts) {
        entry.texts("arguments", bridge::textsOf(arguments, argumentCount));
    }
    entry.outcome(tavsim::acceptance(accepts));
    return accepts;
} catch (...) {
    return tavsim::refused(false);
}
