// Fault injection. Each call of the tour is repeated: first its first allocation, dispatch, host
// request or read fails, or memory runs out there, then its second, and so on. Each time, once with
// that fault alone, and once with all that follow failing too.
#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>

#include "bridge.h"
#include "platform/hjson.h"
#include "platform/hlinkedlist.h"
#include "platform/hstring.h"
#include "transcript.h"

extern "C" const char __executable_start, etext;

namespace {

// GLib aborts without memory, which the library cannot prevent. Some builds of SDL then set an
// error of their own in place of the library's.
bool isSpared(const void* caller) {
    Dl_info info = {};
    dladdr(caller, &info);
    const std::string_view object(info.dli_fname != nullptr ? info.dli_fname : "");
    return object.find("/libglib-") != object.npos || object.find("/libSDL") != object.npos;
}

// Memory runs out only on the thread that runs a step, and only during the step.
struct Memory {
    int first = 0, last = 0;
    int occurred = 0;
    int blocks = 0;  // from malloc, not freed yet
    bool isArmed = false, isArmedForNew = false;

    bool isExhausted(const void* caller) {
        if (!isArmed || isSpared(caller) || ++occurred < first || occurred > last) {
            return false;
        }
        errno = ENOMEM;
        return true;
    }
};
thread_local Memory t_memory;

// For the nothrow new, whose callers must handle null. The library's allocations count as the
// helper library's, so that Fault::Allocation makes them fail too.
bool isToFail(const void* caller) {
    const bool isLibrary = caller >= &__executable_start && caller < &etext;
    HString* counted = t_memory.isArmed && isLibrary ? HString_alloc() : nullptr;
    HString_free(counted);
    return t_memory.isArmed && ((isLibrary && counted == nullptr) || t_memory.isExhausted(caller));
}

}  // namespace

void* operator new(std::size_t size, const std::nothrow_t&) noexcept try {
    return isToFail(__builtin_return_address(0)) ? nullptr : ::operator new(size);
} catch (const std::bad_alloc&) {
    return nullptr;
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept try {
    return isToFail(__builtin_return_address(0)) ? nullptr : ::operator new[](size);
} catch (const std::bad_alloc&) {
    return nullptr;
}

// A sanitizer's own allocator cannot be replaced.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define TAV_TESTS_OWN_MALLOC

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

static void* counted(void* block) {
    t_memory.blocks += block != nullptr ? 1 : 0;
    return block;
}

#define OR_NOTHING(block) (t_memory.isExhausted(__builtin_return_address(0)) ? nullptr : (block))

void* malloc(size_t size) {
    return OR_NOTHING(counted(__libc_malloc(size)));
}

void* calloc(size_t count, size_t size) {
    return OR_NOTHING(counted(__libc_calloc(count, size)));
}

void* realloc(void* block, size_t size) {
    return OR_NOTHING(block != nullptr ? __libc_realloc(block, size)
                                       : counted(__libc_malloc(size)));
}

void free(void* block) {
    t_memory.blocks -= block != nullptr ? 1 : 0;
    __libc_free(block);
}
}

// Callers of the throwing new need not survive a failure, except while isArmedForNew is set.
void* operator new(std::size_t size) {
    void* block = t_memory.isArmedForNew ? OR_NOTHING(__libc_malloc(size)) : __libc_malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    __libc_free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    __libc_free(block);
}
#endif

namespace {

using tavsim::Fault;

constexpr char kRoles[] = "/var/vire/ks2/roles/";

// Ends the subscription after five replies.
void onReply(TAV_ServiceParameters* parameters, void* seen) {
    char source[32] = "untouched";
    TAV_GetParamString(parameters, "source", source, sizeof source);
    std::string& sources = *static_cast<std::string*>(seen);
    sources += std::string(" '") + source + "'";
    if (std::count(sources.begin(), sources.end(), ' ') == 5) {
        TAV_UnregisterServiceCallback(onReply);
    }
}

void onGreet(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
}

class FaultsTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        std::string error;
        profile = tavsim::readProfile(tavsim::profilePath("cinnabar"), &error).value();
        profile.root = true;  // so that start-up makes roles
        profile.executable = "/" + std::string(200, 'x') + "/tour";
    }

    std::string rolesAfterStart() {
        std::string outcome = std::to_string(TAV_Init(0));
        for (const std::string id : {"com.example.tour", "tour"}) {
            const std::string role = read(kRoles + ("pub/" + id) + ".json");
            outcome += role != "(none)" ? ", " + textOf(role.size()) + " bytes for " + id : "";
        }
        return outcome;
    }

    // Switches it off even where switching it on has failed.
    template <typename Read>
    std::string whileOn(int (*enable)(SDL_bool), Read read) {
        const std::string enabled = textOf(enable(SDL_TRUE)) + " and ";
        device.advance(1000);
        const std::string seen = textOf(read()) + " and ";
        return enabled + seen + textOf(enable(SDL_FALSE));
    }

    std::string replies(const char* uri, SDL_bool isOneEnough) {
        std::string seen;
        const int code = TAV_ServiceCallWithCallback(uri, "{}", onReply, &seen, isOneEnough);
        device.advance(7000);
        return std::to_string(code) + seen;
    }

    // Makes the call that a page would make.
    std::string callFromPage() {
        EXPECT_EQ(TAV_RegisterJSHandler("greet", onGreet), TAV_NOERROR);
        const std::vector<const char*> parameters(9, "hello");
        const tavtest::Answer answer = tavtest::callMethod("greet", 9, parameters);
        return answer ? answer->second : "unanswered";
    }

    // Functions of the helper library that allocate with the throwing new.
    std::string helpers() {
        HLinkedList list;
        std::string elements = "abc";
        std::string json = R"({"list": ["a text that is too long to be part of a string"]})";
        json.append(1 << 20, ' ');  // too large for the buffers that are kept
        std::string outcome;
        t_memory.isArmedForNew = true;
        for (char& element : elements) {
            outcome += list.append(&element) != 0 ? element : '-';
        }
        HJson* parsed = HJson_create(json.c_str());
        HString* value = HJson_getValueFromStr(json.c_str(), "list");
        t_memory.isArmedForNew = false;
        outcome += " as ";
        for (int index = 0; index < list.size(); ++index) {
            outcome += *static_cast<char*>(list.get(index));
        }
        outcome += parsed != nullptr ? ", parsed, " : ", not parsed, ";
        outcome += value != nullptr ? HString_toStr(value) : "null";
        HJson_free(parsed);
        HString_free(value);
        return outcome;
    }

    // Runs the step with its occurrence `struck` of the fault failing. Past the last occurrence it
    // runs once more, and must come to the same outcome as undisturbed.
    template <typename Function>
    void step(const std::string& name, Function function) {
        if (struck > occurrences[name] + 1) {
            return;
        }
        SDL_ClearError();
        trace();
        t_memory.occurred = 0;
        t_memory.first = struck;
        t_memory.last = fault ? 0 : lasts && struck > 0 ? INT_MAX : struck;
        if (fault) {
            lasts ? device.failFrom(*fault, struck) : device.failNth(*fault, struck);
        }
        t_memory.isArmed = true;
        std::string outcome = textOf(function());
        t_memory.isArmed = false;
        const int occurred = fault ? device.occurrences(*fault) : t_memory.occurred;
        const std::string error = SDL_GetError();
        if (!error.empty() && outcome.find(error) == std::string::npos) {
            outcome += " \"" + error + "\"";
        }
        // A failure that no caller is told is only traced.
        for (const std::string& line : trace()) {
            const bool isTold = !error.empty() && line.ends_with(error);
            outcome += line.starts_with("tav_e") && !isTold ? "; " + line.substr(6) : "";
        }
        if (struck == 0) {
            undisturbed[name] = outcome;
            occurrences[name] = occurred;
            most = std::max(most, occurred);
        } else if (occurred < struck) {
            EXPECT_EQ(outcome, undisturbed[name]) << name << " changed without being struck";
        } else if (outcome != undisturbed[name]) {
            changed[name][outcome] |= 1 << (2 * profile.plugin + lasts);
        }
    }

#define STEP(call) step(#call, [&] { return call; })

    // Runs all steps. Whatever fails, nothing leaks.
    void run() {
        std::filesystem::remove_all(path(kRoles));
        const int blocks = t_memory.blocks;
        const long descriptors = openDescriptors();
        const char* texts[] = {"ann@example.com", "bob@example.com"};
        TAV_OSVersion version;
        TAV_CompassReading reading;
        TAV_Location fix;
        const auto appId = [](char* to, int size) { return TAV_GetAppinfoValue("id", to, size); };
        const auto dataFile = [](char* to, int size) { return TAV_GetDataFilePath("f", to, size); };
        STEP(rolesAfterStart());
        STEP(filled(TAV_GetDeviceName, 256));
        STEP(filled(TAV_GetLanguage, 256));
        STEP(filled(TAV_GetUniqueID, 256));
        STEP(TAV_GetOSVersion(&version));
        STEP(filled(appId, 256));
        STEP(filled(dataFile, 256).substr(0, 3));
        STEP(whileOn(TAV_EnableCompass, [&] { return TAV_GetCompass(&reading); }));
        STEP(TAV_Minimize());
        STEP(replies("vire://com.vire.battery/status", SDL_TRUE));
        STEP(replies("vire://com.vire.clock/ticks", SDL_FALSE));
        STEP(whileOn(TAV_EnableLocationTracking, [&] { return TAV_GetLocation(&fix); }));
        STEP(TAV_Vibrate(100, 500));
        STEP(TAV_SetFirewallPortStatus(1025, SDL_TRUE));
        STEP(TAV_NotifyMusicPlaying(SDL_TRUE));
        STEP(TAV_LaunchBrowser("http://example.com/"));
        STEP(TAV_LaunchEmail("Scores", "1. Ann"));
        STEP(TAV_LaunchEmailTo("Scores", "1. Ann", 2, texts));
        STEP(TAV_GetAvailableItems());
        STEP(TAV_GetItemInfo("gold-skin"));
        STEP(TAV_GetPendingPurchaseInfo("17"));
        STEP(TAV_PurchaseItem("extra-levels", 1, nullptr));
        STEP(TAV_PurchaseItem("gold-skin", 1, "from the tour"));
        STEP(TAV_JSRegistrationComplete());
        STEP(TAV_CallJS("show", texts, 1));
        STEP(callFromPage());
        STEP(helpers());
        EXPECT_EQ(device.openCalls(), std::vector<int>());
        TAV_Quit();
        EXPECT_EQ(openDescriptors(), descriptors);
        // Some builds of SDL keep a block from the first run, in which nothing fails.
        EXPECT_TRUE(t_memory.blocks == blocks || struck == 0) << t_memory.blocks - blocks;
    }

#undef STEP

    // Notes every outcome of a step that differs from its undisturbed one.
    void strike(std::optional<Fault> kind) {
        fault = kind;
        for (const bool isPlugin : {false, true}) {
            profile.plugin = isPlugin;
            for (const bool isLasting : {false, true}) {
                startDevice(profile);
                lasts = isLasting;
                most = 0;
                for (struck = 0; struck <= most + 1; ++struck) {
                    run();
                }
            }
        }
        for (const auto& [name, outcomes] : changed) {
            for (const auto& [outcome, ways] : outcomes) {
                note(name + " = " + cut(outcome) + textOfWays(ways));
            }
        }
    }

    // The ways that had the outcome, unless all four had. What plug-ins share is named once.
    static std::string textOfWays(int ways) {
        const char* const texts[] = {"once", "lasting", "once as a plug-in",
                                     "lasting as a plug-in"};
        const int told = (ways & 3) == ways >> 2 ? ways & 3 : ways;
        std::string text;
        for (int way = 0; way < 4 && told != 3; ++way) {
            if ((told >> way & 1) != 0) {
                text += (text.empty() ? "; " : ", ") + std::string(texts[way]);
            }
        }
        return text;
    }

    tavsim::Profile profile;
    std::optional<Fault> fault;  // none: memory runs out
    int struck = 0;              // the occurrence that fails in each step; 0: none
    bool lasts = false;
    std::map<std::string, int> occurrences;  // in each step, undisturbed
    int most = 0;
    std::map<std::string, std::string> undisturbed;             // outcome of each step
    std::map<std::string, std::map<std::string, int>> changed;  // a bit for each of the four ways
};

TEST_F(FaultsTest, Allocation) {
    strike(Fault::Allocation);
}

TEST_F(FaultsTest, Dispatch) {
    strike(Fault::Dispatch);
}

TEST_F(FaultsTest, Host) {
    strike(Fault::HostRequest);
}

TEST_F(FaultsTest, Read) {
    strike(Fault::Read);
}

#ifdef TAV_TESTS_OWN_MALLOC
TEST_F(FaultsTest, Memory) {
    strike(std::nullopt);
}
#endif

}  // namespace
