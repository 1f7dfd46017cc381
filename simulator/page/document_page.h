// A page in the user's browser.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bridge/browser_page.h"
#include "simulator/page/page.h"

namespace tavsim {

class DocumentPage : public Page {
public:
    using Page::Page;
    ~DocumentPage() override { DocumentPage::end(); }

    // False, with errno, when nobody serves the page at the socket's path.
    bool connect(const std::string& socket);
    void end() override;
    bool isAlive() const override { return m_connection != nullptr && !m_connection->isGone(); }

    void setMethods(const bridge::NativeMethods& methods) override;
    std::optional<bridge::MethodReply> call(const std::string& method,
                                            const std::vector<std::string>& arguments) override;
    bool callFunction(const std::string& name, const std::vector<helper::Text>& arguments) override;

    // The caller keeps the page until these return: a native method may end it.
    void serve() override;
    void send() override;
    pollfd toPoll() const override;

private:
    std::shared_ptr<bridge::BrowserPage> m_connection;
};

}  // namespace tavsim
