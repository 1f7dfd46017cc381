#include "simulator/language/usage.h"

#include <simdjson.h>

#include <algorithm>
#include <filesystem>

#include "base/json/writer.h"
#include "base/suggestion.h"
#include "input/keyboard.h"
#include "simulator/device/faults.h"
#include "simulator/device/profile.h"
#include "simulator/language/pattern.h"
#include "simulator/language/vocabulary.h"
#include "simulator/world/track.h"

namespace tavsim {
namespace {

bool isAnything(std::string_view) {
    return true;
}

bool isSomething(std::string_view word) {
    return !word.empty();
}

bool isTime(std::string_view word) {
    return readTime(word).has_value();
}

template <typename Number>
bool isNumber(std::string_view word) {
    Number number = 0;
    return Words(word).areNumbers(&number);
}

bool isCount(std::string_view word) {
    int count = 0;
    return Words(word).areNumbers(&count) && count > 0;
}

bool isDistance(std::string_view word) {
    return word.ends_with('m') && isNumber<double>(word.substr(0, word.size() - 1));
}

bool isPlace(std::string_view word) {
    const size_t comma = word.find(',');
    return comma != std::string_view::npos && isNumber<double>(word.substr(0, comma)) &&
           isNumber<double>(word.substr(comma + 1));
}

struct Range {
    double least;
    double greatest;
    const char* problem;  // with a number outside
};

constexpr Range kLatitudes = {-90, 90, "the latitude is from -90 to 90"};
constexpr Range kLongitudes = {-180, 180, "the longitude is from -180 to 180"};
constexpr Range kHeadings = {0, 360, "the heading is from 0 to 360 degrees"};
constexpr Range kSpeeds = {0.01, 10000, "the speed is from 0.01 to 10000 metres a second"};
constexpr Range kFactors = {0.001, 1000, "the factor is from 0.001 to 1000"};
constexpr Range kPaces = {1, 1000, "time is from 1 to 1000 times as fast"};
constexpr Range kAccuracies = {0, kLeastAccuracy, "the accuracy is from 0 to 100000 metres"};
constexpr Range kTolerances = {0, 255, "the tolerance is from 0 to 255"};
constexpr Range kPercents = {0, 100, "the percentage is from 0 to 100"};

template <const Range& kRange>
std::string rangeProblem(std::string_view word) {
    double number = 0;
    Words(word).takeNumbers(&number);
    return number >= kRange.least && number <= kRange.greatest ? "" : kRange.problem;
}

std::string placeProblem(std::string_view word) {
    const size_t comma = word.find(',');
    const std::string problem = rangeProblem<kLatitudes>(word.substr(0, comma));
    return problem.empty() ? rangeProblem<kLongitudes>(word.substr(comma + 1)) : problem;
}

std::string accuracyProblem(std::string_view word) {
    return rangeProblem<kAccuracies>(word.substr(0, word.size() - 1));
}

std::string uriProblem(std::string_view word) {
    return isUri(std::string(word)) ? "" : base::quoted(word) + " is no URI";
}

std::string requestProblem(std::string_view word) {
    return canBeRefused(std::string(word))
               ? ""
               : base::quoted(word) + " is no URI and no request that can be refused" +
                     base::suggestion(word, refusableRequests());
}

std::string keyProblem(std::string_view name) {
    std::string problem;
    return input::keyNamed(name, &problem) ? "" : problem;
}

std::string patternProblem(std::string_view text) {
    std::string problem;
    return readPattern(text, &problem) ? "" : problem;
}

std::string quotedProblem(std::string_view word) {
    return contentOf(word)
               ? ""
               : base::quoted(word) + ": what begins with a quote must be a JSON string";
}

std::string trackProblem(const std::string& path) {
    std::string problem;
    return readTrack(path, &problem) ? "" : problem;
}

std::string pictureProblem(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code problem;
    return folder.empty() || std::filesystem::is_directory(folder, problem)
               ? ""
               : path + ": no such folder";
}

std::string jsonProblem(std::string_view text) {
    simdjson::dom::parser parser;
    const bool isJson = parser.parse(text.data(), text.size()).error() == simdjson::SUCCESS;
    return isJson ? "" : "the value must be JSON";
}

enum class Takes {
    Word,
    QuotableWord,  // blanks belong to it in double quotes
    Rest           // blanks belong to it, but for a number that may follow
};

// A kind of word, under the name that it has in usages.
struct Kind {
    std::string_view name;
    bool (*hasForm)(std::string_view word);
    std::string (*problem)(std::string_view word) = nullptr;  // with a value of that form
    Takes takes = Takes::Word;
    std::string (*fileProblem)(const std::string& path) = nullptr;  // with the file that it names
};

constexpr Kind kKinds[] = {
    {"ACCURACYm", isDistance, accuracyProblem},
    {"ALTITUDE", isNumber<double>},
    {"ARGUMENT", isSomething, quotedProblem, Takes::QuotableWord},
    {"CODE", isNumber<int>},
    {"DEGREES", isNumber<double>, rangeProblem<kHeadings>},
    {"DOUBLE", isNumber<double>},
    {"FACTOR", isNumber<double>, rangeProblem<kFactors>},
    {"FILE", isSomething, nullptr, Takes::Rest, trackProblem},
    {"HEADING", isNumber<double>},
    {"HORIZONTAL_ACCURACY", isNumber<double>},
    {"INT", isNumber<int>},
    {"JSON", isSomething, jsonProblem, Takes::Rest},
    {"KEY", isSomething},
    {"KIND:N[+]", isFaultText},
    {"LAT,LON", isPlace, placeProblem},
    {"LATITUDE", isNumber<double>, rangeProblem<kLatitudes>},
    {"LONGITUDE", isNumber<double>, rangeProblem<kLongitudes>},
    {"METHOD", isSomething, quotedProblem, Takes::QuotableWord},
    {"METRESm", isDistance},
    {"N", isCount},
    {"NAME", isSomething, keyProblem, Takes::Rest},
    {"NAME|URI", isSomething, requestProblem},
    {"PATTERN", isSomething, patternProblem, Takes::Rest},
    {"PERCENT", isNumber<int>, rangeProblem<kPercents>},
    {"PNG", isSomething, nullptr, Takes::Rest, pictureProblem},
    {"PREFERENCE", isSomething, whyNoPreference},
    {"PROPERTY", isSomething, whyNoProperty},
    {"SEED", isNumber<int>},
    {"SPEED", isNumber<double>, rangeProblem<kSpeeds>},
    {"TEXT", isSomething, nullptr, Takes::Rest},
    {"TIME", isTime},
    {"TIMES", isNumber<double>, rangeProblem<kPaces>},
    {"TOLERANCE", isNumber<int>, rangeProblem<kTolerances>},
    {"URI", isSomething, uriProblem},
    {"VALUE", isAnything, nullptr, Takes::Rest},
    {"VELOCITY", isNumber<double>},
    {"VERTICAL_ACCURACY", isNumber<double>},
    {"X", isNumber<int>},
    {"Y", isNumber<int>},
};

const Kind* findKind(std::string_view name) {
    const Kind* found = std::ranges::find(kKinds, name, &Kind::name);
    return found != std::end(kKinds) ? found : nullptr;
}

std::string_view takeUpTo(char end, std::string_view* text) {
    const std::string_view taken = text->substr(0, text->find(end));
    text->remove_prefix(std::min(taken.size() + 1, text->size()));
    return taken;
}

class Matcher {
public:
    Matcher(Words words, const std::optional<std::string>& folder)
        : m_words(words), m_folder(folder) {}

    // Whether the next words have this form.
    bool take(std::string_view usage);

    bool isAtEnd() const { return m_words.isEmpty(); }
    const std::string& problem() const { return m_problem; }

private:
    bool begins(std::string_view usage) const;
    bool takeOne(std::string_view demand, bool isLast);
    std::string_view takeFor(const Kind& kind, bool isLast);
    std::string_view takeRest(bool isLast);
    bool isOf(const Kind& kind, std::string_view word);

    Words m_words;
    const std::optional<std::string>& m_folder;
    std::string m_problem;  // the first
};

bool Matcher::take(std::string_view usage) {
    while (!usage.empty()) {
        if (usage.starts_with('[')) {
            const std::string_view group = takeUpTo(']', &usage).substr(1);
            if (begins(group) && !take(group)) {
                return false;
            }
            takeUpTo(' ', &usage);
            continue;
        }
        std::string_view demand = takeUpTo(' ', &usage);
        const bool repeats = demand.ends_with("...");
        demand.remove_suffix(repeats ? 3 : 0);
        do {
            if (!takeOne(demand, usage.empty())) {
                return false;
            }
        } while (repeats && !m_words.isEmpty());
    }
    return true;
}

// Whether the next word can be the first of an optional part.
bool Matcher::begins(std::string_view usage) const {
    const std::string_view first = takeUpTo(' ', &usage);
    const bool isLiteral =
        std::none_of(first.begin(), first.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
    return !m_words.isEmpty() && (!isLiteral || Words(m_words).next() == first);
}

bool Matcher::takeOne(std::string_view demand, bool isLast) {
    if (const Kind* kind = findKind(demand)) {
        return isOf(*kind, takeFor(*kind, isLast));
    }
    const std::string_view word = m_words.next();
    while (!demand.empty()) {
        const std::string_view choice = takeUpTo('|', &demand);
        const Kind* kind = findKind(choice);
        if (kind != nullptr ? isOf(*kind, word) : word == choice) {
            return true;
        }
    }
    return false;
}

std::string_view Matcher::takeFor(const Kind& kind, bool isLast) {
    switch (kind.takes) {
    case Takes::Rest:
        return takeRest(isLast);
    case Takes::QuotableWord: {
        std::string_view rest = m_words.rest();
        const std::string_view word = takeWord(&rest);
        m_words = Words(rest);
        return word;
    }
    default:
        return m_words.next();
    }
}

std::string_view Matcher::takeRest(bool isLast) {
    double number = 0;
    const std::string_view text = isLast ? m_words.rest() : m_words.restBeforeNumber(&number);
    m_words = Words(m_words.rest().substr(text.size()));
    return text;
}

bool Matcher::isOf(const Kind& kind, std::string_view word) {
    if (!kind.hasForm(word)) {
        return false;
    }
    if (kind.problem != nullptr && m_problem.empty()) {
        m_problem = kind.problem(word);
    }
    if (kind.fileProblem != nullptr && m_folder && m_problem.empty()) {
        m_problem = kind.fileProblem(std::filesystem::path(*m_folder) / word);
    }
    return true;
}

}  // namespace

bool fitsUsage(std::string_view usage, Words words, std::string* problem,
               const std::optional<std::string>& folder) {
    Matcher matcher(words, folder);
    const bool hasForm = matcher.take(usage) && matcher.isAtEnd();
    *problem = hasForm ? matcher.problem() : "";
    return hasForm && problem->empty();
}

bool beginsWithFile(std::string_view usage) {
    const Kind* kind = findKind(takeUpTo(' ', &usage));
    return kind != nullptr && kind->fileProblem != nullptr;
}

}  // namespace tavsim
