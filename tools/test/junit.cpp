#include "tools/test/junit.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/file.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

// XML 1.0 cannot represent these.
bool isImpossible(gunichar c) {
    const bool isControl = c < ' ' && c != '\t' && c != '\n' && c != '\r';
    return isControl || c == 0xfffe || c == 0xffff;
}

std::string possible(std::string_view text) {
    const Text valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    std::string possible;
    for (const char* at = valid.get(); *at != '\0'; at = g_utf8_next_char(at)) {
        const size_t size = static_cast<size_t>(g_utf8_next_char(at) - at);
        isImpossible(g_utf8_get_char(at)) ? possible += '?' : possible.append(at, size);
    }
    return possible;
}

void add(pugi::xml_node node, const char* attribute, std::string_view value) {
    node.append_attribute(attribute) = possible(value).c_str();
}

void addTime(pugi::xml_node node, double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    add(node, "time", text);
}

void addTotals(pugi::xml_node node, const std::vector<TestResult>& results, double seconds) {
    add(node, "tests", std::to_string(results.size()));
    add(node, "failures", std::to_string(count(results, TestResult::Kind::Failed)));
    add(node, "errors", std::to_string(count(results, TestResult::Kind::NotRun)));
    add(node, "skipped", "0");
    addTime(node, seconds);
}

fs::path allDifferences(const std::string& report) {
    return fs::path(report).replace_extension().string() + "-pictures";
}

// The form in which continuous integration takes files for attachments of a case.
std::string attachments(const std::string& report, const TestResult& result) {
    std::string lines;
    auto files = base::entriesOf(differencesFolder(report, result.number, result.what));
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        lines += "[[ATTACHMENT|" + file + "]]\n";
    }
    return lines;
}

void addCase(pugi::xml_node suite, const TestResult& result, const std::string& report) {
    const fs::path file(result.what.scenario);
    pugi::xml_node node = suite.append_child("testcase");
    add(node, "classname", file.parent_path().string());
    const std::string row = result.what.row.empty() ? "" : "[" + result.what.row + "]";
    add(node, "name", file.stem().string() + row);
    add(node, "file", result.what.scenario);
    addTime(node, result.seconds);
    const TestResult::Kind kind = result.kind();
    if (kind != TestResult::Kind::Passed) {
        pugi::xml_node why =
            node.append_child(kind == TestResult::Kind::Failed ? "failure" : "error");
        add(why, "message", result.reason());
        why.text() = possible(result.details()).c_str();
    }
    node.append_child("system-out").text() =
        possible(result.output + attachments(report, result)).c_str();
}

}  // namespace

std::string differencesFolder(const std::string& report, size_t number, const TestCase& what) {
    const std::string name = fs::path(what.scenario).stem();
    return allDifferences(report) / (std::to_string(number + 1) + "-" + name);
}

void removeDifferences(const std::string& report) {
    std::error_code ignored;
    for (const std::string& folder : base::entriesOf(allDifferences(report))) {
        for (const std::string& file : base::entriesOf(folder)) {
            if (file.ends_with(".difference.png")) {
                fs::remove(file, ignored);
            }
        }
        rmdir(folder.c_str());  // not where there is something else in it
    }
    rmdir(allDifferences(report).c_str());
}

void writeJunitReport(const std::vector<TestResult>& results, double seconds,
                      const std::string& name, std::ostream& report) {
    pugi::xml_document document;
    pugi::xml_node suites = document.append_child("testsuites");
    addTotals(suites, results, seconds);
    pugi::xml_node suite = suites.append_child("testsuite");
    add(suite, "name", "tavsim");
    addTotals(suite, results, seconds);
    for (const TestResult& result : results) {
        addCase(suite, result, name);
    }
    document.save(report, "  ");
}

}  // namespace tools
