// Our own lines on the application's standard output and standard error.
#pragma once

#include <cstdio>
#include <string>

namespace base {

// Whether the stream still refers to the same file as when the library was loaded. A program that
// closes its standard streams gets their descriptors for files of its own, which must not get our
// lines.
bool isStreamKept(FILE* stream);

// Prints after everything that the application has printed so far. Drops the line if the stream is
// not kept.
void printLine(FILE* stream, const std::string& line);

// From now on the files that the streams refer to now are the right ones.
void acceptStreams();

}  // namespace base
