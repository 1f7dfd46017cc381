// Role files from templates. Input: the application's id and the executable's path, each ended by a
// zero byte, and the template.
#include <unistd.h>

#include <fstream>
#include <iterator>

#include "fuzz.h"
#include "roles/role_file.h"

using tavfuzz::expect;

namespace {

constexpr char kTemplate[] = "/usr/vire/ks2/templates/KOB.pub";
constexpr char kRole[] = "/var/vire/ks2/roles/pub/fuzz.json";

void writeAll(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string readAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    expect(file.good(), "the role file is there");
    return {std::istreambuf_iterator<char>(file), {}};
}

void replaceIn(std::string* text, std::string_view placeholder, const std::string& value) {
    for (std::size_t at = text->find(placeholder); at != std::string::npos;
         at = text->find(placeholder, at + value.size())) {
        text->replace(at, placeholder.size(), value);
    }
}

// Such a value completes no placeholder with what stands around it, so that one pass over the whole
// text is enough.
bool isPlain(const std::string& value) {
    return !value.empty() && value.find('X') == std::string::npos;
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    tavfuzz::startDevice();
    tav::ensureRoleDirectories();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    tavfuzz::Input input(bytes, size);
    const std::string appId = input.text();
    const std::string exePath = input.text();
    std::string content = input.rest();
    const std::string roleFile = tavsim::device().root() + kRole;
    unlink(roleFile.c_str());
    writeAll(tavsim::device().root() + kTemplate, content);

    roleGenerate(kTemplate, kRole, appId, exePath);
    const std::string role = readAll(roleFile);
    expect(role.ends_with('\n'), "a role file ends with a line feed");
    if (isPlain(appId) && isPlain(exePath)) {
        replaceIn(&content, "XXXIDXXX", appId);
        replaceIn(&content, "XXXEXEPATHXXX", exePath);
        expect(role == content + "\n", "a role file is its template with the values in place");
    }

    writeAll(tavsim::device().root() + kTemplate, "another");
    roleGenerate(kTemplate, kRole, exePath, appId);
    expect(readAll(roleFile) == role, "a role file that is there stays as it is");
    return 0;
}
