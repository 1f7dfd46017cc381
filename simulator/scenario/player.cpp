#include "simulator/scenario/player.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "base/json/text.h"
#include "base/print_line.h"
#include "screen/frames.h"
#include "simulator/control/commands.h"
#include "simulator/device/claim.h"
#include "simulator/device/journal.h"
#include "simulator/device/root.h"
#include "simulator/language/explanation.h"
#include "simulator/scenario/failure.h"
#include "simulator/scenario/reader.h"
#include "simulator/time/queue.h"

namespace fs = std::filesystem;

namespace tavsim {
namespace {

constexpr int kFailed = 3;
constexpr Milliseconds kUntilAskedAgain = 10;
constexpr char kWakeUp[] = "scenario";
constexpr char kNoSuchEntry[] = "the journal has no such entry";
constexpr Milliseconds kVirtualPatience = 10000;
constexpr Milliseconds kRealPatience = 1000;

// Never destroyed, because the device ends after static objects are destroyed.
std::unique_ptr<Player>& player() {
    static auto& instance = *new std::unique_ptr<Player>;
    return instance;
}

// For messages: the path relative to the current folder, if the file is inside of it.
std::string shownPath(const std::string& file) {
    std::error_code problem;
    const std::string folder = fs::current_path(problem).string() + "/";
    return file.starts_with(folder) ? file.substr(folder.size()) : file;
}

bool looksAtShown(const Step& step) {
    const auto* command = std::get_if<CommandLine>(&step.action);
    return command != nullptr && looksAtScreen(command->line);
}

// How long an entry is still waited for that has not come in time, only to tell of it.
Milliseconds patience(Milliseconds within) {
    return isTimeVirtual() ? std::max(within, kVirtualPatience) : kRealPatience;
}

bool wasPlayed() {
    return readVerdict(rootFolder()).outcome != Outcome::Unplayed &&
           isClaimed(rootFolder(), kRunClaim);
}

}  // namespace

bool Player::start(std::string* error) {
    if (!m_verdict.open(rootFolder())) {
        *error = rootFolder() + ": the scenario's verdict cannot be written there";
        return false;
    }
    if (m_scenario.steps.empty()) {
        m_verdict.note(Outcome::Waiting);
    } else {
        noteWaiting();
    }
    m_isNoted = true;
    if (std::any_of(m_scenario.steps.begin(), m_scenario.steps.end(), looksAtShown)) {
        screen::watchFrames();
    }
    observeJournal([this](const std::string& line) { newEntry(line); });
    base::prepareLastingParsers();  // the last steps are looked at when the application has ended
    for (const Step& each : m_scenario.steps) {
        if (const auto* counted = std::get_if<ExpectCount>(&each.action)) {
            m_entries.count(counted->pattern);
        }
    }
    m_isStarting = true;
    proceed();
    m_isStarting = false;
    if (!m_isFinished) {
        wakeAt(now());  // when the application handles its events for the first time
    }
    return true;
}

void Player::applicationEnded() {
    observeJournal({});
    if (!isOver()) {
        m_hasEnded = true;
        proceed();
    }
}

void Player::wake(int phase) {
    if (!isOver() && phase == m_phase) {
        m_isWakeUpQueued = false;
        proceed();
    }
}

void Player::newEntry(const std::string& line) {
    if (!isOver() && m_entries.look(line)) {
        wakeAt(now());
    }
}

void Player::proceed() {
    while (isAllowed() && m_current < m_scenario.steps.size()) {
        if (!isDone(step())) {
            wait();
            return;
        }
    }
    const bool isThrough = !m_hasFailed && (m_hasEnded || hasPassed(m_busyUntil));
    if (isThrough && !std::exchange(m_isFinished, true)) {
        finish();
    }
}

// Whether no banned entry has come.
bool Player::isAllowed() {
    if (const auto& violation = m_entries.violation(); violation && !m_hasFailed && !m_isLate) {
        fail(*violation->first, "the journal has " + shownEntry(violation->second));
    }
    return !m_hasFailed;
}

void Player::wait() {
    if (m_hasFailed) {
        return;
    }
    if (m_hasEnded) {
        const std::string reason =
            "the application ended at " + std::to_string(now()) + " ms before this";
        const auto* when = m_isActing ? nullptr : std::get_if<WhenEntry>(&step().turn);
        const auto* expected = std::get_if<ExpectEntries>(&step().action);
        if (when != nullptr) {
            failForMissing({&when->pattern, 1}, {}, reason);
        } else if (m_isActing && expected != nullptr) {
            failForMissing(expected->patterns, expected->lines, reason);
        } else {
            fail(step(), reason);
        }
    } else if (!std::exchange(m_isNoted, true)) {
        noteWaiting();
    }
}

void Player::noteWaiting() {
    m_verdict.note(Outcome::Waiting, nameOf(step()));
    tellProgress(step(), "waiting");
}

// If the scenario only set the device up, the application ends by itself. If it was asked to quit,
// it is not asked again.
void Player::finish() {
    m_verdict.note(Outcome::Passed);
    if (m_isStarting || m_hasEnded) {
        return;
    }
    const auto* last = std::get_if<CommandLine>(&m_scenario.steps.back().action);
    if (last == nullptr || last->line != kQuit) {
        askToQuit();
    }
}

void Player::askToQuit() {
    if (!isOver() && !carryOut(kQuit).error.empty()) {
        schedule(after(now(), kUntilAskedAgain), kWakeUp, [] {
            if (player() != nullptr) {
                player()->askToQuit();
            }
        });
    }
}

void Player::fail(const Step& failing, const std::string& reason, const Pattern* pattern) {
    m_hasFailed = true;
    m_verdict.note(Outcome::Failed);
    tellFailure(failing, reason, pattern);
    if (!m_hasEnded) {
        std::exit(kFailed);
    }
}

bool Player::isDone(const Step& step) {
    if (!m_isActing) {
        if (!std::holds_alternative<AtTime>(step.turn) && !hasPassed(m_busyUntil)) {
            return false;
        }
        m_since = std::max(m_since, m_busyUntil);
        if (!std::visit([this](const auto& turn) { return isItsTurn(turn); }, step.turn)) {
            return false;
        }
        startPhase();
        m_isActing = true;
    }
    const bool isThrough =
        std::visit([this](const auto& action) { return isDone(action); }, step.action);
    // A command begins the next step itself, before it runs.
    if (isThrough && !std::holds_alternative<CommandLine>(step.action)) {
        startNextStep();
    }
    return isThrough;
}

bool Player::isDone(const CommandLine& command) {
    if (m_hasEnded) {
        return false;
    }
    const Step& carriedOut = step();
    startNextStep();
    const CommandResult result = carryOut(command.line, command.folder);
    if (!result.error.empty()) {
        fail(carriedOut, result.error);
    } else if (!result.output.empty()) {
        const std::string output = result.output.substr(0, result.output.rfind('\n'));
        base::printLine(stderr, nameOf(carriedOut) + ": " + output);
    }
    m_busyUntil = after(now(), result.lasts);
    return true;
}

bool Player::isDone(const ExpectEntries& expected) {
    return haveCome(expected.patterns, expected.within, expected.lines);
}

bool Player::isDone(const ExpectCount& expected) {
    const std::string count = std::to_string(m_entries.countOf(expected.pattern));
    if (meets(count, expected.count)) {
        return true;
    }
    if (hasPassed(after(m_since, expected.within))) {
        fail(step(), "such entries so far: " + count, &expected.pattern);
    }
    return false;
}

bool Player::isDone(const ExpectNoEntry& expected) {
    if (!expected.time) {
        m_entries.ban(step(), expected.pattern);
        return true;
    }
    m_entries.seekInFuture(expected.pattern);
    if (m_entries.areAllFound()) {
        fail(step(), "the journal has " + shownEntry(m_entries.lastFound()));
        return false;
    }
    return hasPassed(after(m_since, *expected.time));
}

bool Player::isDone(const ExpectState& expected) {
    const auto values = stateValues();
    const bool holds = std::any_of(values.begin(), values.end(), [&](const auto& value) {
        return value.first == expected.name && matchesGlob(value.second, expected.glob);
    });
    if (!holds) {
        fail(step(), whatIsThere(expected.name));
    }
    return holds;
}

bool Player::isDone(const ExpectEnd& expected) {
    if (m_hasEnded) {
        return true;
    }
    if (hasPassed(after(m_since, expected.within))) {
        fail(step(), "the application still runs");
    } else if (!std::exchange(m_isNoted, true)) {
        m_verdict.note(Outcome::Passed);  // so that the application may end at any time
    }
    return false;
}

bool Player::hasPassed(Milliseconds moment) {
    const bool isPast = now() >= moment;
    if (!isPast && !std::exchange(m_isWakeUpQueued, true)) {
        wakeAt(moment);
    }
    return isPast;
}

bool Player::haveCome(std::span<const Pattern> patterns, Milliseconds within,
                      const std::vector<BlockLine>& lines) {
    const Milliseconds deadline = after(m_since, within);
    m_entries.seek(patterns);
    if (m_entries.areAllFound() && m_entries.lastFoundAt() <= deadline) {
        m_entries.takeFound(step());
        return true;
    }
    if (m_entries.areAllFound()) {
        const size_t last = m_entries.patternOfLast();
        fail(failing(lines, last),
             std::string(kNoSuchEntry) + "; it has one at " + timeOf(m_entries.lastFound()) + ", " +
                 std::to_string(m_entries.lastFoundAt() - deadline) + " ms too late",
             &patterns[last]);
        return false;
    }
    if (!m_isLate && hasPassed(deadline)) {
        m_isLate = true;
        m_isWakeUpQueued = false;
    }
    if (m_isLate && (m_hasEnded || hasPassed(after(deadline, patience(within))))) {
        failForMissing(patterns, lines, kNoSuchEntry);
    }
    return false;
}

// The step, or the line of its block that is about this pattern.
Step Player::failing(const std::vector<BlockLine>& lines, size_t pattern) const {
    Step failing = step();
    if (!lines.empty()) {
        failing.place = lines[pattern].place;
        failing.text = lines[pattern].text;
    }
    return failing;
}

// Of a block, the first line without an entry fails. With what is there in place of the entry.
void Player::failForMissing(std::span<const Pattern> patterns, const std::vector<BlockLine>& lines,
                            std::string reason) {
    m_entries.seek(patterns);
    const std::vector<size_t> missing = m_entries.missing();
    if (missing.empty()) {
        fail(step(), reason);
        return;
    }
    if (missing.size() > 1) {
        reason += ", nor one for " + std::to_string(missing.size() - 1) + " more of its block";
    }
    const Step line = failing(lines, missing.front());
    const std::string known = m_entries.whyNone(patterns[missing.front()], line);
    fail(line, reason + (known.empty() ? "" : "; " + known), &patterns[missing.front()]);
}

void Player::startPhase() {
    ++m_phase;
    m_since = now();
    m_isWakeUpQueued = false;
    m_isLate = false;
    m_entries.stopSeeking();
}

void Player::startNextStep() {
    tellProgress(step(), "done");
    startPhase();
    ++m_current;
    m_isActing = false;
    m_isNoted = false;
}

void Player::wakeAt(Milliseconds moment) const {
    const auto wakeUp = [phase = m_phase] {
        if (player() != nullptr) {
            player()->wake(phase);
        }
    };
    moment > now() ? scheduleFirst(moment, kWakeUp, wakeUp) : schedule(moment, kWakeUp, wakeUp);
}

bool startScenario(const std::string& file, const std::string& row, std::string* error) {
    if (wasPlayed()) {
        return true;
    }
    std::optional<Scenario> scenario = readScenario(shownPath(file), row, error);
    if (!scenario) {
        return false;
    }
    if (!scenario->rows.empty()) {
        *error = whyNoRow(file, *scenario);
        return false;
    }
    removeVerdict(rootFolder());
    player() = std::make_unique<Player>(std::move(*scenario));
    return player()->start(error);
}

void stopScenario() {
    const std::unique_ptr<Player> ended = std::move(player());
    if (ended != nullptr) {
        ended->applicationEnded();
    }
}

}  // namespace tavsim
