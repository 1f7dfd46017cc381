#include "tools/test/failed_cases.h"

#include <glib.h>

#include <filesystem>
#include <string>

#include "base/file.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

fs::path folder() {
    return fs::path(g_get_user_cache_dir()) / "tavsim" / "failed";
}

std::string identity(const TestCase& one) {
    std::error_code unknown;
    return fs::absolute(one.scenario, unknown).string() + "\n" + one.row + "\n";
}

// A name of any length and content becomes that of a file.
fs::path fileOf(const TestCase& one) {
    const std::string id = identity(one);
    char* const sum = g_compute_checksum_for_string(G_CHECKSUM_SHA256, id.c_str(),
                                                    static_cast<gssize>(id.size()));
    fs::path file = folder() / sum;
    g_free(sum);
    return file;
}

}  // namespace

bool hasFailed(const TestCase& one) {
    std::error_code unknown;
    return fs::exists(fileOf(one), unknown);
}

void rememberWhetherFailed(const TestResult& result) {
    std::error_code ignored;
    if (result.kind() == TestResult::Kind::Passed) {
        fs::remove(fileOf(result.what), ignored);
        return;
    }
    fs::create_directories(folder(), ignored);
    std::string error;
    base::writeFile(fileOf(result.what), identity(result.what), &error);
}

}  // namespace tools
