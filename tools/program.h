// The program that is to run on the device, looked at before it is started.
#ifndef TAV_TOOLS_PROGRAM_H
#define TAV_TOOLS_PROGRAM_H

#include <string>

namespace tools {

// The file that is executed for a program's name, as a shell finds it. Empty, with the error number
// in `problem`, when there is none.
std::string findProgram(const std::string& name, int* problem);

// Why no device can be put in front of this program, and what to do; empty when one can. For a
// script it is its interpreter that counts.
std::string whyNoDevice(const std::string& file);

}  // namespace tools

#endif
