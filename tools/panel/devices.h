// The devices that a browser can choose from.
#pragma once

#include <functional>
#include <set>
#include <string>

#include "tools/web/source.h"

namespace panel {

class Devices {
public:
    // Those of this user, or only the one with that root folder where there is one. Looks for them
    // every second, and calls the function when they have changed.
    Devices(std::string only, std::function<void()> onChange);

    // As JSON, in a message to the browser.
    const std::string& message() const { return m_message; }

    bool has(const std::string& root) const;

private:
    void look();

    std::string m_only;
    std::function<void()> m_onChange;
    std::string m_message;
    std::set<std::string> m_roots;
    web::Source m_looks;
};

}  // namespace panel
