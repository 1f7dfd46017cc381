// One value of a reply, read by the library, by simdjson below it, and by other parsers.
#include <cjson/cJSON.h>
#include <json-c/json.h>
#include <rapidjson/document.h>
#include <simdjson.h>

#include "bench/bench_device.h"

namespace {

using tavbench::expect;

// The value that is read is the last member, 1.5 in each reply.
struct Reply {
    const char* name;
    const char* key;
    std::string text;
};

constexpr double kValue = 1.5;

constexpr char kStatus[] =
    R"({"returnValue":true,"percent":72,"charging":false,"source":"battery",)"
    R"("note":"the charger was taken away about one hour ago","current":1.5})";

constexpr char kFix[] =
    R"({"errorCode":0,"latitude":52.5201,"longitude":13.4062,"altitude":34,"horizAccuracy":6.0,)"
    R"("vertAccuracy":10.0,"heading":86.5,"velocity":1.5})";

// A list of items to buy, of exactly that many bytes.
std::string itemsReply(size_t size) {
    const std::string end = R"("total":1.5})";
    std::string reply = R"({"returnValue":true,"items":[)";
    for (int id = 100;; ++id) {
        const std::string item = R"({"itemId":"levels-)" + std::to_string(id) +
                                 R"(","title":"Ten extra levels","price":"0.99"})";
        if (reply.size() + item.size() + end.size() + 20 > size) {
            break;
        }
        reply += reply.back() == '[' ? "" : ",";
        reply += item;
    }
    reply += R"(],"note":")";
    reply.append(size - reply.size() - end.size() - 2, 'x');
    return reply + "\"," + end;
}

double readWithLibtav(const Reply& reply) {
    const TAV_ServiceParameters parameters = {reply.text.c_str(), 0, 0};
    return TAV_GetParamDouble(&parameters, reply.key);
}

simdjson::dom::parser g_parser;

double readWithSimdjson(const Reply& reply) {
    double value = 0.0;
    const auto error = g_parser.parse(reply.text.data(), reply.text.size())[reply.key].get(value);
    return error == simdjson::SUCCESS ? value : 0.0;
}

double readWithRapidjson(const Reply& reply) {
    rapidjson::Document document;
    document.Parse(reply.text.data(), reply.text.size());
    const auto member = document.FindMember(reply.key);
    return member != document.MemberEnd() ? member->value.GetDouble() : 0.0;
}

double readWithCjson(const Reply& reply) {
    cJSON* root = cJSON_ParseWithLength(reply.text.data(), reply.text.size());
    const double value = cJSON_GetNumberValue(cJSON_GetObjectItemCaseSensitive(root, reply.key));
    cJSON_Delete(root);
    return value;
}

double readWithJsonc(const Reply& reply) {
    json_object* root = json_tokener_parse(reply.text.c_str());
    const double value = json_object_get_double(json_object_object_get(root, reply.key));
    json_object_put(root);
    return value;
}

struct Reader {
    const char* name;
    double (*read)(const Reply& reply);
};

constexpr Reader kReaders[] = {
    {"libtav", readWithLibtav}, {"simdjson", readWithSimdjson}, {"rapidjson", readWithRapidjson},
    {"cjson", readWithCjson},   {"jsonc", readWithJsonc},
};

void readReply(benchmark::State& state, const Reply& reply, const Reader& reader) {
    double value = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(value = reader.read(reply));
    }
    expect(state, value == kValue, "the value was not read");
}

bool registerAll() {
    const Reply replies[] = {{"status_138", "current", kStatus},
                             {"fix_138", "velocity", kFix},
                             {"items_800", "total", itemsReply(800)},
                             {"items_96000", "total", itemsReply(96000)}};
    static_assert(sizeof kStatus == 138 + 1 && sizeof kFix == 138 + 1);
    for (const Reply& reply : replies) {
        for (const Reader& reader : kReaders) {
            const std::string name = std::string("reply/") + reply.name + "/" + reader.name;
            benchmark::RegisterBenchmark(name.c_str(), [reply, reader](benchmark::State& state) {
                readReply(state, reply, reader);
            });
        }
    }
    return true;
}

[[maybe_unused]] const bool g_registered = registerAll();

}  // namespace
