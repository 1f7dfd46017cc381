#include "page_server.h"

#include <utility>

namespace page {

PageServer::PageServer(const ServerOptions& options, ServerEvents events)
    : m_options(options), m_events(std::move(events)) {
}

bool PageServer::start(std::string* error) {
    *error = m_options.index + ": not served yet";
    return false;
}

std::string PageServer::link() const {
    return {};
}

void PageServer::end(const std::string&, std::function<void()> onTold) {
    onTold();
}

}  // namespace page
