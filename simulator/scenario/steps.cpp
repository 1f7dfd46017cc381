// Reads the steps of a scenario: the condition and the action.
#include <algorithm>
#include <filesystem>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "simulator/control/commands.h"
#include "simulator/language/vocabulary.h"
#include "simulator/language/words.h"
#include "simulator/scenario/reader.h"

namespace tavsim {
namespace {

constexpr Milliseconds kDefaultWait = 10000;
constexpr int kHighestStatus = 255;

constexpr char kWhenUsage[] =
    "a step is [at TIME:|after TIME:|when MEMBER=GLOB… [within TIME]:] ACTION, with a colon "
    "behind its time";
constexpr char kExpectUsage[] =
    "usage: expect [within TIME|never [for TIME]] MEMBER=GLOB…, or expect [within TIME] all, or "
    "expect state NAME GLOB, or "
    "expect picture FILE [TOLERANCE], or expect ended [within TIME], or expect output GLOB, or "
    "expect status N";
constexpr char kAll[] = "all";
constexpr size_t kMostBlockLines = 100;
constexpr char kJudgedAtEnd[] = "holds for the whole run, so no time stands in front of it";

const std::vector<std::string> kStatementNames = {
    "include", "table", "device", "program", "page", "limit", "at", "after", "when", "expect"};
const std::vector<std::string> kExpectNames = {"within",  "never", "all",    "state",
                                               "picture", "ended", "output", "status"};

// Takes the part before the colon off, if the text begins with a time or a condition. False when
// the colon is missing.
bool takeWhen(std::string_view* text, std::string* when) {
    std::string_view rest = *text;
    const std::string_view first = takeWord(&rest);
    const std::string_view name = first.substr(0, first.find(':'));
    if (name != "at" && name != "after" && name != "when") {
        return true;
    }
    if (name != first) {
        return false;
    }
    while (!rest.empty()) {
        const std::string_view word = takeWord(&rest);
        if (word.ends_with(':')) {
            const char* const end = word.data() + word.size() - 1;
            *when = std::string(text->data(), static_cast<size_t>(end - text->data()));
            *text = rest;
            return !rest.empty();
        }
    }
    return false;
}

std::optional<Milliseconds> takeTime(std::string_view* text, std::string* error) {
    const std::string_view word = takeWord(text);
    const std::optional<Milliseconds> time = readTime(word);
    if (!time) {
        *error = base::quoted(word) + ": " + kTimeUsage;
    }
    return time;
}

std::optional<Turn> readTurn(std::string_view when, std::string* error) {
    if (when.empty()) {
        return AfterTime{0};
    }
    const std::string_view word = takeWord(&when);
    if (word == "when") {
        std::optional<Awaited> awaited = readAwaited(when, error);
        if (awaited && awaited->count) {
            *error = "count belongs to expect: expect [within TIME] count=N MEMBER=GLOB…";
            return std::nullopt;
        }
        return awaited ? std::optional<Turn>(WhenEntry{std::move(awaited->pattern),
                                                       awaited->within.value_or(kDefaultWait)})
                       : std::nullopt;
    }
    const std::optional<Milliseconds> time = takeTime(&when, error);
    if (!time || !when.empty()) {
        *error = error->empty() ? kWhenUsage : *error;
        return std::nullopt;
    }
    return word == "at" ? Turn(AtTime{*time}) : Turn(AfterTime{*time});
}

std::optional<Action> readEntry(std::string_view text, Milliseconds within, std::string* error) {
    if (text == kAll) {
        return ExpectEntries{{}, within, {}};
    }
    std::optional<Awaited> awaited = readAwaited(text, error);
    if (awaited && awaited->within) {
        *error = "the limit comes first: expect within TIME MEMBER=GLOB…";
        return std::nullopt;
    }
    if (awaited && awaited->count) {
        return ExpectCount{std::move(awaited->pattern), std::move(*awaited->count), within};
    }
    return awaited ? std::optional<Action>(ExpectEntries{{std::move(awaited->pattern)}, within, {}})
                   : std::nullopt;
}

std::optional<Action> readWithin(std::string_view text, std::string* error) {
    const std::optional<Milliseconds> within = takeTime(&text, error);
    return within ? readEntry(text, *within, error) : std::nullopt;
}

std::optional<Action> readNever(std::string_view text, std::string* error) {
    ExpectNoEntry expected;
    std::string_view rest = text;
    if (takeWord(&rest) == "for") {
        expected.time = takeTime(&rest, error);
        if (!expected.time) {
            return std::nullopt;
        }
        text = rest;
    }
    std::optional<Pattern> pattern = readPattern(text, error);
    if (!pattern) {
        return std::nullopt;
    }
    expected.pattern = std::move(*pattern);
    return expected;
}

std::optional<Action> readState(std::string_view text, std::string* error) {
    const std::optional<std::string> name = contentOf(takeWord(&text));
    const bool hasBoth = !text.empty();
    const std::optional<std::string> glob = contentOf(takeWord(&text));
    if (!name || !hasBoth || !glob || !text.empty()) {
        *error = "usage: expect state NAME GLOB; what has blanks stands in double quotes";
        return std::nullopt;
    }
    *error = whyNoState(*name);
    return error->empty() ? std::optional<Action>(ExpectState{*name, *glob}) : std::nullopt;
}

std::optional<Action> readEnd(std::string_view text, std::string* error) {
    if (text.empty()) {
        return ExpectEnd{kDefaultWait};
    }
    const bool isLimited = takeWord(&text) == "within";
    const std::optional<Milliseconds> within = takeTime(&text, error);
    if (!isLimited || !within || !text.empty()) {
        *error = "usage: expect ended [within TIME]";
        return std::nullopt;
    }
    return ExpectEnd{*within};
}

std::optional<Action> readCommand(std::string_view text, const Line& line, std::string* error) {
    // Absolute, because the application may change its working directory before the command runs.
    std::error_code problem;
    CommandLine command = {std::string(text), std::filesystem::current_path(problem) / line.folder};
    *error = whyNoStep(command.line, line.folder, kStatementNames);
    return error->empty() ? std::optional<Action>(std::move(command)) : std::nullopt;
}

// Reads the text after `expect`.
std::optional<Action> readExpectation(std::string_view text, const Line& line, std::string* error) {
    std::string_view rest = text;
    const std::string_view word = takeWord(&rest);
    if (word == "within") {
        return readWithin(rest, error);
    }
    if (word == "never") {
        return readNever(rest, error);
    }
    if (word == "state") {
        return readState(rest, error);
    }
    if (word == "ended") {
        return readEnd(rest, error);
    }
    if (word == "picture") {
        return readCommand(text, line, error);
    }
    if (text == kAll || word == "near" || word.find_first_of("=<>") != std::string_view::npos) {
        return readEntry(text, 0, error);
    }
    const std::string meant = base::suggestion(word, kExpectNames);
    *error = meant.empty() ? kExpectUsage : "expect: no " + base::quoted(word) + meant;
    return std::nullopt;
}

void readOutput(std::string_view text, const Line& line, Scenario* scenario, std::string* error) {
    const std::optional<std::string> glob = contentOf(takeWord(&text));
    if (!glob || glob->empty() || !text.empty()) {
        *error = "usage: expect output GLOB; one with blanks stands in double quotes";
        return;
    }
    scenario->output.push_back({line.place, std::string(line.text), *glob});
}

void readStatus(std::string_view text, const Line& line, Scenario* scenario, std::string* error) {
    int status = 0;
    if (!Words(text).areNumbers(&status) || status < 0 || status > kHighestStatus) {
        *error = "usage: expect status N, from 0 to 255";
    } else if (scenario->status) {
        *error = "expect status: was given already";
    } else {
        scenario->status = {line.place, status};
    }
}

}  // namespace

void readStep(const Line& line, Scenario* scenario, std::string* error) {
    std::string_view text = line.text;
    std::string when;
    if (!takeWhen(&text, &when)) {
        *error = kWhenUsage;
        return;
    }
    std::optional<Turn> turn = readTurn(when, error);
    if (!turn) {
        return;
    }
    std::string_view rest = text;
    const bool isExpectation = takeWord(&rest) == "expect";
    std::string_view expected = rest;
    const std::string_view kind = takeWord(&expected);
    if (isExpectation && (kind == "output" || kind == "status")) {
        if (!when.empty()) {
            *error = "expect " + std::string(kind) + " " + kJudgedAtEnd;
        } else if (kind == "output") {
            readOutput(expected, line, scenario, error);
        } else {
            readStatus(expected, line, scenario, error);
        }
        return;
    }
    std::optional<Action> action =
        isExpectation ? readExpectation(rest, line, error) : readCommand(text, line, error);
    if (action) {
        scenario->steps.push_back(
            {line.place, std::string(line.text), std::move(*turn), std::move(*action)});
    }
}

bool beginsBlock(const Scenario& scenario) {
    const auto* block = scenario.steps.empty()
                            ? nullptr
                            : std::get_if<ExpectEntries>(&scenario.steps.back().action);
    return block != nullptr && block->patterns.empty();
}

void readBlockLine(const Line& line, Scenario* scenario, std::string* error) {
    auto& block = std::get<ExpectEntries>(scenario->steps.back().action);
    std::optional<Pattern> pattern = readPattern(line.text, error);
    if (block.patterns.size() == kMostBlockLines) {
        *error = "more than " + std::to_string(kMostBlockLines) + " lines in one block";
    } else if (pattern) {
        block.patterns.push_back(std::move(*pattern));
        block.lines.push_back({line.place, std::string(line.text)});
    }
}

bool expectsSomething(const Scenario& scenario) {
    const auto isExpectation = [](const Step& step) {
        const auto* command = std::get_if<CommandLine>(&step.action);
        return command == nullptr || command->line.starts_with("picture ") ||
               std::holds_alternative<WhenEntry>(step.turn);
    };
    return !scenario.output.empty() || scenario.status ||
           std::any_of(scenario.steps.begin(), scenario.steps.end(), isExpectation);
}

}  // namespace tavsim
