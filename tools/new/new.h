// `tavsim new`: the smallest complete project of an application.
#pragma once

#include <string>

namespace tools {

struct NewRequest {
    std::string folder;  // which must be empty, if it exists
    std::string name;    // of the program; empty: the folder's
    std::string id;      // of the application; empty: one of the domain example.org
};

// The exit status for the shell: 2, and nothing is left in the folder, when the project cannot be
// made.
int makeProject(const NewRequest& request);

}  // namespace tools
