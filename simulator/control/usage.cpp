#include "simulator/control/usage.h"

#include <algorithm>

#include "simulator/control/pattern.h"

namespace tavsim {
namespace {

constexpr std::string_view kTakesTheRest[] = {"TEXT", "VALUE", "JSON", "NAME"};
constexpr std::string_view kCanBeEmpty = "VALUE";
constexpr std::string_view kNumbers[] = {"INT",
                                         "DOUBLE",
                                         "CODE",
                                         "LATITUDE",
                                         "LONGITUDE",
                                         "ALTITUDE",
                                         "HORIZONTAL_ACCURACY",
                                         "VERTICAL_ACCURACY",
                                         "HEADING",
                                         "VELOCITY",
                                         "X",
                                         "Y"};

template <typename List>
bool contains(const List& list, std::string_view word) {
    return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

bool isNumber(std::string_view word) {
    double number = 0;
    return Words(word).areNumbers(&number);
}

// Words in small letters stand for themselves, several with bars between them.
bool isLiteral(std::string_view demand) {
    return std::none_of(demand.begin(), demand.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

bool isOneOf(std::string_view word, std::string_view choices) {
    while (!choices.empty()) {
        const std::string_view choice = choices.substr(0, choices.find('|'));
        if (word == choice) {
            return true;
        }
        choices.remove_prefix(std::min(choice.size() + 1, choices.size()));
    }
    return false;
}

bool fits(std::string_view word, std::string_view demand) {
    if (word.empty()) {
        return demand == kCanBeEmpty;
    }
    if (isLiteral(demand)) {
        return isOneOf(word, demand);
    }
    return demand == "TIME" ? readTime(word).has_value()
                            : !contains(kNumbers, demand) || isNumber(word);
}

}  // namespace

bool fitsUsage(std::string_view usage, Words words) {
    Words demands(usage);
    while (!demands.isEmpty()) {
        const std::string_view demand = demands.next();
        const bool isLoose =
            demand.starts_with('[') || demand.find("...") != std::string_view::npos;
        if (isLoose) {
            return true;
        }
        if (!fits(words.next(), demand)) {
            return false;
        }
        if (demands.isEmpty() && contains(kTakesTheRest, demand)) {
            return true;
        }
    }
    return words.isEmpty();
}

}  // namespace tavsim
