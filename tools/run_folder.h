// The folders of one run: the device's root, and what goes when the run ends.
#ifndef TAV_TOOLS_RUN_FOLDER_H
#define TAV_TOOLS_RUN_FOLDER_H

#include <sys/types.h>

#include <set>
#include <string>

namespace tools {

class RunFolder {
public:
    // Claims the root folder that is asked for, or a fresh one when that is empty.
    explicit RunFolder(const std::string& wanted);
    ~RunFolder() { release(); }
    RunFolder(const RunFolder&) = delete;
    RunFolder& operator=(const RunFolder&) = delete;

    // Why there is no folder; empty when there is one.
    const std::string& problem() const { return m_problem; }

    const std::string& root() const { return m_root; }

    // A folder for what only this run needs; empty when none can be made.
    const std::string& freshFolder();

    // Whether it is certain that no program was on the device.
    bool isUntouched() const;

    // The processes that are on it, or on any fresh device now.
    std::set<pid_t> programs() const;

    // Removes what is fresh, but not under a program that outlives the run.
    void release();

private:
    std::string m_root;
    std::string m_fresh;
    std::string m_problem;
};

}  // namespace tools

#endif
