// Types that the first models do not use yet, and the texts of JSON.

#include "tools/pyruxctl/failure.h"
#include "tools/pyruxctl/script.h"
#include "tools/pyruxctl/text.h"
#include "tools/pyruxctl/value.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace pyrux::ctl;

enum class Mode : std::uint8_t { off, on };

#pragma pack(push, 1)
struct Mixed {
    std::uint8_t first;
    float ratio;
    std::int16_t offset;
    Mode mode;
    std::uint8_t grid[2][3];
    std::uint64_t big;
};
#pragma pack(pop)

template <class T>
Json jsonOf(const T& value)
{
    return toJson(typeOf<T>, reinterpret_cast<const std::byte*>(&value));
}

template <class T>
T fromText(const char* json)
{
    T value{};
    fromJson(typeOf<T>, Json::parse(json), reinterpret_cast<std::byte*>(&value), "value");
    return value;
}

template <class T>
T fromWordOf(const char* word)
{
    T value{};
    fromWord(typeOf<T>, word, reinterpret_cast<std::byte*>(&value), "value");
    return value;
}

template <class T>
std::string wordError(const char* word)
{
    try {
        fromWordOf<T>(word);
        return "none";
    } catch (const UsageError& error) {
        return error.what();
    }
}

} // namespace

template <>
struct pyrux::ctl::Layout<Mixed> {
    using R = Mixed;
    static constexpr Field fields[]{FIELD(first), FIELD(ratio), FIELD(offset),
                                    FIELD(mode),  FIELD(grid),  FIELD(big)};
};

namespace {

TEST(Values, ofEveryKindGoBothWays)
{
    constexpr auto text = R"({"first":255,"ratio":3.86,"offset":-32768,"mode":1,"grid":[[1,2,3],[4,5,6]],)"
                          R"("big":18446744073709551615})";
    const auto mixed = fromText<Mixed>(text);
    EXPECT_EQ(mixed.first, 255);
    EXPECT_EQ(+mixed.ratio, 3.86f);
    EXPECT_EQ(+mixed.offset, -32768);
    EXPECT_EQ(mixed.mode, Mode::on);
    EXPECT_EQ(mixed.grid[1][0], 4);
    EXPECT_EQ(+mixed.big, 18446744073709551615u);
    EXPECT_EQ(toText(jsonOf(mixed)), text);
}

TEST(Values, haveTheRangeOfTheirType)
{
    EXPECT_EQ(fromWordOf<std::int8_t>("-128"), -128);
    EXPECT_EQ(fromWordOf<std::int8_t>("0x7F"), 127);
    EXPECT_EQ(wordError<std::int8_t>("-129"), "value: -129 is not in -128 to 127");
    EXPECT_EQ(wordError<std::int8_t>("128"), "value: 128 is not in -128 to 127");
    EXPECT_EQ(fromWordOf<std::int64_t>("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(fromWordOf<std::uint32_t>("4294967295"), 4294967295u);
    EXPECT_EQ(wordError<std::uint32_t>("4294967296"), "value: 4294967296 is not in 0 to 4294967295");
    EXPECT_EQ(fromWordOf<float>("-0.5"), -0.5f);
    EXPECT_EQ(fromWordOf<double>("1e3"), 1000.0);
    EXPECT_EQ(wordError<float>("much"), "value: \"much\" is not a number");
}

TEST(Values, tellWhatTheyTake)
{
    EXPECT_EQ(describe(typeOf<std::uint16_t[13]>), "13 of 0 to 65535");
    EXPECT_EQ(describe(typeOf<char[40]>), "text of at most 40 bytes");
    EXPECT_EQ(describe(typeOf<std::int8_t>), "-128 to 127");
    EXPECT_EQ(describe(typeOf<Mixed>),
              "{first: 0 to 255, ratio: a number, offset: -32768 to 32767, mode: 0 to 255, "
              "grid: 2 of 3 of 0 to 255, big: 0 to 18446744073709551615}");
}

TEST(Values, stayOnOneLineWhileTheyFit)
{
    EXPECT_EQ(toPrettyText(Json::parse(R"([1,{"a":2}])")), R"([1,{"a":2}])");
    EXPECT_EQ(toPrettyText(Json(std::string(90, 'x'))), '"' + std::string(90, 'x') + '"');
    const Json wide = {{"a", std::string(60, 'x')}, {"b", {1, 2, 3}}, {"c", std::string(60, 'y')}};
    EXPECT_EQ(toPrettyText(wide), "{\n  \"a\": \"" + std::string(60, 'x') +
                                      "\",\n  \"b\": [1,2,3],\n  \"c\": \"" + std::string(60, 'y') + "\"\n}");
    EXPECT_EQ(toText(Json("\xFF")), "\"\xEF\xBF\xBD\""); // what is no UTF-8 does not end the program
}

TEST(ScriptWords, areSplitAtBlanksOutsideQuotes)
{
    using Words = std::vector<std::string>;
    EXPECT_EQ(splitWords("  rd210  changeDpiLevel\t3 "), (Words{"rd210", "changeDpiLevel", "3"}));
    EXPECT_EQ(splitWords(R"(match '{"a": [1, 2]}' x)"), (Words{"match", R"({"a": [1, 2]})", "x"}));
    EXPECT_EQ(splitWords(R"(a"b c"d '' "it's")"), (Words{"ab cd", "", "it's"}));
    EXPECT_EQ(splitWords(R"(unplug \\?\hid#vid_3a7e # comment)"), (Words{"unplug", R"(\\?\hid#vid_3a7e)"}));
    EXPECT_EQ(splitWords("# all of it"), Words{});
    EXPECT_EQ(splitWords(""), Words{});
    EXPECT_THROW(splitWords("'open"), UsageError);
}

TEST(Text, ofPathsIgnoresCase)
{
    EXPECT_TRUE(equalIgnoringCase(R"(\\?\HID#VID_3A7E)", R"(\\?\hid#vid_3a7e)"));
    EXPECT_FALSE(equalIgnoringCase("abc", "abcd"));
    EXPECT_EQ(upperCase("mi_01&Col02{z}"), "MI_01&COL02{Z}");
    EXPECT_EQ(hexadecimal(0x3A7E, 4), "3a7e");
    EXPECT_EQ(hexadecimal(0x9, 4), "0009");
}

} // namespace
