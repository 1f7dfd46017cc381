// Reads JSON files of a known form. A reader says which type a value must have and where it is
// stored. Readers are composed of readers:
//
//     json::Reader fix(Fix* fix) {
//         return json::fields({{"latitude", json::number(&fix->latitude, -90, 90)},
//                              {"label", json::text(&fix->label)}});
//     }
//     std::vector<Fix> fixes;
//     json::read(content, "track.json", json::list(&fixes, fix), &error);
//
// A target whose member is missing in the file keeps its value. Targets must outlive the reading.
#pragma once

#include <simdjson.h>

#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace base::json {

// A value of a document, and its path in it, such as services.vire://x/y.delay.
class Value {
public:
    using Element = simdjson::dom::element;

    Value(Element element, std::string path, std::string* problem)
        : m_element(element), m_path(std::move(path)), m_problem(problem) {}

    Element element() const { return m_element; }

    // What is in this value.
    Value member(std::string_view name, Element element) const;
    Value at(size_t index, Element element) const;

    // Reports what is wrong with the value. Only the first report is kept.
    void fail(const std::string& what) const;

private:
    Element m_element;
    std::string m_path;
    std::string* m_problem;
};

using Reader = std::function<void(const Value&)>;

// Reads a document. On failure `error` is one line that names the source and the path, and some
// targets may have been written to.
bool read(const std::string& document, const std::string& source, const Reader& reader,
          std::string* error);

// A string without NUL bytes.
Reader text(std::string* target);
Reader text(std::optional<std::string>* target);

// Any value, as JSON.
Reader raw(std::string* target);

Reader flag(bool* target);
Reader flag(std::optional<bool>* target);
Reader number(double* target, double lowest = std::numeric_limits<double>::lowest(),
              double highest = std::numeric_limits<double>::max());
Reader integer(int* target, int lowest = std::numeric_limits<int>::min(),
               int highest = std::numeric_limits<int>::max());

// One of these words, each with the value that it stands for.
template <typename Meaning>
Reader word(Meaning* target, std::vector<std::pair<std::string_view, Meaning>> words) {
    return [target, words = std::move(words)](const Value& value) {
        std::string_view given;
        std::string known;
        const bool isText = value.element().get(given) == simdjson::SUCCESS;
        for (const auto& [name, meaning] : words) {
            if (isText && name == given) {
                *target = meaning;
                return;
            }
            known += (known.empty() ? "" : ", ") + std::string(name);
        }
        value.fail("must be one of " + known);
    };
}

// An object with no other members than these.
Reader fields(std::map<std::string_view, Reader> known);

// A list with exactly these elements.
Reader sequence(std::vector<Reader> values);

// Calls the function with each value of a list or object.
void eachElement(const Value& list, const Reader& function);
void eachMember(const Value& object,
                const std::function<void(std::string_view name, const Value&)>& function);

// A list of any length, whose values replace the target's content. The function makes the reader of
// an element.
template <typename Target, typename Function>
Reader list(std::vector<Target>* target, Function elementReader) {
    return [target, elementReader](const Value& value) {
        target->clear();
        eachElement(value, [&](const Value& each) {
            const Reader element = elementReader(&target->emplace_back());
            element(each);
        });
    };
}

// An object with any names, whose values are added to the target.
template <typename Target, typename Function>
Reader members(std::map<std::string, Target>* target, Function memberReader) {
    return [target, memberReader](const Value& value) {
        eachMember(value, [&](std::string_view name, const Value& each) {
            const Reader member = memberReader(&(*target)[std::string(name)]);
            member(each);
        });
    };
}

}  // namespace base::json
