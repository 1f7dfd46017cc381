// An application whose page runs a script, and what comes of it.
#ifndef TAV_TESTS_PAGE_H
#define TAV_TESTS_PAGE_H

#include <unistd.h>

#include "js/handlers.h"
#include "transcript.h"

namespace tavtest {

// The application's methods.

inline void add(TAV_JSParameters* parameters) {
    if (TAV_GetNumJSParams(parameters) != 2) {
        TAV_JSException(parameters, "add needs two numbers \xe2\x9c\x97");
        return;
    }
    const int sum = TAV_GetJSParamInt(parameters, 0) + TAV_GetJSParamInt(parameters, 1);
    TAV_JSReply(parameters, std::to_string(sum).c_str());
}

inline void echo(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
}

inline void replyWithGarbage(TAV_JSParameters* parameters) {
    TAV_JSReply(parameters, "a\xff\xc3(\xed\xa0\xbd\xf4\x90\x80\x80z\xe2\x82");
}

inline void callBack(TAV_JSParameters* parameters) {
    const char* arguments[] = {TAV_GetJSParamString(parameters, 0), nullptr};
    EXPECT_EQ(TAV_CallJS("note", arguments, 2), TAV_NOERROR);
}

inline void pollThenReply(TAV_JSParameters* parameters) {
    callBack(parameters);
    SDL_Delay(50);
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {}
    TAV_JSReply(parameters, "polled");
}

inline const std::pair<const char*, TAV_JSHandler> kMethods[] = {
    {"add", add},
    {"echo", echo},
    {"garbage", replyWithGarbage},
    {"registerMore", [](TAV_JSParameters*) { TAV_RegisterJSHandler("late", echo); }},
    {"forgetAll", [](TAV_JSParameters*) { TAV_JSQuit(); }},
    {"callBack", callBack},
    {"pollThenReply", pollThenReply},
    {"stopDevice", [](TAV_JSParameters*) { tavsim::device().stop(); }},
};

// Processes that this one started and that are there, dead or alive.
inline std::vector<pid_t> childProcesses() {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        std::string nameAndState;
        pid_t process = 0;
        pid_t parent = 0;
        if (stat >> process && std::getline(stat, nameAndState, ')') && stat >> nameAndState &&
            stat >> parent && parent == getpid()) {
            children.push_back(process);
        }
    }
    return children;
}

class PageTest : public TranscriptTest {
protected:
    struct Output {
        std::string out;
        std::string err;
    };

    void SetUp() override {
        TranscriptTest::SetUp();
        ASSERT_NE(mkdtemp(m_folder.data()), nullptr);
    }

    void TearDown() override {
        TranscriptTest::TearDown();
        EXPECT_THAT(childProcesses(), testing::IsEmpty());
        std::filesystem::remove_all(m_folder);
    }

    std::string scriptPath() const { return m_folder + "/page.js"; }

    // Starts the application as the plug-in of a page with this script.
    void openPage(const std::string& script) {
        std::ofstream(scriptPath()) << script;
        startPlugin(scriptPath());
    }

    void startPlugin(const std::string& pageFile) {
        tavsim::Profile profile;
        profile.plugin = true;
        startDevice(profile, pageFile);
        for (const auto& [name, method] : kMethods) {
            TAV_RegisterJSHandler(name, method);
        }
        ASSERT_EQ(TAV_JSRegistrationComplete(), TAV_NOERROR);
    }

    // What happens within a second and what it prints.
    Output watch(const std::function<void()>& before = [] {}) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        device.acceptStreams();
        before();
        device.advance(1000);
        return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
    }

    Output play(const std::string& script) {
        openPage(script);
        return watch();
    }

    std::string m_folder = testing::TempDir() + "/page-XXXXXX";
};

}  // namespace tavtest

#endif
