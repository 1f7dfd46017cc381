#include "access.h"

#include <libsoup/soup.h>

#include <sstream>
#include <string_view>

#include "base/number.h"
#include "tools/web/security.h"

namespace page {

std::string contentPolicy(const std::vector<std::string>& origins) {
    std::string more;
    for (const std::string& origin : origins) {
        more += " " + origin;
    }
    std::string policy = "default-src 'none'; style-src 'self' 'unsafe-inline'" + more;
    for (const char* kind : {"script-src", "connect-src"}) {
        policy += std::string("; ") + kind + " 'self'" + more;
    }
    for (const char* kind : {"img-src", "media-src", "font-src"}) {
        policy += std::string("; ") + kind + " 'self' data: blob:" + more;
    }
    return policy + "; form-action 'self'; base-uri 'none'; frame-ancestors 'none'";
}

bool isOfOwnSite(const web::Request& request) {
    const std::string site = request.header("Sec-Fetch-Site");
    const bool isOpened = site == "none" && request.header("Sec-Fetch-Mode") == "navigate" &&
                          request.method() != SOUP_METHOD_POST;
    return site.empty() || site == "same-origin" || isOpened;
}

bool isNavigation(const web::Request& request) {
    const std::string destination = request.header("Sec-Fetch-Dest");
    return request.method() == SOUP_METHOD_GET &&
           (destination.empty() || destination == "document");
}

bool hasCookie(const web::Request& request, const std::string& cookie) {
    std::istringstream cookies(request.header("Cookie"));
    for (std::string each; std::getline(cookies >> std::ws, each, ';');) {
        if (web::isSameSecret(each, cookie)) {
            return true;
        }
    }
    return false;
}

int documentOf(const web::Request& request) {
    constexpr std::string_view kPage = "page=";
    const char* const query = g_uri_get_query(soup_server_message_get_uri(request.message));
    const std::string_view text = query != nullptr ? query : "";
    const bool hasPage = text.starts_with(kPage);
    return hasPage ? base::numberIn<int>(text.substr(kPage.size())).value_or(0) : 0;
}

}  // namespace page
