#include "simulator/page/document_page.h"

#include <utility>

namespace tavsim {

bool DocumentPage::connect(const std::string& socket) {
    m_connection = bridge::BrowserPage::connect(
        socket, {tellCall, tellConsole, tellProblem,
                 [this](const std::string& reason) { endWith(reason); }});
    return m_connection != nullptr;
}

void DocumentPage::end() {
    if (m_connection != nullptr) {
        m_connection->end();
    }
}

void DocumentPage::setMethods(const bridge::NativeMethods& methods) {
    Page::setMethods(methods);
    m_connection->setMethods(methods);
}

std::optional<bridge::MethodReply> DocumentPage::call(const std::string& method,
                                                      const std::vector<std::string>& arguments) {
    HDataWriter unused;
    return callMethod(bridge::callItems(method, {arguments.begin(), arguments.end()}), &unused);
}

bool DocumentPage::callFunction(const std::string& name,
                                const std::vector<helper::Text>& arguments) {
    return m_connection->callFunction(name, arguments);
}

void DocumentPage::serve() {
    m_connection->serve();
}

void DocumentPage::send() {
    m_connection->send();
}

pollfd DocumentPage::toPoll() const {
    return {m_connection->socket(), m_connection->pollEvents(), 0};
}

}  // namespace tavsim
