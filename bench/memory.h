// The memory that a process takes.
#pragma once

#include <fstream>
#include <string>

namespace tavbench {

// In KiB.
struct Memory {
    long resident = 0;
    long unshared = 0;
    long written = 0;  // by this process, so that no other one can share it
};

inline Memory memory() {
    std::ifstream file("/proc/self/smaps_rollup");
    Memory sum;
    std::string word;
    for (long value; file >> word;) {
        if (word == "Rss:" && file >> value) {
            sum.resident = value;
        } else if ((word == "Private_Clean:" || word == "Private_Dirty:") && file >> value) {
            sum.unshared += value;
            sum.written += word == "Private_Dirty:" ? value : 0;
        }
    }
    return sum;
}

}  // namespace tavbench
