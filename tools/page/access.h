// What a request of the page may do.
#pragma once

#include <string>
#include <vector>

#include "tools/web/server.h"

namespace page {

// The value of the header Content-Security-Policy: the page's own files, and all that it can load
// from these origins.
std::string contentPolicy(const std::vector<std::string>& origins);

// Whether the request is from the page itself, or from the user who opens it.
bool isOfOwnSite(const web::Request& request);

// Whether the browser shows the answer as a document.
bool isNavigation(const web::Request& request);

// Whether the cookie is one of the request's.
bool hasCookie(const web::Request& request, const std::string& cookie);

// The number of the document that asks; 0 where there is none.
int documentOf(const web::Request& request);

}  // namespace page
