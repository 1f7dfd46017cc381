// The folders of one run: the device's root, and temporary ones.
#pragma once

#include <sys/types.h>

#include <set>
#include <string>

namespace tools {

class RunFolder {
public:
    // Claims the given root folder, or a fresh one when it is empty.
    explicit RunFolder(const std::string& wanted);
    ~RunFolder() { release(); }
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    // Why there is no folder; empty when there is one.
    const std::string& problem() const { return m_problem; }

    const std::string& root() const { return m_root; }

    // A temporary folder of this run; empty when none can be created.
    const std::string& freshFolder();

    // Whether certainly no program was on the device.
    bool isUntouched() const;

    // The processes that are now on this device, or on any fresh one.
    std::set<pid_t> programs() const;

    // Removes the fresh folders, unless a program outlives the run and still uses them.
    void release();

private:
    std::string m_root;
    std::string m_fresh;
    std::string m_problem;
};

}  // namespace tools
