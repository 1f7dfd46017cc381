// Plays a scenario on the device of this process.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "simulator/scenario/entries.h"
#include "simulator/scenario/scenario.h"
#include "simulator/scenario/verdict.h"

namespace tavsim {

// Reads the scenario, with a row of its table, and starts it, on the device's queue. The verdict is
// written into the root folder. False, with a line in `error`, on failure. A step that fails ends
// the program with status 3, and standard error says why. Only the first device of a run plays the
// scenario.
bool startScenario(const std::string& file, const std::string& row, std::string* error);

// Called when the application has ended: the remaining steps fail, on standard error and in the
// verdict.
void stopScenario();

// Goes from step to step. A step's condition and its action are a phase each; a phase that has to
// wait queues a wake-up. A command can make the application handle events and so re-enter this
// function. So the player has advanced to the next step before it runs a step's command.
class Player {
public:
    explicit Player(Scenario scenario) : m_scenario(std::move(scenario)) {}

    bool start(std::string* error);
    void applicationEnded();

    void wake(int phase);
    void newEntry(const std::string& line);
    void askToQuit();

private:
    void proceed();
    bool isAllowed();
    void wait();
    void noteWaiting();
    void finish();
    void fail(const Step& failing, const std::string& reason, const Pattern* pattern = nullptr);

    // Each does what can be done now, and returns false while it has to wait. When a step is done,
    // the next one begins.
    bool isDone(const Step& step);
    bool isItsTurn(const AtTime& turn) { return !m_isStarting && hasPassed(turn.time); }
    bool isItsTurn(const AfterTime& turn) { return hasPassed(after(m_since, turn.time)); }
    bool isItsTurn(const WhenEntry& turn) { return haveCome({&turn.pattern, 1}, turn.within, {}); }
    bool isDone(const CommandLine& command);
    bool isDone(const ExpectEntries& expected);
    bool isDone(const ExpectCount& expected);
    bool isDone(const ExpectNoEntry& expected);
    bool isDone(const ExpectState& expected);
    bool isDone(const ExpectEnd& expected);

    bool hasPassed(Milliseconds moment);
    bool haveCome(std::span<const Pattern> patterns, Milliseconds within,
                  const std::vector<BlockLine>& lines);
    void failForMissing(std::span<const Pattern> patterns, const std::vector<BlockLine>& lines,
                        std::string reason);
    Step failing(const std::vector<BlockLine>& lines, size_t pattern) const;
    void startPhase();
    void startNextStep();
    void wakeAt(Milliseconds moment) const;

    const Step& step() const { return m_scenario.steps[m_current]; }

    // Not in a fork of the application.
    bool isOver() const { return m_hasFailed || m_owner != getpid(); }

    Scenario m_scenario;
    Entries m_entries;
    VerdictFile m_verdict;
    pid_t m_owner = getpid();
    bool m_isStarting = false;
    bool m_isFinished = false;
    bool m_hasFailed = false;
    bool m_hasEnded = false;  // the application

    size_t m_current = 0;     // step
    bool m_isActing = false;  // its turn has come
    bool m_isNoted = false;   // the verdict says that it waits
    bool m_isLate = false;    // it has failed, but its entry may still come, too late

    int m_phase = 0;
    Milliseconds m_since = 0;       // when the phase began
    Milliseconds m_busyUntil = 0;   // the time when the last command is done
    bool m_isWakeUpQueued = false;  // for the phase
};

}  // namespace tavsim
