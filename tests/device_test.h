// A fresh simulated device for each test, in virtual time, with every trace line kept.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "SDL.h"
#include "simulator/interface/device.h"
#include "simulator/language/vocabulary.h"
#include "tav.h"

namespace tavtest {

// An enumeration that holds none of its constants, as a caller in C can pass it.
template <typename Enumeration>
Enumeration anyValue(int value) {
    Enumeration enumeration;
    std::memcpy(&enumeration, &value, sizeof value);
    return enumeration;
}

class DeviceTest : public testing::Test {
protected:
    void SetUp() override { startDevice({}); }

    void TearDown() override {
        TAV_Quit();
        for (const std::string& line : device.journal()) {
            EXPECT_TRUE(tavsim::hasEntryForm(line)) << line << " is not in the vocabulary";
        }
        tavsim::device().stop();
    }

    // Starts the device anew.
    void startDevice(tavsim::Profile profile, std::string pageFile = {}) {
        tavsim::Options options;
        options.virtualTime = true;
        options.pageFile = std::move(pageFile);
        std::string error;
        ASSERT_TRUE(device.start(std::move(profile), options, &error)) << error;
        device.listen("all");
        SDL_ClearError();
    }

    // The lines traced since the last call.
    std::vector<std::string> trace() {
        std::vector<std::string> lines = device.takeTrace();
        EXPECT_THAT(lines, testing::Each(testing::ContainsRegex("^tav_[f129e] [A-Za-z_]+ .")));
        return lines;
    }

    // Files of the device, named by their paths on the device.
    std::string path(const std::string& name) const { return device.root() + name; }

    void write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << content;
    }

    std::string read(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(none)";
    }

    static long openDescriptors() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    tavsim::Device& device = tavsim::device();
};

// For tests that need SDL's event queue.
class EventTest : public DeviceTest {
protected:
    void SetUp() override {
        SDL_putenv(const_cast<char*>("SDL_VIDEODRIVER=dummy"));
        ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO), 0) << SDL_GetError();
        DeviceTest::SetUp();
    }

    void TearDown() override {
        DeviceTest::TearDown();
        SDL_Quit();
    }

    // Empties the event queue and returns the codes of the user events.
    std::vector<int> userEvents() {
        std::vector<int> codes;
        for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
            if (event.type == SDL_USEREVENT) {
                codes.push_back(event.user.code);
            }
        }
        return codes;
    }
};

}  // namespace tavtest
