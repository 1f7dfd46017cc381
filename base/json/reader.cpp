#include "base/json/reader.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "base/json/writer.h"
#include "base/suggestion.h"

namespace dom = simdjson::dom;

namespace base::json {
namespace {

template <typename Number>
std::string range(Number lowest, Number highest) {
    std::ostringstream line;
    line << "from " << lowest << " to " << highest;
    return line.str();
}

std::vector<std::string> namesOf(const std::map<std::string_view, Reader>& known) {
    std::vector<std::string> names(known.size());
    std::transform(known.begin(), known.end(), names.begin(),
                   [](const auto& field) { return std::string(field.first); });
    return names;
}

}  // namespace

// Names are escaped, because a name may contain a line break and an error is one line.
Value Value::member(std::string_view name, Element element) const {
    return {element, m_path + (m_path.empty() ? "" : ".") + escapedJson(shortened(name)),
            m_problem};
}

Value Value::at(size_t index, Element element) const {
    return {element, m_path + "[" + std::to_string(index) + "]", m_problem};
}

void Value::fail(const std::string& what) const {
    if (m_problem->empty()) {
        *m_problem = m_path + (m_path.empty() ? "" : ": ") + what;
    }
}

bool read(const std::string& document, const std::string& source, const Reader& reader,
          std::string* error) {
    dom::parser parser;
    dom::element root;
    std::string problem;
    const simdjson::error_code code = parser.parse(document).get(root);
    if (code == simdjson::SUCCESS) {
        reader(Value(root, {}, &problem));
    } else {
        problem = std::string("not JSON: ") + simdjson::error_message(code);
    }
    if (!problem.empty()) {
        *error = source + ": " + problem;
    }
    return problem.empty();
}

Reader text(std::string* target) {
    return [target](const Value& value) {
        std::string_view content;
        if (value.element().get(content) != simdjson::SUCCESS) {
            value.fail("must be a string");
        } else if (content.find('\0') != std::string_view::npos) {
            value.fail("must not hold a zero byte");
        } else {
            *target = content;
        }
    };
}

Reader text(std::optional<std::string>* target) {
    return [target](const Value& value) {
        const Reader content = text(&target->emplace());
        content(value);
    };
}

Reader raw(std::string* target) {
    return [target](const Value& value) { *target = simdjson::minify(value.element()); };
}

Reader flag(bool* target) {
    return [target](const Value& value) {
        if (value.element().get(*target) != simdjson::SUCCESS) {
            value.fail("must be true or false");
        }
    };
}

Reader flag(std::optional<bool>* target) {
    return [target](const Value& value) {
        const Reader content = flag(&target->emplace());
        content(value);
    };
}

Reader number(double* target, double lowest, double highest) {
    return [=](const Value& value) {
        double content = 0.0;
        if (value.element().get(content) != simdjson::SUCCESS) {
            value.fail("must be a number");
        } else if (content < lowest || content > highest) {
            value.fail("must be a number " + range(lowest, highest));
        } else {
            *target = content;
        }
    };
}

Reader integer(int* target, int lowest, int highest) {
    return [=](const Value& value) {
        int64_t content = 0;
        const bool isInteger = value.element().get(content) == simdjson::SUCCESS;
        if (!isInteger || content < lowest || content > highest) {
            value.fail("must be a whole number " + range(lowest, highest));
        } else {
            *target = static_cast<int>(content);
        }
    };
}

Reader fields(std::map<std::string_view, Reader> known) {
    return [known = std::move(known)](const Value& value) {
        eachMember(value, [&](std::string_view name, const Value& each) {
            const auto reader = known.find(name);
            if (reader == known.end()) {
                each.fail("unknown field" + suggestion(name, namesOf(known)));
            } else {
                reader->second(each);
            }
        });
    };
}

Reader sequence(std::vector<Reader> values) {
    return [values = std::move(values)](const Value& value) {
        size_t count = 0;
        eachElement(value, [&](const Value& each) {
            if (count < values.size()) {
                values[count](each);
            }
            ++count;
        });
        if (count != values.size()) {
            value.fail("must be a list of " + std::to_string(values.size()) + " values");
        }
    };
}

void eachElement(const Value& list, const Reader& function) {
    dom::array array;
    if (list.element().get(array) != simdjson::SUCCESS) {
        list.fail("must be a list");
        return;
    }
    size_t index = 0;
    for (const dom::element each : array) {
        function(list.at(index++, each));
    }
}

void eachMember(const Value& object,
                const std::function<void(std::string_view name, const Value&)>& function) {
    dom::object all;
    if (object.element().get(all) != simdjson::SUCCESS) {
        object.fail("must be an object");
        return;
    }
    std::set<std::string_view> names;
    for (const auto& [name, each] : all) {
        const Value member = object.member(name, each);
        if (!names.insert(name).second) {
            member.fail("stands there twice");
        }
        function(name, member);
    }
}

}  // namespace base::json
