// The map record: four parts with lengths of 32 and 16 bits in turn, in either byte order, complete or not.

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmChart.h"
#include "omcell/OmStringCell.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Text = OmStringCell;
using Parts = std::vector<std::string>;

/// Puts a record together byte by byte, in the reader's order or reversed.
class MapWriter {
public:
    explicit MapWriter(bool reversed) : _reversed(reversed) { Number(std::uint16_t{1}); }

    template <typename Length>
    MapWriter& Number(Length length) {
        std::string raw(sizeof(length), '\0');
        std::memcpy(raw.data(), &length, sizeof(length));
        if (_reversed) {
            std::reverse(raw.begin(), raw.end());
        }
        bytes += raw;
        return *this;
    }

    MapWriter& Bytes(std::string const& part) {
        bytes += part;
        return *this;
    }

    std::string bytes;

private:
    bool _reversed;
};

std::string RecordOf(Parts const& parts, bool reversed = false) {
    MapWriter writer(reversed);
    for (std::size_t k = 0; k < 4; ++k) {
        if (k % 2 == 0) {
            writer.Number(static_cast<std::uint32_t>(parts[k].size()));
        } else {
            writer.Number(static_cast<std::uint16_t>(parts[k].size()));
        }
        writer.Bytes(parts[k]);
    }
    return writer.bytes;
}

/// A chart with that map record. The chart's copy has just as many bytes, so that the sanitizers see one too many.
std::unique_ptr<OmChart> ChartWith(std::string const& record) {
    auto chart = std::make_unique<OmChart>(Text("map"), "", 1);
    chart->SetMapInfo(record.data(), static_cast<unsigned int>(record.size()));
    return chart;
}

Parts PartsOf(OmChart const& chart, Parts parts = {"-", "-", "-", "-"}) {
    chart.getMapInfo(parts[0], parts[1], parts[2], parts[3]);
    return parts;
}

/// What the exception says, and whether it left the strings alone; empty when there is none.
std::string FailureOf(std::string const& record) {
    Parts parts{"1", "2", "3", "4"};
    try {
        ChartWith(record)->getMapInfo(parts[0], parts[1], parts[2], parts[3]);
    } catch (OMSException const& failure) {
        EXPECT_EQ(parts, (Parts{"1", "2", "3", "4"}));
        return failure.what();
    }
    return "";
}

std::string Failure(std::size_t length, std::size_t remaining) {
    std::ostringstream text;
    text << "OmChart::getMapInfo() -- length > remaining, value 1 == " << static_cast<double>(length)
         << ", value 2 == " << static_cast<double>(remaining);
    return text.str();
}

Parts const Example{"abc", "de", "", "f"};

} // namespace

TEST(OmChartMap, LengthsOfThreeTwoZeroAndOneGiveStringsOfThoseSizes) {
    std::string const record = RecordOf(Example);
    EXPECT_EQ(record.size(), 2U + 4 + 3 + 2 + 2 + 4 + 0 + 2 + 1);
    EXPECT_EQ(PartsOf(*ChartWith(record)), Example);
}

TEST(OmChartMap, ReversedMarkReversesEveryLength) {
    std::string const record = RecordOf(Example, true);
    std::uint16_t mark = 0;
    std::memcpy(&mark, record.data(), 2);
    EXPECT_EQ(mark, 256);
    EXPECT_EQ(PartsOf(*ChartWith(record)), Example);
}

// Both widths matter in both orders: read as 32 bits, a 16-bit length would swallow the bytes behind it.
TEST(OmChartMap, LengthsTakeAllTheirBytes) {
    Parts const large{std::string(70000, 'a'), std::string(65535, 'b'), std::string(66051, 'c'), std::string(258, 'd')};
    EXPECT_EQ(PartsOf(*ChartWith(RecordOf(large))), large);
    EXPECT_EQ(PartsOf(*ChartWith(RecordOf(large, true))), large);
}

// Any mark but 1 reverses, not just a reversed 1.
TEST(OmChartMap, EveryMarkButOneReversesTheLengths) {
    for (std::uint16_t const mark : {std::uint16_t{0}, std::uint16_t{2}, std::uint16_t{257}, std::uint16_t{0xFFFF}}) {
        std::string record = RecordOf(Example, true);
        std::memcpy(record.data(), &mark, 2);
        EXPECT_EQ(PartsOf(*ChartWith(record)), Example) << mark;
    }
}

TEST(OmChartMap, PartsKeepZeroBytes) {
    Parts const parts{std::string("\0a", 2), std::string("\0", 1), std::string("b\0", 2), std::string(3, '\0')};
    EXPECT_EQ(PartsOf(*ChartWith(RecordOf(parts))), parts);
}

TEST(OmChartMap, WithoutARecordTheStringsKeepTheirValues) {
    OmChart const chart(Text("t"), "", 1);
    EXPECT_EQ(PartsOf(chart, {"1", "2", "3", "4"}), (Parts{"1", "2", "3", "4"}));
}

TEST(OmChartMap, PartsReplaceWhatTheStringsHeld) {
    EXPECT_EQ(PartsOf(*ChartWith(RecordOf(Example)), {"old", "old", "old", "old"}), Example);
}

TEST(OmChartMap, ThereIsAMapFromTheFirstByteOn) {
    OmChart chart(Text("t"), "", 1);
    EXPECT_FALSE(chart.hasMap());
    chart.SetMapInfo("\0", 1);
    EXPECT_TRUE(chart.hasMap());
}

TEST(OmChartMap, RecordIsAccumulatedFromChunksOfAnySize) {
    std::string const record = RecordOf(Example);
    for (std::size_t size = 1; size <= record.size(); ++size) {
        OmChart chart(Text("t"), "", 1);
        for (std::size_t at = 0; at < record.size(); at += size) {
            chart.SetMapInfo(record.data() + at, static_cast<unsigned int>(std::min(size, record.size() - at)));
        }
        EXPECT_EQ(PartsOf(chart), Example) << size;
    }
}

TEST(OmChartMap, ReadingChangesNothing) {
    auto const chart = ChartWith(RecordOf(Example));
    EXPECT_EQ(PartsOf(*chart), Example);
    EXPECT_EQ(PartsOf(*chart), Example);
    EXPECT_TRUE(chart->hasMap());
}

TEST(OmChartMap, BytesBehindTheRecordAreIgnored) {
    EXPECT_EQ(PartsOf(*ChartWith(RecordOf(Example) + "more")), Example);
}

// The parts are handed out first to last, so the last one stays in a string that is named twice.
TEST(OmChartMap, OneStringForAllGetsTheLastPart) {
    std::string all = "x";
    ChartWith(RecordOf(Example))->getMapInfo(all, all, all, all);
    EXPECT_EQ(all, "f");
}

// --- records that are cut short, and lengths that lie

TEST(OmChartMap, RecordCutShortAtAnyByteIsReported) {
    // What is asked for at each place of the example's record, and where that begins.
    struct Field {
        std::size_t start;
        std::size_t length;
    };
    std::vector<Field> const fields{{0, 2}, {2, 4}, {6, 3}, {9, 2}, {11, 2}, {13, 4}, {17, 0}, {17, 2}, {19, 1}};
    for (bool const reversed : {false, true}) {
        std::string const record = RecordOf(Example, reversed);
        for (std::size_t size = 1; size < record.size(); ++size) {
            auto const missing = std::find_if(fields.begin(), fields.end(),
                                              [size](Field const& field) { return field.start + field.length > size; });
            ASSERT_NE(missing, fields.end());
            EXPECT_EQ(FailureOf(record.substr(0, size)), Failure(missing->length, size - missing->start))
                << size << (reversed ? " reversed" : "");
        }
        EXPECT_EQ(FailureOf(record), "");
    }
}

TEST(OmChartMap, OneByteIsNotEvenAMark) {
    EXPECT_EQ(FailureOf("\x01"), "OmChart::getMapInfo() -- length > remaining, value 1 == 2, value 2 == 1");
}

TEST(OmChartMap, LengthPastTheEndIsReportedWithTheBytesLeft) {
    for (bool const reversed : {false, true}) {
        EXPECT_EQ(FailureOf(MapWriter(reversed).Number(std::uint32_t{4}).Bytes("abc").bytes), Failure(4, 3));
        EXPECT_EQ(FailureOf(MapWriter(reversed).Number(std::uint32_t{0}).Number(std::uint16_t{9}).Bytes("de").bytes),
                  Failure(9, 2));
    }
}

TEST(OmChartMap, EachOfTheFourLengthsIsChecked) {
    std::string const record = RecordOf(Example);
    std::size_t const widths[] = {4, 2, 4, 2};
    std::size_t const places[] = {2, 9, 13, 17};
    for (std::size_t k = 0; k < 4; ++k) {
        std::string lying = record;
        std::uint32_t const length = 60000;
        std::memcpy(lying.data() + places[k], &length, widths[k]);
        EXPECT_EQ(FailureOf(lying), Failure(60000, record.size() - places[k] - widths[k])) << k;
    }
}

// Added to the place in 32 bits, such a length would come back round to the start.
TEST(OmChartMap, LargestLengthsAreReported) {
    EXPECT_EQ(FailureOf(MapWriter(false).Number(std::uint32_t{0xFFFFFFFF}).Bytes("abc").bytes),
              "OmChart::getMapInfo() -- length > remaining, value 1 == 4.29497e+09, value 2 == 3");
    EXPECT_EQ(FailureOf(MapWriter(false).Number(std::uint32_t{0}).Number(std::uint16_t{0xFFFF}).bytes),
              Failure(65535, 0));
}

TEST(OmChartMap, ValuesOfTheExceptionAreTheLengthAndTheBytesLeft) {
    auto const chart = ChartWith(MapWriter(false).Number(std::uint32_t{4}).Bytes("abc").bytes);
    try {
        PartsOf(*chart);
        FAIL() << "no exception";
    } catch (OMSException const& failure) {
        EXPECT_EQ(failure.Message(), "OmChart::getMapInfo() -- length > remaining");
        EXPECT_EQ(failure.Value1(), 4.0);
        EXPECT_EQ(failure.Value2(), 3.0);
    }
}

TEST(OmChartMap, RecordMayBeCompletedAfterAFailure) {
    std::string const record = RecordOf(Example);
    auto const chart = ChartWith(record.substr(0, 10));
    EXPECT_THROW(PartsOf(*chart), OMSException);
    chart->SetMapInfo(record.data() + 10, static_cast<unsigned int>(record.size() - 10));
    EXPECT_EQ(PartsOf(*chart), Example);
}
