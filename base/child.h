// Starting other processes.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace base {

// Forks. The child calls the function and ends when that returns; it is killed when this process
// ends. Gives its number; a negative one, with errno, when there is no child.
pid_t startChild(const std::function<void()>& run);

// The same for a child whose function turns it into another program. There is no child, and errno
// is what the function left, when it returns because it could not.
pid_t startProgram(const std::function<void()>& become);

// In a child: what its standard input, output and error are from now on. Negative ones stay.
void setStandardStreams(int input, int output, int error);

// The words as execve() takes them. They must outlive the result.
std::vector<char*> pointersTo(const std::vector<std::string>& words);

// The words with blanks between them.
std::string joined(const std::vector<std::string>& words);

}  // namespace base
