#include "transcript.h"

#include <simdjson.h>

#include <algorithm>
#include <cstdlib>
#include <regex>

namespace tavtest {
namespace {

constexpr size_t kLongestLine = 150;

std::string plain(simdjson::dom::element value) {
    std::string_view text;
    return value.get(text) == simdjson::SUCCESS ? std::string(text) : simdjson::to_string(value);
}

// Replaces what varies: addresses and folders with each run, tokens with the tests that ran before,
// messages of other libraries with their versions.
std::string lasting(std::string text) {
    static const std::pair<std::regex, const char*> kVarying[] = {
        {std::regex("/[^ :\"]*/tavsim-[0-9]+/[0-9]+-[A-Za-z0-9]{6}"), "ROOT"},
        {std::regex("0x[0-9a-f]+"), "P"},
        {std::regex("\\x00"), "\\0"},
        {std::regex(R"re((token"?[ :]|blockingCallCallback |"id":)[0-9]+)re"), "$1T"},
        {std::regex("(not JSON|no XML|no PNG|no whole PNG): .*"), "$1"},
    };
    for (const auto& [varying, constant] : kVarying) {
        text = std::regex_replace(text, varying, constant);
    }
    return text;
}

// An entry of the journal as prose: {"at":20,"kind":"host","what":"beep","level":2,"outcome":"on"}
// is "20 ms beep level=2 on". The kind and tokens are left out.
std::string prose(const std::string& entry) {
    constexpr std::string_view kNameless[] = {"what", "uri", "payload", "reply", "outcome"};
    simdjson::dom::parser parser;
    simdjson::dom::object members;
    if (parser.parse(entry).get(members) != simdjson::SUCCESS) {
        return entry;
    }
    std::string text;
    for (const auto& [key, value] : members) {
        std::string word = TranscriptTest::cut(plain(value));
        if (key == "at") {
            word = word == "0" ? "" : word + " ms";
        } else if (key == "kind" || key == "token" || word.starts_with("token ")) {
            word.clear();
        } else if (std::ranges::count(kNameless, key) == 0) {
            word = std::string(key) + '=' + word;
        }
        text += (text.empty() || word.empty() ? "" : " ") + word;
    }
    return text;
}

// Look-ups are left out: they show in the results, and would hide the other entries.
bool isNews(const std::string& entry) {
    constexpr std::string_view kLookUps[] = {"SDL_NimboHookIsComponent", "NApp_GetJsonValue",
                                             "NApp_GetAppinfoValue", "KPSystemCopyStringValue"};
    return std::ranges::none_of(kLookUps, [&](auto name) { return entry.find(name) != name.npos; });
}

// Only these do not trace their entry.
bool isUntraced(const std::string& call) {
    static const std::regex other(
        "TAV_(GetError|FAIL|LaunchBrowser.nullptr|[A-Za-z]*(Item|Purchase))[^\\0]*");
    return std::regex_match(call, other);
}

// The call with the values of its arguments, as its trace has them.
std::string headOf(const std::string& call, const std::vector<std::string>& trace) {
    static const std::regex entry("tav_f (TAV_[A-Za-z]+) ([^\\0]*)");
    static const std::regex direct("(TAV_|filled|query)[^\\0]*");
    std::smatch match;
    if (!std::regex_match(call, direct) || isUntraced(call)) {
        return TranscriptTest::cut(call);
    }
    if (trace.empty() || !std::regex_match(trace.front(), match, entry)) {
        ADD_FAILURE() << call << " does not trace its entry";
        return call;
    }
    return match.str(1) + '(' + (match.str(2) == "--" ? "" : TranscriptTest::cut(match.str(2))) +
           ')';
}

}  // namespace

std::string TranscriptTest::cut(const std::string& whole) {
    const std::string text = lasting(whole);
    constexpr size_t kLongest = 130;
    constexpr size_t kKept = 50;
    return text.size() <= kLongest ? text
                                   : join(text.substr(0, kKept), "...(", text.size(), ")...",
                                          text.substr(text.size() - kKept));
}

void TranscriptTest::note(const std::string& line) {
    m_transcript += line.empty() ? "" : lasting(line) + "\n";
    SDL_ClearError();
    trace();
    m_journalSeen = device.journal().size();
}

void TranscriptTest::showLine(const std::string& call, const std::string& result) {
    const std::string error = lastError();
    const std::vector<std::string> traced = trace();
    if (SDL_GetError() == error && !error.empty()) {
        EXPECT_THAT(traced, testing::Contains(testing::AllOf(testing::StartsWith("tav_e "),
                                                             testing::EndsWith(' ' + error))));
    }
    std::string head = headOf(call, traced) + (result.empty() ? "" : " = " + cut(result));
    if (!error.empty() && result.find(error) == std::string::npos) {
        head += " \"" + error + "\"";
    }
    std::string line = head;
    std::string lines = head;
    const auto& journal = device.journal();
    for (size_t n = std::min(m_journalSeen, journal.size()); n < journal.size(); ++n) {
        if (isNews(journal[n])) {
            line += (line.size() == head.size() ? ": " : "; ") + prose(journal[n]);
            lines += "\n    " + prose(journal[n]);
        }
    }
    m_transcript += lasting(line.size() <= kLongestLine ? line : lines) + "\n";
}

std::map<std::string, std::string> TranscriptTest::seeds(const std::string& kind) {
    std::map<std::string, std::string> contents;
    for (const auto& seed : std::filesystem::directory_iterator(seedFolder(kind))) {
        std::ifstream file(seed.path(), std::ios::binary);
        contents[seed.path().filename()] = {std::istreambuf_iterator<char>(file), {}};
    }
    return contents;
}

void TranscriptTest::compare() {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    const std::string path =
        std::string(TAV_TESTS "/expected/") + test->test_suite_name() + "-" + test->name() + ".txt";
    if (std::getenv("TAV_WRITE_EXPECTED") != nullptr) {
        std::ofstream(path, std::ios::binary) << m_transcript;
    }
    std::ifstream file(path, std::ios::binary);
    const std::string expected(std::istreambuf_iterator<char>(file), {});
    EXPECT_EQ(m_transcript, expected) << path;
}

}  // namespace tavtest
