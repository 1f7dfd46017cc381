// What the process holds on to.
#ifndef TAV_TESTS_RESOURCES_H
#define TAV_TESTS_RESOURCES_H

#include <filesystem>
#include <iterator>

namespace tavtest {

inline long openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                         std::filesystem::directory_iterator());
}

}  // namespace tavtest

#endif
