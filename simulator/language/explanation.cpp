#include "simulator/language/explanation.h"

#include <simdjson.h>

#include <algorithm>
#include <utility>

#include "base/json/text.h"
#include "base/json/writer.h"

namespace dom = simdjson::dom;

namespace tavsim {
namespace {

constexpr size_t kMostShown = 10;
constexpr size_t kMostRelated = 5;
constexpr size_t kMostAlike = 2;  // that are shown one by one

const MemberPattern kAt = {"at", "*"};
const MemberPattern kWhat = {"what", "*"};
const MemberPattern kUri = {"uri", "*"};

bool isMet(std::string_view line, const MemberPattern& condition) {
    const std::optional<std::string> value = valueIn(line, condition);
    return value && meets(*value, condition);
}

bool isAboutWhat(const MemberPattern& condition) {
    return condition.member == "kind" || condition.member == "what";
}

// The only condition that the entry does not meet. Null where there are more of them, or where it
// has no more than its kind in common with the pattern.
const MemberPattern* onlyMiss(std::string_view line, const Pattern& pattern) {
    const MemberPattern* missed = nullptr;
    bool sharesMore = false;
    for (const MemberPattern& condition : pattern) {
        if (isMet(line, condition)) {
            sharesMore = sharesMore || condition.member != "kind";
        } else if (std::exchange(missed, &condition) != nullptr) {
            return nullptr;
        }
    }
    return sharesMore ? missed : nullptr;
}

std::string wanted(const MemberPattern& condition) {
    return condition.comparison == Comparison::Like
               ? base::quoted(condition.glob)
               : textOf(condition).substr(
                     condition.comparison == Comparison::Near ? 0 : condition.member.size());
}

bool isRelated(std::string_view line, const Pattern& pattern) {
    return std::any_of(pattern.begin(), pattern.end(), [line](const MemberPattern& one) {
        return (one.member == "what" || one.member == "uri") && isMet(line, one);
    });
}

std::string titleOf(std::string_view line) {
    const std::optional<std::string> uri = valueIn(line, kUri);
    return valueIn(line, kWhat).value_or("") + (uri ? " " + base::shortened(*uri) : "");
}

// Takes the last lines off, and shows those that are alike and follow each other as one.
std::vector<std::string> takeLast(size_t most, EntryLines* lines) {
    std::vector<std::string> shown;
    while (!lines->empty() && shown.size() < most) {
        const std::string title = titleOf(lines->back());
        const auto start = std::find_if(lines->rbegin(), lines->rend(), [&](std::string_view line) {
                               return titleOf(line) != title;
                           }).base();
        const auto count = static_cast<size_t>(lines->end() - start);
        if (count > kMostAlike) {
            shown.push_back(std::to_string(count) + " × " + title + ", from " + timeOf(*start) +
                            " to " + timeOf(lines->back()));
            lines->erase(start, lines->end());
        } else {
            shown.push_back(shownEntry(lines->back()));
            lines->pop_back();
        }
    }
    std::reverse(shown.begin(), shown.end());
    return shown;
}

}  // namespace

std::string closestTo(const Pattern& pattern, const EntryLines& lines) {
    std::string_view closest;
    const MemberPattern* miss = nullptr;
    for (const std::string_view line : lines) {
        const MemberPattern* here = onlyMiss(line, pattern);
        // Of those alike, the last one.
        const bool isCloser =
            here != nullptr && (miss == nullptr || isAboutWhat(*miss) || !isAboutWhat(*here));
        if (isCloser) {
            closest = line;
            miss = here;
        }
    }
    if (miss == nullptr) {
        return {};
    }
    const std::optional<std::string> value = valueIn(closest, *miss);
    const bool isText = miss->comparison == Comparison::Like;
    return "the closest one, at " + timeOf(closest) + ", has " + (value ? "" : "no ") +
           miss->member +
           (value ? " " + (isText ? base::quoted(*value) : base::shortened(*value)) + ", not " +
                        wanted(*miss)
                  : "");
}

std::string timeOf(std::string_view line) {
    return valueIn(line, kAt).value_or("?") + " ms";
}

std::string shownEntry(std::string_view line) {
    dom::element root;
    dom::object entry;
    if (!base::parse(base::lastingParser(false), line, false, &root) ||
        root.get(entry) != simdjson::SUCCESS) {
        return base::shortened(line);
    }
    base::JsonWriter json;
    json.beginObject();
    for (const auto& [name, value] : entry) {
        std::string_view text;
        const bool isText = value.get(text) == simdjson::SUCCESS;
        isText ? json.member(name, base::shortened(text))
               : json.key(name).raw(base::shortened(simdjson::minify(value)));
    }
    return json.endObject().take();
}

std::vector<std::string> journalEnd(EntryLines lines, const Pattern* pattern) {
    if (lines.empty()) {
        return {"the journal is empty"};
    }
    const std::vector<std::string> end = takeLast(kMostShown, &lines);
    std::erase_if(lines, [pattern](std::string_view line) {
        return pattern == nullptr || !isRelated(line, *pattern);
    });
    std::vector<std::string> text = takeLast(kMostRelated, &lines);
    if (!text.empty()) {
        text.insert(text.begin(), "earlier entries with the same what or uri");
    }
    text.emplace_back("the journal ends with");
    text.insert(text.end(), end.begin(), end.end());
    return text;
}

}  // namespace tavsim
