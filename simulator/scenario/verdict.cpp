#include "simulator/scenario/verdict.h"

#include <unistd.h>

#include "base/file.h"
#include "base/json/reader.h"
#include "base/json/writer.h"
#include "simulator/device/edge.h"
#include "simulator/device/trusted_folder.h"

namespace json = base::json;

namespace tavsim {
namespace {

constexpr size_t kLongestVerdict = 64 << 20;

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
    return m_file.open(root + kVerdict);
}

void VerdictFile::note(Outcome outcome, const std::string& step) {
    if (!m_file.append(
            base::jsonObject("outcome", nameOf(outcome), "step", step, "since", now()))) {
        endProgram(m_file.path() + ": the scenario's verdict cannot be written");
    }
}

Verdict readVerdict(const std::string& root) {
    Verdict verdict;
    std::string error;
    std::string text = base::readFile(root + kVerdict, kLongestVerdict, &error).value_or("");
    text.resize(text.find_last_not_of('\n') + 1);
    const std::string last = text.substr(text.rfind('\n') + 1);
    const json::Reader reader = json::fields(
        {{"outcome", json::word(&verdict.outcome, {std::begin(kOutcomes), std::end(kOutcomes)})},
         {"step", json::text(&verdict.step)},
         {"since", json::number(&verdict.since)}});
    return json::read(last, kVerdict, reader, &error) ? verdict : Verdict();
}

void removeVerdict(const std::string& root) {
    unlink((root + kVerdict).c_str());
}

}  // namespace tavsim
