// Services of a profile that depend on the request, and profiles that extend others.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "device_test.h"
#include "platform/hkscaller.h"
#include "platform/napp.h"

namespace {

using testing::ElementsAre;

class ProfileServicesTest : public tavtest::DeviceTest {
protected:
    void startWith(const std::string& services) {
        std::string error;
        const auto profile =
            tavsim::parseProfile(R"({"services":{)" + services + "}}", "p.json", &error);
        ASSERT_TRUE(profile) << error;
        startDevice(*profile);
    }

    int call(const std::string& payload) {
        return bus.ksCallWithResponse("a://b", payload.c_str(), false, receive, this);
    }

    int subscribe(const std::string& payload) {
        return bus.ksCallWithSubscription("a://b", payload.c_str(), false, receive, this);
    }

    // What is received in this time.
    std::vector<std::string> after(int milliseconds) {
        device.advance(milliseconds);
        return std::exchange(m_received, {});
    }

    static void receive(int, const char* text, void* self) {
        auto* test = static_cast<ProfileServicesTest*>(self);
        test->m_received.emplace_back(text != nullptr ? text : "(none)");
        test->times.push_back(test->device.now());
    }

    HKSCaller& bus = *NApp_GetKSCaller();
    std::vector<tavsim::Milliseconds> times;

private:
    std::vector<std::string> m_received;
};

TEST_F(ProfileServicesTest, TheFirstCaseThatFitsAnswersWithWhatThePayloadHas) {
    startWith(R"("a://b":{"match":[
        {"when":{"id":"gold-*","count":3},"reply":"three"},
        {"when":{"id":"gold-*"},"replies":["first ${id}","second ${now}"]},
        {"when":{"item.tags.1":"new","item.price":2},"reply":{"got":"${item}","tag":"<${item.tags.0}>"}},
        {"when":{"id":null,"flag":true},"error":{"code":7,"text":"no ${flag} \"id\""}},
        {"when":{"id":"q"},"reply":["${id}","${no such}","-${no such}-","$${id}","${id","a\"${text}"]},
        {"when":{"count":"*"},"reply":{"${id}":"${count}"}},
        {"when":{"text":"silent"}}],
        "reply":{"count":"${count}","n":1}})");
    const struct {
        const char* payload;
        const char* reply;
    } rows[] = {
        {R"({"id":"gold-1","count":3.0})", "three"},
        {R"({"id":"gold-1","count":4})", "first gold-1"},
        {R"({"id":"gold-2"})", "second 2"},
        {R"({"id":"gold-3"})", "second 3"},
        {R"({"item":{"price":2,"tags":["a","new"]}})",
         R"({"got":{"price":2,"tags":["a","new"]},"tag":"<a>"})"},
        {R"({"flag":true})", R"({"returnValue":false,"errorCode":7,"errorText":"no true \"id\""})"},
        {R"({"id":"q","text":"\"},{\"\u0001"})",
         R"(["q",null,"--","${id}","${id","a\"\"},{\"\u0001"])"},
        {R"({"count":[1]})", R"({"${id}":[1]})"},
        {R"({"flag":false})", R"({"count":9,"n":1})"},
        {"no JSON", R"({"count":10,"n":1})"},
    };
    for (const auto& row : rows) {
        call(row.payload);
        EXPECT_THAT(after(1), ElementsAre(row.reply)) << row.payload;
    }
    call(R"({"text":"silent"})");
    EXPECT_THAT(after(1000), ElementsAre());
    EXPECT_EQ(device.openCalls().size(), 1U);
}

TEST_F(ProfileServicesTest, SubscriptionsAreFilledWhenEachReplyGoesOut) {
    startWith(R"("a://b":{"match":[{"when":{"subscribe":true},
        "delay":10,"every":10,"repeat":true,"reply":"${count} at ${now}"}]})");
    const int token = subscribe(R"({"subscribe":true})");
    EXPECT_THAT(after(30), ElementsAre("1 at 10", "2 at 20", "3 at 30"));
    bus.ksCancelCall(token);
    EXPECT_THAT(after(30), ElementsAre());
}

TEST_F(ProfileServicesTest, DelaysAreSpreadAlikeWithTheSameSeed) {
    const auto delaysWith = [&](const std::string& seed) {
        startWith(R"("a://b":{"delay":[100,200],"reply":1,"seed":)" + seed + "}");
        times.clear();
        for (int i = 0; i < 50; ++i) {
            call("{}");
        }
        EXPECT_EQ(after(99).size(), 0U);
        EXPECT_EQ(after(101).size(), 50U);
        return times;
    };
    const std::vector<tavsim::Milliseconds> delays = delaysWith("5");
    EXPECT_LT(delays.front() + 50, delays.back());
    EXPECT_EQ(delaysWith("5"), delays);
    EXPECT_NE(delaysWith("6"), delays);
}

class ExtendingTest : public testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(m_folder); }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    void write(const std::string& name, const std::string& content) {
        std::ofstream(m_folder + name) << content;
    }

    // The error names files as they were found, so their folder is cut off.
    std::optional<tavsim::Profile> read(const std::string& name) {
        error.clear();
        const auto profile = tavsim::readProfile(m_folder + name, &error);
        for (size_t at; (at = error.find(m_folder)) != std::string::npos;) {
            error.erase(at, m_folder.size());
        }
        return profile;
    }

    std::string error;

private:
    const std::string m_folder =
        testing::TempDir() + "/extending-" + std::to_string(getpid()) + "/";
};

TEST_F(ExtendingTest, FieldsReplaceThoseOfTheProfileThatIsExtended) {
    write("base.json", R"({"extends":"quern","title":"Base","refuse":["touch"],
        "preferences":{"deviceName":"Base","region":1},"items":[{"id":"a"},{"id":"b"}],
        "compass":{"interval":7,"turn":9},
        "services":{"a://1":{"reply":1,"delay":5},"a://2":{"reply":2}}})");
    write("top.json", R"({"title":"Top","extends":"./base.json","refuse":["keyboard"],
        "preferences":{"region":2},"items":[{"id":"c"}],"compass":{"turn":3},
        "services":{"a://1":{"reply":3}}})");
    const std::optional<tavsim::Profile> profile = read("top.json");
    ASSERT_TRUE(profile) << error;
    EXPECT_EQ(profile->name + " " + profile->title + " " + *profile->machine, "top Top quern");
    EXPECT_THAT(profile->refused, ElementsAre("keyboard"));
    EXPECT_EQ(profile->preferences->at("deviceName") + profile->preferences->at("region"),
              "\"Base\"2");
    EXPECT_EQ(profile->items.size(), 1U);
    EXPECT_EQ(profile->compass.interval, 7);
    EXPECT_EQ(profile->compass.turn, 3);
    EXPECT_EQ(profile->services.at("a://1").replies, std::vector<tavsim::Reply>{"3"});
    EXPECT_EQ(profile->services.at("a://1").delay, 0);
    EXPECT_EQ(profile->services.at("a://2").replies, std::vector<tavsim::Reply>{"2"});
    EXPECT_TRUE(profile->services.contains("vire://com.vire.battery/status"));
}

TEST_F(ExtendingTest, WhatCannotBeExtendedIsAnError) {
    write("wrong.json", R"({"extends":"broken.json"})");
    write("broken.json", R"({"machine":5})");
    write("here.json", R"({"extends":"there.json"})");
    write("there.json", R"({"extends":"./here.json"})");
    for (int i = 0; i < 20; ++i) {
        write("d" + std::to_string(i) + ".json",
              R"({"extends":"d)" + std::to_string(i + 1) + R"(.json"})");
    }
    write("d20.json", "{}");
    const struct {
        const char* file;
        const char* error;
    } rows[] = {
        {"wrong.json", "wrong.json: extends: broken.json: machine: must be a string"},
        {"here.json", "here.json: extends: there.json: extends: the profile extends itself"},
        {"missing.json", "missing.json: no such device profile"},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(read(row.file));
        EXPECT_EQ(error, row.error);
    }
    EXPECT_TRUE(read("d5.json")) << error;
    EXPECT_FALSE(read("d4.json"));
    EXPECT_THAT(error, testing::EndsWith("more than 16 profiles extend one another"));
}

}  // namespace
