#include "simulator/scenario/verdict.h"

#include <unistd.h>

#include <fstream>

#include "helper/end_program.h"
#include "helper/json/reader.h"
#include "helper/json/writer.h"

namespace json = helper::json;

namespace tavsim {
namespace {

constexpr char kFile[] = "/verdict";

constexpr std::pair<std::string_view, Outcome> kOutcomes[] = {
    {"waiting", Outcome::Waiting}, {"passed", Outcome::Passed}, {"failed", Outcome::Failed}};

std::string_view nameOf(Outcome outcome) {
    for (const auto& [name, value] : kOutcomes) {
        if (value == outcome) {
            return name;
        }
    }
    return {};
}

}  // namespace

bool VerdictFile::open(const std::string& root) {
    return m_file.open(root + kFile);
}

void VerdictFile::note(Outcome outcome, const std::string& step) {
    const std::string line = helper::JsonWriter()
                                 .beginObject()
                                 .member("outcome", nameOf(outcome))
                                 .member("step", step)
                                 .member("since", now())
                                 .endObject()
                                 .take();
    if (!m_file.append(line)) {
        helper::endProgram(m_file.path() + ": the scenario's verdict cannot be written");
    }
}

Verdict readVerdict(const std::string& root) {
    std::ifstream file(root + kFile);
    std::string last;
    for (std::string line; std::getline(file, line);) {
        last.swap(line);
    }
    Verdict verdict;
    std::string error;
    const json::Reader reader = json::fields(
        {{"outcome", json::word(&verdict.outcome, {std::begin(kOutcomes), std::end(kOutcomes)})},
         {"step", json::text(&verdict.step)},
         {"since", json::number(&verdict.since)}});
    return json::read(last, kFile, reader, &error) ? verdict : Verdict();
}

void removeVerdict(const std::string& root) {
    unlink((root + kFile).c_str());
}

}  // namespace tavsim
