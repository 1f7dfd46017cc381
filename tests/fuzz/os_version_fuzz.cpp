// Version texts. Input: the system property.
#include <cstring>

#include "fuzz.h"
#include "tav.h"

using tavfuzz::expect;

namespace {

constexpr char kProperty[] = "com.vire.properties.version";

bool isAllZero(const char* bytes, std::size_t size) {
    return std::all_of(bytes, bytes + size, [](char byte) { return byte == '\0'; });
}

// Three numbers of at most nine digits and nothing else: what they are is beyond doubt.
bool readPlain(const char* text, int numbers[3]) {
    int length = 0;
    const bool isFirstDigit = *text >= '0' && *text <= '9';
    const char* dot = std::strchr(text, '.');
    if (!isFirstDigit || dot == nullptr || std::strspn(text, "0123456789.") != std::strlen(text)) {
        return false;
    }
    const int read =
        std::sscanf(text, "%9d.%9d.%9d%n", &numbers[0], &numbers[1], &numbers[2], &length);
    return read == 3 && text[length] == '\0';
}

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    tavfuzz::startDevice();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tavfuzz::forgetJournal();
    const std::string text = tavfuzz::Input(bytes, size).text();
    tavsim::device().profile.properties[kProperty] = text;
    TAV_OSVersion version;
    std::memset(&version, '#', sizeof version);
    const int code = TAV_GetOSVersion(&version);

    const bool fits = text.size() < sizeof version.versionText;
    expect(code == (fits ? TAV_NOERROR : TAV_EOTHER), "a text that has room is a success");
    const std::string stored = fits ? text : "";
    expect(std::memcmp(version.versionText, stored.data(), stored.size()) == 0 &&
               isAllZero(version.versionText + stored.size(),
                         sizeof version.versionText - stored.size()),
           "the version's text is the property, and zeros behind it");
    int numbers[3] = {};
    if (!fits || text.find('.') == std::string::npos) {
        expect(version.major == 0 && version.minor == 0 && version.revision == 0,
               "without a dot all numbers are 0");
    } else if (readPlain(text.c_str(), numbers)) {
        expect(version.major == numbers[0] && version.minor == numbers[1] &&
                   version.revision == numbers[2],
               "three plain numbers are the version's numbers");
    }
    return 0;
}
