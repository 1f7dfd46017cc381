// Lines of our own on the application's standard output and standard error.
#ifndef TAV_BASE_PRINT_LINE_H
#define TAV_BASE_PRINT_LINE_H

#include <cstdio>
#include <string>

namespace base {

// Whether the stream leads where it led when the library was loaded. A program that closes its
// standard streams is given their numbers for files of its own.
bool isStreamKept(FILE* stream);

// Prints behind what the application has printed before, or drops the line where the stream is
// not kept.
void printLine(FILE* stream, const std::string& line);

// From now on the streams may lead where they lead now.
void acceptStreams();

}  // namespace base

#endif
