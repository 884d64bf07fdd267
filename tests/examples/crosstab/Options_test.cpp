#include "examples/crosstab/Options.h"

#include "examples/crosstab/Failure.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace crosstab;
using Names = std::vector<std::string>;

Options parsed(std::vector<char const*> words) {
    words.insert(words.begin(), "omtree-crosstab");
    return parseOptions(static_cast<int>(words.size()), words.data());
}

TEST(Options, NamesAreSeparatedByCommas) {
    EXPECT_EQ(parsed({"f.csv", "--rows", "A,B b, C"}).rows, (Names{"A", "B b", " C"}));
}

TEST(Options, NamesBetweenQuotesMayHoldCommasAndQuotes) {
    EXPECT_EQ(parsed({"f.csv", "--columns=\"a,b\",\"say \"\"no\"\"\",c\"d"}).columns,
              (Names{"a,b", "say \"no\"", "c\"d"}));
}

TEST(Options, EmptyNamesAreNames) {
    EXPECT_EQ(parsed({"f.csv", "--layers", ",A,"}).layers, (Names{"", "A", ""}));
    EXPECT_EQ(parsed({"f.csv", "--layers", ""}).layers, (Names{""}));
}

TEST(Options, GroupsNameColumnGroupAndValues) {
    Options const options =
        parsed({"f.csv", "--rows=A", "--group=A=old:x,y", "--group", "\"B=b\"=\"n:m\":\"1,2\",3:4"});
    ASSERT_EQ(options.groups.size(), 2U);
    EXPECT_EQ(options.groups[0].column, "A");
    EXPECT_EQ(options.groups[0].name, "old");
    EXPECT_EQ(options.groups[0].values, (Names{"x", "y"}));
    EXPECT_EQ(options.groups[1].column, "B=b");
    EXPECT_EQ(options.groups[1].name, "n:m");
    EXPECT_EQ(options.groups[1].values, (Names{"1,2", "3:4"}));
}

// A repeatable option must not swallow the file's name.
TEST(Options, RepeatableOptionsTakeOneWordEach) {
    Options const options = parsed({"--rows=A", "--footnote", "one", "--group", "A=g:x", "f.csv", "--footnote=[two]"});
    EXPECT_EQ(options.file, "f.csv");
    EXPECT_EQ(options.footnotes, (Names{"one", "[two]"}));
}

TEST(Options, AColumnWithoutANameCanBeSummed) {
    EXPECT_TRUE(parsed({"f.csv", "--rows=A", "--sum", ""}).sums);
    EXPECT_FALSE(parsed({"f.csv", "--rows=A"}).sums);
}

TEST(Options, HelpIsAskedForWhateverElseIsMissing) {
    EXPECT_THROW(parsed({"--help"}), HelpAsked);
    EXPECT_THROW(parsed({"-h", "--rows=A"}), HelpAsked);
}

TEST(Options, WithoutAnAxisThereIsNothingToDo) { EXPECT_THROW(parsed({"f.csv", "--sum=A"}), Failure); }

} // namespace
