#include "Base/GCStringVector.h"

#include "Base/GCException.h"

#include <gmock/gmock.h>

#include <sstream>

namespace {

using GenICam::gcstring;
using GenICam::gcstring_vector;

TEST(GcString, TakesEveryKindOfTextAndCountsNullAsEmpty) {
    const char *null = nullptr;
    EXPECT_TRUE(gcstring(null).empty());
    EXPECT_EQ("abc", gcstring(std::string("abc")));
    EXPECT_EQ("xxx", gcstring(3, 'x'));
    EXPECT_TRUE(gcstring("") == null);
    const gcstring withZero(std::string("a\0b", 3));
    EXPECT_EQ(3u, withZero.length());
    EXPECT_NE("a", withZero);
    EXPECT_STREQ("a", withZero);
}

TEST(GcString, JoinsTextsAndCharacters) {
    gcstring text("b");
    text += text;
    text.append(2, 'c').append(gcstring("d"));
    EXPECT_EQ("abbccde", "a" + text + 'e');
    EXPECT_EQ("<bbccd>", '<' + text + ">");
    EXPECT_EQ("zz", text.assign(2, 'z'));
    EXPECT_EQ("zzzz", text + gcstring(text));
}

TEST(GcString, OrdersByUnsignedBytes) {
    EXPECT_LT(gcstring("B"), gcstring("a"));
    EXPECT_LT(gcstring("a"), "\xC3\xA4");
    EXPECT_GT("ab", gcstring("a"));
    EXPECT_NE(gcstring("a"), gcstring("A"));
}

TEST(GcString, FindsCharactersTextsAndSets) {
    const gcstring text("a=b==c");
    const gcstring key("==x");
    EXPECT_EQ(1u, text.find('='));
    EXPECT_EQ(3u, text.find("=="));
    EXPECT_EQ(gcstring::npos, text.find(key));
    EXPECT_EQ(3u, text.find(key, 2, 2));
    EXPECT_EQ(gcstring::npos, text.find('=', 100));
    EXPECT_EQ(5u, text.find_first_of("xc"));
    EXPECT_EQ(2u, text.find_first_not_of("a="));
}

TEST(GcString, CutsPiecesAndRefusesOnesBeyondTheEnd) {
    const gcstring text("camera");
    EXPECT_EQ("mer", text.substr(2, 3));
    EXPECT_EQ("ra", text.substr(4));
    EXPECT_EQ("", text.substr(6));
    EXPECT_THROW((void)text.substr(7), GenICam::OutOfRangeException);
}

TEST(GcString, StreamsWordsAndLines) {
    std::istringstream input("one two\nthree four\n");
    gcstring word, rest, line;
    input >> word;
    getline(input, rest);
    getline(input, line);
    std::ostringstream output;
    output << word << '|' << rest << '|' << line;
    EXPECT_EQ("one| two|three four", output.str());
}

TEST(GcStringVector, EditsByIndexAndIterator) {
    gcstring_vector list(1, "b");
    list.push_back("d");
    list.insert(std::size_t{1}, "c");
    list.insert(list.begin(), "a");
    EXPECT_THAT(list, testing::ElementsAre("a", "b", "c", "d"));
    list.erase(0);
    list.erase(list.begin());
    EXPECT_THAT(list, testing::ElementsAre("c", "d"));
    EXPECT_TRUE(list.contains("d"));
    EXPECT_FALSE(list.contains("a"));
    EXPECT_THROW((void)list.at(2), std::out_of_range);
}

} // namespace
