// Conversion between JSON and D-Bus values, in both directions.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "linux/bus/dbus_to_json.h"
#include "linux/bus/json_to_dbus.h"

using tavlinux::argumentsFromJson;
using tavlinux::jsonFromResult;
using tavlinux::Variant;

namespace {

// The arguments of a method, of which only the first has a name.
class Arguments {
public:
    explicit Arguments(const std::vector<std::string>& types) {
        std::string xml = "<node><interface name='x.y'><method name='m'>";
        const char* name = " name='a'";
        for (const std::string& type : types) {
            xml += "<arg type='" + type + "'" + std::exchange(name, "") + "/>";
        }
        xml += "</method></interface></node>";
        m_node.reset(g_dbus_node_info_new_for_xml(xml.c_str(), nullptr), g_dbus_node_info_unref);
    }

    GDBusArgInfo* const* get() const { return m_node->interfaces[0]->methods[0]->in_args; }

private:
    std::shared_ptr<GDBusNodeInfo> m_node;
};

Variant fromJson(const std::string& json, const Arguments& arguments, std::string* problem) {
    simdjson::dom::parser parser;
    return argumentsFromJson(parser.parse(json).value(), arguments.get(), problem);
}

Variant fromText(const std::string& text) {
    return tavlinux::owned(g_variant_new_parsed(text.c_str()));
}

std::string print(GVariant* variant) {
    const std::unique_ptr<char, decltype(&g_free)> text(g_variant_print(variant, TRUE), g_free);
    return text.get();
}

TEST(Json, EveryDBusValueBecomesJsonAndTheSameValueAgain) {
    const std::pair<std::string, std::string> rows[] = {
        {"true", "true"},
        {"(byte 0xff, int16 -32768, uint16 65535)", "[255,-32768,65535]"},
        {"(-2147483648, uint32 4294967295)", "[-2147483648,4294967295]"},
        {"(int64 -9223372036854775808, uint64 18446744073709551615)",
         "[-9223372036854775808,18446744073709551615]"},
        {"[5.0, -0.0, 1e300, 0.1, nan]", R"([5.0,-0.0,1e+300,0.1,"NaN"])"},
        {"{inf: -inf}", R"({"Infinity":"-Infinity"})"},
        {"<nan>", R"("NaN","a:type":"d")"},
        {"'a \"quote\" ä \\u0001'", R"("a \"quote\" ä \u0001")"},
        {"(objectpath '/org/example', signature 'a{sv}')", R"(["/org/example","a{sv}"])"},
        {"(b'\\001\\377', @ay [], @ai [], 'x', [true])", R"(["Af8A","",[],"x",[true]])"},
        {"({'k': 1}, {true: 1})", R"([{"k":1},{"true":1}])"},
        {"({uint32 5: 'x', 6: 'y'}, {1.5: 'z'})", R"([{"5":"x","6":"y"},{"1.5":"z"}])"},
        {"<1>", "1"},
        {"<int64 1>", R"(1,"a:type":"x")"},
        {"[<1>, <int64 5000000000>, <uint64 18446744073709551615>, <2.0>, <'text'>, <uint32 2>]",
         R"([1,5000000000,18446744073709551615,2.0,"text",{"type":"u","value":2}])"},
        {"<{'n': <uint32 7>, 's': <'t'>, 'in': <{'deep': <byte 1>}>}>",
         R"({"n":7,"n:type":"u","s":"t","in":{"deep":1,"deep:type":"y"}})"},
        {"[<{'type': <'u'>, 'value': <1>}>]",
         R"([{"type":"a{sv}","value":{"type":"u","value":1}}])"},
        {"({'x': <1>, 'x:type': <'u'>}, {'x': <1>, 'x': <2>})",
         R"([[["x",1],["x:type","u"]],[["x",1],["x",2]]])"},
    };
    for (const auto& [text, valueJson] : rows) {
        SCOPED_TRACE(text);
        const Variant value = fromText("(" + text + ",)");
        const Variant child(g_variant_get_child_value(value.get(), 0));
        const Arguments arguments({g_variant_get_type_string(child.get())});
        const std::optional<std::string> json = jsonFromResult(value.get(), arguments.get());
        ASSERT_TRUE(json);
        const std::string members = R"("a":)" + valueJson + "}";
        EXPECT_EQ(*json, R"({"returnValue":true,)" + members);

        std::string problem;
        const Variant again = fromJson("{" + members, arguments, &problem);
        ASSERT_TRUE(again) << problem;
        EXPECT_EQ(print(again.get()), print(value.get()));
    }
}

TEST(Json, ResultsWithoutANameAreNumbered) {
    EXPECT_EQ(jsonFromResult(fromText("(1, 'x')").get(), Arguments({"i", "s"}).get()).value_or(""),
              R"({"returnValue":true,"a":1,"arg1":"x"})");
}

TEST(Json, ArgumentsComeByNameOrByPositionAndNoneIsLost) {
    const std::string twentyLists = std::string(20, 'a') + "y";
    const std::string deep = std::string(100, '[') + std::string(100, ']');
    // The types, the JSON, and the resulting value or the problem.
    const std::tuple<std::vector<std::string>, std::string, std::string> rows[] = {
        {{"v"}, deep, "nested too deeply"},
        {{"s", "i"}, R"({"arg1":2,"a":"x"})", "('x', 2)"},
        {{"s", "i"}, R"(["x",2])", "('x', 2)"},
        {{}, "{}", "()"},
        {{}, R"({"subscribe":true})", "()"},
        {{"ay"}, "[[1,255]]", "([byte 0x01, 0xff],)"},
        {{"d"}, "[5]", "(5.0,)"},
        {{"v"}, "[2147483648]", "(<int64 2147483648>,)"},
        {{"v"}, R"([{"type":"as","value":["x"]}])", "(<['x']>,)"},
        {{"v"}, R"([{"value":[],"type":")" + twentyLists + "\"}]", "(<@" + twentyLists + " []>,)"},
        {{"v"}, R"([{"value":[],"type":")" + std::string(40, 'a') + "y\"}]", "nested too deeply"},
        {{"s", "i"}, R"({"a":"x"})", "no argument \"arg1\""},
        {{"s"}, R"(["x",2])", "there are more arguments than the method has"},
        {{"s"}, R"({"a":"x","b":2})", "there are more arguments than the method has"},
        {{"s"}, R"({"a":"x","a:type":"s"})", "there are more arguments than the method has"},
        {{"s"}, "7", "the payload is no JSON object or list"},
        {{"s"}, R"(["a\u0000b"])", R"("a\u0000b" is no value of type s)"},
        {{"o"}, R"(["no path"])", R"("no path" is no value of type o)"},
        {{"y"}, "[256]", "256 is no value of type y"},
        {{"u"}, "[-1]", "-1 is no value of type u"},
        {{"i"}, "[1.5]", "1.5 is no value of type i"},
        {{"t"}, "[-1]", "-1 is no value of type t"},
        {{"b"}, "[1]", "1 is no value of type b"},
        {{"v"}, "[null]", "null has no type on D-Bus"},
        {{"v"}, R"([{"type":"h","value":0}])", R"("h" is no type)"},
        {{"v"}, R"([{"type":"si","value":0}])", R"("si" is no type)"},
        {{"h"}, "[0]", R"(argument "a" cannot be given in JSON)"},
        {{"((("}, "[0]", R"(argument "a" cannot be given in JSON)"},
        {{"(ii)"}, "[[1]]", "[1] is no value of type (ii)"},
        {{"a{us}"}, R"([{"x":"y"}])", R"("x" is no key of type u)"},
        {{"ay"}, R"(["AA"])", R"("AA" is no value of type ay)"},
    };
    for (const auto& [types, json, result] : rows) {
        SCOPED_TRACE(json);
        std::string problem;
        const Variant tuple = fromJson(json, Arguments(types), &problem);
        EXPECT_EQ(tuple ? print(tuple.get()) : problem, result);
    }
}

}  // namespace
