// Device profiles. Input: the file.
#include "fuzz.h"

using tavfuzz::expect;

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string json = tavfuzz::textOf(bytes, size);
    std::string error;
    const std::optional<tavsim::Profile> profile = tavsim::parseProfile(json, "fuzz.json", &error);
    if (!profile) {
        tavfuzz::expectOneLine(error, "fuzz.json");
        return 0;
    }
    expect(error.empty(), "a profile that was read has no error");
    for (const std::string& request : profile->refused) {
        expect(tavsim::canBeRefused(request), "what the device refuses can be refused");
    }
    for (const auto& [uri, service] : profile->services) {
        expect(!uri.empty() && service.delay >= 0 && service.every >= 0,
               "a service has a URI, and its times lie ahead");
    }
    return 0;
}
