// Services of a profile that depend on the request, and profiles that extend others.
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
    for (const std::string& payload :
         split(R"({"id":"gold-1","count":3.0}|{"id":"gold-1","count":4}|{"id":"gold-2"}|)"
               R"({"id":"gold-3"}|{"item":{"price":2,"tags":["a","new"]}}|{"flag":true}|)"
               R"({"id":"q","text":"\"},{\"\u0001"}|{"count":[1]}|{"flag":false}|no JSON|)"
               R"({"text":"silent"})")) {
        call("a://b", payload);
        show(payload, [&] { device.advance(1); });
    }
    CALL(device.openCalls().size());
}

TEST_F(ProfileServicesTest, SubscriptionsAreFilledWhenEachReplyGoesOut) {
    startWith(R"("a://b":{"match":[{"when":{"subscribe":true},
        "repeat":true,"reply":"${count} at ${now}"}],"delay":10,"every":10})");
    const int token = subscribe("a://b", R"({"subscribe":true})");
    CALL(device.advance(30));
    bus.ksCancelCall(token);
    CALL(device.advance(30));
}

TEST_F(ProfileServicesTest, DelaysAreSpreadAlikeWithTheSameSeed) {
    const auto repliesWith = [&](const std::string& seed) {
        startWith(R"("a://b":{"delay":[100,200],"reply":1,"seed":)" + seed + "}");
        for (int i = 0; i < 50; ++i) {
            call("a://b");
        }
        device.advance(99);
        EXPECT_EQ(device.journal().size(), 50U);
        std::vector<size_t> lines;
        for (int time = 100; time <= 200; ++time) {
            device.advance(1);
            lines.push_back(device.journal().size());
        }
        EXPECT_LT(lines[50], 100U);
        EXPECT_EQ(lines.back(), 100U);
        return lines;
    };
    const auto replies = repliesWith("5");
    EXPECT_EQ(repliesWith("5"), replies);
    EXPECT_NE(repliesWith("6"), replies);
}

using ExtendingTest = tavtest::TranscriptTest;

TEST_F(ExtendingTest, FieldsReplaceThoseOfTheProfileThatIsExtended) {
    write("/base.json", R"({"extends":"quern","title":"Base","refuse":["touch"],
        "preferences":{"deviceName":"Base","region":1},"items":[{"id":"a"},{"id":"b"}],
        "compass":{"interval":7,"turn":9},
        "services":{"a://1":{"reply":1,"delay":5},"a://2":{"reply":2}}})");
    write("/top.json", R"({"title":"Top","extends":"./base.json","refuse":["keyboard"],
        "preferences":{"region":2},"items":[{"id":"c"}],"compass":{"turn":3},
        "services":{"a://1":{"reply":3}}})");
    std::string error;
    const auto profile = tavsim::readProfile(path("/top.json"), &error);
    ASSERT_TRUE(profile) << error;
    EXPECT_EQ(join(profile->name, ' ', profile->title, ' ', *profile->machine), "top Top quern");
    EXPECT_EQ(join(profile->items.size(), ' ', profile->compass.interval, ' ',
                   profile->compass.turn, ' ', profile->services.at("a://1").delay, ' ',
                   profile->preferences->at("deviceName"), profile->preferences->at("region")),
              "1 7 3 0 \"Base\"2");
    EXPECT_THAT(profile->refused, testing::ElementsAre("keyboard"));
    for (const auto& [uri, reply] : {std::pair("a://1", "3"), {"a://2", "2"}}) {
        EXPECT_EQ(profile->services.at(uri).replies, std::vector<tavsim::Reply>{reply});
    }
    EXPECT_TRUE(profile->services.contains("vire://com.vire.battery/status"));
}

TEST_F(ExtendingTest, WhatCannotBeExtendedIsAnError) {
    write("/wrong.json", R"({"extends":"broken.json"})");
    write("/broken.json", R"({"machine":5})");
    write("/here.json", R"({"extends":"there.json"})");
    write("/there.json", R"({"extends":"./here.json"})");
    for (int i = 0; i < 20; ++i) {
        write("/d" + std::to_string(i) + ".json",
              R"({"extends":"d)" + std::to_string(i + 1) + R"(.json"})");
    }
    write("/d20.json", "{}");
    std::string error;
    for (const char* file : {"/wrong.json", "/here.json", "/missing.json", "/d4.json"}) {
        EXPECT_FALSE(tavsim::readProfile(path(file), &error));
        note(cut(error));
    }
    EXPECT_TRUE(tavsim::readProfile(path("/d5.json"), &error)) << error;
}

}  // namespace
