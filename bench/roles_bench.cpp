// A role file made from a template, compared with copying the text with a flush for each line.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/bench_device.h"
#include "platform/visibility.h"
#include "src/roles/role_file.h"

// Replaces the library's system(), so that the time of the bus's rescan does not blur the ratio.
extern "C" TAV_PLATFORM_API int skipRescan(const char* command) asm("__wrap_system");
int skipRescan(const char*) {
    return 0;
}

namespace {

namespace fs = std::filesystem;
using tavbench::BenchDevice;
using tavbench::expect;

constexpr char kId[] = "com.example.bench";
constexpr char kExecutable[] = "/media/internal/apps/bench/bench";

constexpr const char* kLines[] = {
    "{",
    R"(  "role": {)",
    R"(    "exeName": "XXXEXEPATHXXX",)",
    R"(    "type": "regular",)",
    R"(    "allowedNames": ["XXXIDXXX"])",
    "  },",
    R"(  "permissions": [)",
    R"(    { "service": "XXXIDXXX", "inbound": ["*"], "outbound": ["com.example.*"] })",
    "  ]",
    "}",
};

std::string replaced(std::string line, const std::string& placeholder, const std::string& value) {
    const size_t position = line.find(placeholder);
    return position != std::string::npos ? line.replace(position, placeholder.size(), value) : line;
}

std::string asTemplate(const std::string& line) {
    return line;
}

std::string finished(const std::string& line) {
    return replaced(replaced(line, "XXXIDXXX", kId), "XXXEXEPATHXXX", kExecutable);
}

// The ten lines over and over, without a newline after the last.
std::string textOf(std::int64_t lines, std::string (*made)(const std::string& line)) {
    std::string text;
    for (std::int64_t i = 0; i < lines; ++i) {
        text += (i > 0 ? "\n" : "") + made(kLines[static_cast<size_t>(i) % std::size(kLines)]);
    }
    return text;
}

void copyLines(const std::string& source, const std::string& target) {
    if (std::FILE* present = std::fopen(target.c_str(), "r")) {
        std::fclose(present);
        return;
    }
    std::FILE* in = std::fopen(source.c_str(), "r");
    std::FILE* out = std::fopen(target.c_str(), "w");
    char* line = nullptr;
    size_t capacity = 0;
    for (ssize_t length; (length = getline(&line, &capacity, in)) > 0;) {
        std::fwrite(line, 1, static_cast<size_t>(length), out);
        std::fflush(out);
    }
    std::free(line);
    std::fclose(out);
    std::fclose(in);
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The results are compared up to the last brace, because only the library adds a newline after it.
template <typename Generate>
void makeRoleFile(benchmark::State& state, std::string (*line)(const std::string&),
                  Generate generate) {
    tavsim::Profile profile;
    profile.templates["bench.pub"] = textOf(state.range(0), line);
    const BenchDevice device(state, profile);
    const std::string source = "/usr/vire/ks2/templates/bench.pub";
    const std::string target = std::string(tav::kPublicRoles) + "/bench.json";
    const std::string file = tavsim::device().root() + target;
    fs::create_directories(tavsim::device().root() + tav::kPublicRoles);
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(file);
        state.ResumeTiming();
        generate(source, target);
    }
    const std::string content = contentOf(file);
    expect(state, content.substr(0, content.rfind('}') + 1) == textOf(state.range(0), finished),
           "another text");
}

void roleFileLibtav(benchmark::State& state) {
    makeRoleFile(state, asTemplate, [](const std::string& source, const std::string& target) {
        roleGenerate(source, target, kId, kExecutable);
    });
}
BENCHMARK(roleFileLibtav)->Arg(10)->Arg(10000);

void roleFileCopy(benchmark::State& state) {
    makeRoleFile(state, finished, copyLines);
}
BENCHMARK(roleFileCopy)->Arg(10)->Arg(10000);

}  // namespace
