#include "examples/crosstab/CsvReader.h"

#include "examples/crosstab/Failure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace crosstab;
using namespace std::string_literals;

using Record = std::vector<std::string>;
using Records = std::vector<Record>;

/// Gives a text in pieces of at most so many bytes.
CsvReader::Source inPieces(std::string text, std::size_t most) {
    return [text = std::move(text), most, position = std::size_t{0}](char* bytes, std::size_t size) mutable {
        std::size_t const length = std::min({most, size, text.size() - position});
        std::memcpy(bytes, text.data() + position, length);
        position += length;
        return length;
    };
}

/// Header and records of a text, read in pieces of every size up to its own; they must not make a difference.
Records recordsOf(std::string const& text) {
    Records first;
    for (std::size_t most = text.size(); most > 0; --most) {
        CsvReader reader("data.csv", inPieces(text, most));
        Records records{reader.header()};
        while (reader.next()) {
            records.push_back(reader.fields());
        }
        if (most == text.size()) {
            first = records;
        }
        EXPECT_EQ(records, first) << "in pieces of " << most;
    }
    return first;
}

std::string failureOf(std::string const& text) {
    std::string first;
    for (std::size_t most = std::max<std::size_t>(text.size(), 1); most > 0; --most) {
        std::string message = "none";
        try {
            CsvReader reader("data.csv", inPieces(text, most));
            while (reader.next()) {
            }
        } catch (Failure const& failure) {
            message = failure.what();
        }
        if (first.empty()) {
            first = message;
        }
        EXPECT_EQ(message, first) << "in pieces of " << most;
    }
    return first;
}

TEST(CsvReader, ReadsHeaderAndRecords) {
    EXPECT_EQ(recordsOf("A,B\n1,2\n3,4\n"), (Records{{"A", "B"}, {"1", "2"}, {"3", "4"}}));
}

TEST(CsvReader, EveryKindOfLineBreakEndsARecord) {
    Records const wanted{{"A", "B"}, {"1", "2"}, {"3", "4"}};
    EXPECT_EQ(recordsOf("A,B\r\n1,2\r\n3,4\r\n"), wanted);
    EXPECT_EQ(recordsOf("A,B\r1,2\r3,4\r"), wanted);
    EXPECT_EQ(recordsOf("A,B\r\n1,2\n3,4\r"), wanted);
}

TEST(CsvReader, TheLastRecordMayEndWithTheFile) {
    EXPECT_EQ(recordsOf("A,B\n1,2"), (Records{{"A", "B"}, {"1", "2"}}));
    EXPECT_EQ(recordsOf("A,B\n1,"), (Records{{"A", "B"}, {"1", ""}}));
    EXPECT_EQ(recordsOf("A,B\n1,\"2\""), (Records{{"A", "B"}, {"1", "2"}}));
    EXPECT_EQ(recordsOf("A,B"), (Records{{"A", "B"}}));
}

TEST(CsvReader, BlankLinesArePassedOver) {
    EXPECT_EQ(recordsOf("\n\r\nA\n\n\n1\r\n\r\n2\n\n"), (Records{{"A"}, {"1"}, {"2"}}));
}

// A file of one column can hold empty values only between quotes.
TEST(CsvReader, APairOfQuotesIsARecordOfOneEmptyField) {
    EXPECT_EQ(recordsOf("A\n\"\"\n\"\"\n"), (Records{{"A"}, {""}, {""}}));
}

TEST(CsvReader, EmptyFieldsAreKept) {
    EXPECT_EQ(recordsOf("A,,C\n,,\n\"\",x,\"\"\n"), (Records{{"A", "", "C"}, {"", "", ""}, {"", "x", ""}}));
}

TEST(CsvReader, QuotedFieldsHoldCommasQuotesAndLineBreaks) {
    EXPECT_EQ(recordsOf("A,B\n\"x,y\",\"say \"\"no\"\"\"\n\"one\ntwo\r\nthree\",\"\"\"\"\n"),
              (Records{{"A", "B"}, {"x,y", "say \"no\""}, {"one\ntwo\r\nthree", "\""}}));
}

// The parser strips blanks unless told not to.
TEST(CsvReader, BlanksBelongToTheirField) {
    EXPECT_EQ(recordsOf(" A ,B\n  x,\ty \n\" \",\" z \"\n"), (Records{{" A ", "B"}, {"  x", "\ty "}, {" ", " z "}}));
}

TEST(CsvReader, TheByteOrderMarkIsNotPartOfTheFirstName) {
    EXPECT_EQ(recordsOf("\xEF\xBB\xBF"
                        "A,B\n1,2\n"),
              (Records{{"A", "B"}, {"1", "2"}}));
    EXPECT_EQ(recordsOf("\xEF\xBB\xBF\"A\",B\n1,2\n"), (Records{{"A", "B"}, {"1", "2"}}));
}

TEST(CsvReader, AMarkAnywhereElseIsText) {
    EXPECT_EQ(recordsOf("A\n\xEF\xBB\xBF"
                        "1\n"),
              (Records{{"A"},
                       {"\xEF\xBB\xBF"
                        "1"}}));
}

TEST(CsvReader, BytesAreHandedOnAsTheyAre) { EXPECT_EQ(recordsOf("A\n\xFF\0z\n"s), (Records{{"A"}, {"\xFF\0z"s}})); }

TEST(CsvReader, FieldsLongerThanTheBufferAreRead) {
    std::string const field(200'000, 'x');
    CsvReader reader("data.csv", inPieces("A,B\n\"" + field + "\n\"," + field + "\n1,2\n", 1U << 20U));
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.fields(), (Record{field + "\n", field}));
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.fields(), (Record{"1", "2"}));
    EXPECT_EQ(reader.lineOf(0), 4U);
    EXPECT_FALSE(reader.next());
}

TEST(CsvReader, FieldsKnowTheLineOnWhichTheyBegin) {
    std::string const text = "\r\nA,B,C\r\n\r\n\"x\r\ny\",2,\"3\n\n\"\r4,\"5\r\r\",6\n";
    CsvReader reader("data.csv", inPieces(text, text.size()));
    EXPECT_EQ(reader.headerLine(), 2U);
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.lineOf(0), 4U);
    EXPECT_EQ(reader.lineOf(1), 5U);
    EXPECT_EQ(reader.lineOf(2), 5U);
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.lineOf(0), 8U);
    EXPECT_EQ(reader.lineOf(1), 8U);
    EXPECT_EQ(reader.lineOf(2), 10U);
}

TEST(CsvReader, NothingButBlankLinesIsAnEmptyFile) {
    EXPECT_EQ(failureOf(""), "data.csv: the file is empty");
    EXPECT_EQ(failureOf("\n\n"), "data.csv: the file is empty");
    EXPECT_EQ(failureOf("\xEF\xBB\xBF"), "data.csv: the file is empty");
}

TEST(CsvReader, RecordsOfAnotherLengthAreReportedWithTheirFirstLine) {
    EXPECT_EQ(failureOf("A,B\n1,2\n\"3\n\"\n"), "data.csv:3: 1 field where the header has 2");
    EXPECT_EQ(failureOf("A,B\n1,2\n3,4,5\n"), "data.csv:3: 3 fields where the header has 2");
}

TEST(CsvReader, MalformedQuotesAreReportedWhereTheyStand) {
    EXPECT_EQ(failureOf("A,B\n1,\"2\n\n3,4\n"),
              "data.csv:2: column \"B\": the quote that begins the field is never closed");
    EXPECT_EQ(failureOf("A,B\n\n1,2\"\n"),
              "data.csv:3: column \"B\": a quote stands inside of a field that is not quoted");
    EXPECT_EQ(failureOf("A,B\n\"1\n\n\" ,2\n"), "data.csv:4: column \"A\": text follows the closing quote");
}

TEST(CsvReader, MalformedQuotesOutsideOfNamedColumnsAreReportedByNumber) {
    EXPECT_EQ(failureOf("A,\"B\"x\n"), "data.csv:1: field 2: text follows the closing quote");
    EXPECT_EQ(failureOf("A\n1,2,\"3"), "data.csv:2: field 3: the quote that begins the field is never closed");
}

// What a source throws while the parser holds the buffer reaches the caller, and nothing is lost on the way.
TEST(CsvReader, FailuresOfTheSourcePassThrough) {
    int reads = 0;
    CsvReader reader("data.csv", [&reads](char* bytes, std::size_t) -> std::size_t {
        if (++reads > 1) {
            throw Failure("data.csv: Input/output error");
        }
        std::memcpy(bytes, "A\n1", 3);
        return 3;
    });
    EXPECT_THROW(reader.next(), Failure);
}

} // namespace
