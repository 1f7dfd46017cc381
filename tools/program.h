// Checks the program that is to run on the device before it starts.
#pragma once

#include <string>

namespace tools {

// The file of a program's name, as a shell finds it. Empty, with the error number in `problem`,
// when there is none.
std::string findProgram(const std::string& name, int* problem);

// Why the device cannot be preloaded into this program, and what to do; empty when it can. For a
// script, its interpreter is checked.
std::string whyNoDevice(const std::string& file);

}  // namespace tools
