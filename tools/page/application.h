// A folder with a page and its plug-in, as its appinfo.json describes it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace page {

struct Application {
    std::string main = "index.html";  // the page; like the program, a file in the folder
    std::string program;
    std::vector<std::string> hosts;  // origins that the page may use besides its own
};

// Nothing, with one line of what is wrong and what to do, where it lacks something.
std::optional<Application> readApplication(const std::string& folder, std::string* error);

// The hosts that an appinfo.json in the folder names, if there is one. False, with a line, where it
// cannot be read.
bool readHosts(const std::string& folder, std::vector<std::string>* hosts, std::string* error);

}  // namespace page
