// Services of a profile that depend on the request, and profiles that extend others.
#include <fstream>

#include "platform/hkscaller.h"
#include "platform/napp.h"
#include "transcript.h"

namespace {

class ProfileServicesTest : public tavtest::TranscriptTest {
protected:
    void startWith(const std::string& services) {
        std::string error;
        const auto profile =
            tavsim::parseProfile(R"({"services":{)" + services + "}}", "p.json", &error);
        ASSERT_TRUE(profile) << error;
        startDevice(*profile);
    }

    int call(const char* payload) {
        return bus.ksCallWithResponse("a://b", payload, false, receive, this);
    }

    static void receive(int, const char*, void* self) {
        auto* test = static_cast<ProfileServicesTest*>(self);
        test->times.push_back(test->device.now());
    }

    HKSCaller& bus = *NApp_GetKSCaller();
    std::vector<tavsim::Milliseconds> times;
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
    const char* payloads[] = {R"({"id":"gold-1","count":3.0})",
                              R"({"id":"gold-1","count":4})",
                              R"({"id":"gold-2"})",
                              R"({"id":"gold-3"})",
                              R"({"item":{"price":2,"tags":["a","new"]}})",
                              R"({"flag":true})",
                              R"({"id":"q","text":"\"},{\"\u0001"})",
                              R"({"count":[1]})",
                              R"({"flag":false})",
                              "no JSON",
                              R"({"text":"silent"})"};
    for (const char* payload : payloads) {
        call(payload);
        show(payload, [&] { device.advance(1); });
    }
    CALL(device.openCalls().size());
}

TEST_F(ProfileServicesTest, SubscriptionsAreFilledWhenEachReplyGoesOut) {
    startWith(R"("a://b":{"match":[{"when":{"subscribe":true},
        "repeat":true,"reply":"${count} at ${now}"}],"delay":10,"every":10})");
    const int token =
        bus.ksCallWithSubscription("a://b", R"({"subscribe":true})", false, receive, this);
    CALL(device.advance(30));
    bus.ksCancelCall(token);
    CALL(device.advance(30));
}

TEST_F(ProfileServicesTest, DelaysAreSpreadAlikeWithTheSameSeed) {
    const auto delaysWith = [&](const std::string& seed) {
        startWith(R"("a://b":{"delay":[100,200],"reply":1,"seed":)" + seed + "}");
        times.clear();
        for (int i = 0; i < 50; ++i) {
            call("{}");
        }
        device.advance(200);
        EXPECT_EQ(times.size(), 50U);
        EXPECT_GE(times.front(), 100);
        return times;
    };
    const std::vector<tavsim::Milliseconds> delays = delaysWith("5");
    EXPECT_LT(delays.front() + 50, delays.back());
    EXPECT_EQ(delaysWith("5"), delays);
    EXPECT_NE(delaysWith("6"), delays);
}

class ExtendingTest : public tavtest::TranscriptTest {
protected:
    std::string path(const std::string& name) const { return device.root() + "/data/" + name; }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name)) << content;
    }

    std::optional<tavsim::Profile> read(const std::string& name) {
        error.clear();
        return tavsim::readProfile(path(name), &error);
    }

    std::string error;
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
    EXPECT_THAT(profile->refused, testing::ElementsAre("keyboard"));
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
    for (const char* file : {"wrong.json", "here.json", "missing.json", "d4.json"}) {
        EXPECT_FALSE(read(file));
        note(cut(error));
    }
    EXPECT_TRUE(read("d5.json")) << error;
}

}  // namespace
