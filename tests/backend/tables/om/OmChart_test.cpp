#include "backend/tables/om/OmChart.h"

#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/PartTitleInCodePage.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"
#include "tests/support/VisitLog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::SlotOf;
using omtest::Undestroyed;

using Text = OmStringCell;
using Strings = std::vector<std::string>;

unsigned int Length(std::string const& bytes) { return static_cast<unsigned int>(bytes.size()); }

/// Both values of `Done`, as the producer sends them.
std::string DoneBytes(std::int32_t editable, std::int32_t editor) {
    std::string bytes(8, '\0');
    std::memcpy(bytes.data(), &editable, 4);
    std::memcpy(bytes.data() + 4, &editor, 4);
    return bytes;
}

/// One of the chart's chunked byte streams.
struct Stream {
    char const* name;
    void (*append)(OmChart&, char const*, unsigned int);
    std::string const& (*read)(OmChart const&);
};

Stream const Streams[] = {
    {"XML description", [](OmChart& c, char const* p, unsigned int n) { c.SetXmlDescription(p, n); },
     [](OmChart const& c) -> std::string const& { return c.GetXmlDescription(); }},
    {"binary data", [](OmChart& c, char const* p, unsigned int n) { c.SetBinaryDataStream(p, n); },
     [](OmChart const& c) -> std::string const& { return c.GetXmlData(); }},
    {"image", [](OmChart& c, char const* p, unsigned int n) { c.SetImageStream(p, n); },
     [](OmChart const& c) -> std::string const& { return c.GetImageData(); }},
    {"visualisation JSON", [](OmChart& c, char const* p, unsigned int n) { c.SetViZJSON(p, n); },
     [](OmChart const& c) -> std::string const& { return c.GetViZJSONData(); }},
    {"JSON template", [](OmChart& c, char const* p, unsigned int n) { c.setVizJSONTemplate(p, n); },
     [](OmChart const& c) -> std::string const& { return c.getVizJSONTemplate(); }},
};

/// The three that make room first.
bool Reserves(Stream const& stream) { return &stream >= &Streams[1] && &stream <= &Streams[3]; }

std::string ContentsOf(OmChart const& chart) {
    std::string all;
    for (Stream const& stream : Streams) {
        all += std::string(stream.name) + "=" + stream.read(chart) + ";";
    }
    return all;
}

class OmChartTest : public ::testing::Test {
protected:
    void CSVName(std::string const& name) { chart.addCSVFileName(name.data(), Length(name)); }
    void CSVContent(std::string const& chunk) { chart.addCSVFileContent(chunk.data(), Length(chunk)); }
    void GeoName(std::string const& name) { chart.addGeoJSONFileName(name.data(), Length(name)); }
    void GeoContent(std::string const& chunk) { chart.addGeoJSONFileContent(chunk.data(), Length(chunk)); }

    OmChart chart{Text("chart"), "", 7};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OmChart, PartTitleInCodePage, ::testing::Types<OmChart>);

// --- making, dispatch, layout

TEST_F(OmChartTest, NewChartIsEmpty) {
    EXPECT_EQ(ContentsOf(chart), "XML description=;binary data=;image=;visualisation JSON=;JSON template=;");
    EXPECT_EQ(chart.LocaleCodePage(), "");
    EXPECT_FALSE(chart.hasMap());
    EXPECT_FALSE(chart.hasCSVFile());
    EXPECT_FALSE(chart.hasGeoJSONFile());
    EXPECT_TRUE(chart.getCSVFileNames().empty());
    EXPECT_TRUE(chart.getCSVFiles().empty());
    EXPECT_TRUE(chart.getGeoJSONFileNames().empty());
    EXPECT_TRUE(chart.getGeoJSONContent().empty());
    EXPECT_EQ(chart.getOptions(), "");
    EXPECT_EQ(chart.GetXmlUncompressedLength(), 0U);
}

TEST_F(OmChartTest, NewChartHasEditorOneSubTypeZeroAndNoEditableState) {
    EXPECT_EQ(chart.GetEditor(), 1);
    EXPECT_EQ(chart.GetChartSubType(), 0);
    EXPECT_EQ(chart.GetEditable(), 0);
}

TEST(OmChart, KeepsCodePageAndIdOfSixtyFourBits) {
    OmChart const chart(Text("t"), "ibm-850", std::numeric_limits<long long>::min());
    EXPECT_EQ(chart.LocaleCodePage(), "ibm-850");
    EXPECT_EQ(chart.getChartId(), std::numeric_limits<long long>::min());
    EXPECT_EQ(OmChart(Text("t"), "", std::numeric_limits<long long>::max()).getChartId(),
              std::numeric_limits<long long>::max());
}

TEST_F(OmChartTest, AcceptCallsTheVisitorsOverloadForCharts) {
    EXPECT_EQ(omtest::VisitsOf<omtest::FullVisitor>(chart), (std::vector<omtest::PartVisit>{{"OmChart", &chart}}));
}

TEST(OmChart, VirtualOperationsAreInTheirSlots) {
    EXPECT_EQ(SlotOf(&OmChart::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmChart::SetXmlDescription), 3U);
    EXPECT_EQ(SlotOf(&OmChart::SetXmlUncompressedLength), 4U);
    EXPECT_EQ(SlotOf(&OmChart::SetXmlCompressedLength), 5U);
    EXPECT_EQ(SlotOf(&OmChart::SetBinaryDataStream), 6U);
    EXPECT_EQ(SlotOf(&OmChart::SetImageStream), 7U);
    EXPECT_EQ(SlotOf(&OmChart::SetViZJSON), 8U);
    EXPECT_EQ(SlotOf(&OmChart::SetImageSubType), 9U);
    EXPECT_EQ(SlotOf(&OmChart::Done), 10U);
}

TEST(OmChart, OtherOperationsAreNotVirtual) {
    EXPECT_EQ(SlotOf(&OmChart::SetMapInfo), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmChart::setVizJSONTemplate), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmChart::addCSVFileName), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmChart::deleteData), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmChart::GetXmlData), omtest::NoSlot);
}

TEST(OmChart, HoldsTheBaseAndOnePointer) { EXPECT_EQ(sizeof(OmChart), sizeof(OmOutputPart) + sizeof(void*)); }

// --- streams

TEST_F(OmChartTest, ChunksOfTheDescriptionAreJoined) {
    chart.SetXmlDescription("ab", 2);
    chart.SetXmlDescription("cd", 2);
    EXPECT_EQ(chart.GetXmlDescription(), "abcd");
}

TEST_F(OmChartTest, EveryStreamJoinsItsChunksAndNoOther) {
    for (Stream const& stream : Streams) {
        stream.append(chart, "1", 1);
        stream.append(chart, "23", 2);
        EXPECT_EQ(stream.read(chart), "123") << stream.name;
    }
    EXPECT_EQ(ContentsOf(chart),
              "XML description=123;binary data=123;image=123;visualisation JSON=123;JSON template=123;");
}

TEST_F(OmChartTest, ZeroBytesAreKept) {
    std::string const chunk("\0a\0", 3);
    for (Stream const& stream : Streams) {
        stream.append(chart, chunk.data(), 3);
        stream.append(chart, chunk.data(), 1);
        EXPECT_EQ(stream.read(chart), std::string("\0a\0\0", 4)) << stream.name;
    }
}

TEST_F(OmChartTest, LengthCountsNotTheTerminatingZero) {
    for (Stream const& stream : Streams) {
        stream.append(chart, "abcdef", 3);
        EXPECT_EQ(stream.read(chart), "abc") << stream.name;
    }
}

TEST_F(OmChartTest, ChunkOfNoBytesAddsNothingWhateverItsAddress) {
    for (Stream const& stream : Streams) {
        stream.append(chart, nullptr, 0);
        EXPECT_EQ(stream.read(chart), "") << stream.name;
        stream.append(chart, "x", 1);
        stream.append(chart, nullptr, 0);
        stream.append(chart, "y", 0);
        EXPECT_EQ(stream.read(chart), "x") << stream.name;
    }
    CSVName("a");
    chart.addCSVFileContent(nullptr, 0);
    chart.addCSVFileName(nullptr, 0);
    EXPECT_EQ(chart.getCSVFileNames(), (Strings{"a", ""}));
    EXPECT_EQ(chart.getCSVFiles(), Strings{""});
    chart.SetMapInfo(nullptr, 0);
    EXPECT_FALSE(chart.hasMap());
}

// The stream moves when room is made for the chunk; read after that, the piece would be gone.
TEST_F(OmChartTest, PieceOfAStreamMayBeAppendedToItself) {
    std::string const start(100, 'a');
    for (Stream const& stream : Streams) {
        stream.append(chart, start.data(), 100);
        stream.append(chart, "z", 1);
        for (int round = 0; round < 4; ++round) {
            std::string const whole = stream.read(chart);
            stream.append(chart, stream.read(chart).data() + 1, Length(whole) - 1);
            EXPECT_EQ(stream.read(chart), whole + whole.substr(1)) << stream.name;
        }
    }
}

TEST_F(OmChartTest, FirstChunkOfAReservingStreamFitsWithoutRoomToSpare) {
    std::string const chunk(100000, 'x');
    for (Stream const& stream : Streams) {
        stream.append(chart, chunk.data(), Length(chunk));
        EXPECT_GE(stream.read(chart).capacity(), chunk.size()) << stream.name;
        if (Reserves(stream)) {
            EXPECT_EQ(stream.read(chart).capacity(), chunk.size()) << stream.name;
        }
    }
}

// Room to spare for a stream that comes in few large chunks would be wasted. More than twice as much as there is, so
// that the string's doubling does not hide what was asked for.
TEST_F(OmChartTest, ReservingStreamsAskForTheWholeAndNoMore) {
    std::string const first(1000, 'x');
    std::string const second(5000, 'y');
    for (Stream const& stream : Streams) {
        if (Reserves(stream)) {
            stream.append(chart, first.data(), Length(first));
            stream.append(chart, second.data(), Length(second));
            EXPECT_EQ(stream.read(chart).capacity(), 6000U) << stream.name;
        }
    }
}

TEST_F(OmChartTest, CompressedLengthReservesRoomForTheDescriptionAndRecordsNothing) {
    chart.SetXmlCompressedLength(100000);
    EXPECT_GE(chart.GetXmlDescription().capacity(), 100000U);
    EXPECT_EQ(chart.GetXmlDescription(), "");
    EXPECT_EQ(chart.GetXmlUncompressedLength(), 0U);
    char const* const room = chart.GetXmlDescription().data();
    std::string const chunk(25000, 'x');
    for (int k = 0; k < 4; ++k) {
        chart.SetXmlDescription(chunk.data(), Length(chunk));
    }
    EXPECT_EQ(chart.GetXmlDescription().data(), room);
    EXPECT_EQ(chart.GetXmlDescription().size(), 100000U);
}

TEST_F(OmChartTest, SmallerCompressedLengthTakesNothingAway) {
    chart.SetXmlDescription("a description longer than a short string", 40);
    chart.SetXmlCompressedLength(3);
    EXPECT_EQ(chart.GetXmlDescription(), "a description longer than a short string");
}

TEST_F(OmChartTest, UncompressedLengthIsReplaced) {
    chart.SetXmlUncompressedLength(5);
    chart.SetXmlUncompressedLength(4000000000U);
    EXPECT_EQ(chart.GetXmlUncompressedLength(), 4000000000U);
    EXPECT_EQ(chart.GetXmlDescription(), "");
}

TEST_F(OmChartTest, DeleteDataEmptiesTheBinaryDataAndNothingElse) {
    for (Stream const& stream : Streams) {
        stream.append(chart, "x", 1);
    }
    CSVName("n");
    CSVContent("c");
    GeoName("g");
    GeoContent("j");
    chart.SetMapInfo("m", 1);
    chart.setOptions("o");
    chart.SetXmlUncompressedLength(9);
    chart.SetImageSubType(static_cast<ChartXMLContentSubType>(4));
    chart.Done(DoneBytes(2, 3).data());
    chart.deleteData();
    EXPECT_EQ(chart.GetXmlData(), "");
    EXPECT_EQ(ContentsOf(chart), "XML description=x;binary data=;image=x;visualisation JSON=x;JSON template=x;");
    EXPECT_EQ(chart.getCSVFileNames(), Strings{"n"});
    EXPECT_EQ(chart.getCSVFiles(), Strings{"c"});
    EXPECT_EQ(chart.getGeoJSONFileNames(), Strings{"g"});
    EXPECT_EQ(chart.getGeoJSONContent(), Strings{"j"});
    EXPECT_TRUE(chart.hasMap());
    EXPECT_EQ(chart.getOptions(), "o");
    EXPECT_EQ(chart.GetXmlUncompressedLength(), 9U);
    EXPECT_EQ(chart.GetChartSubType(), 4);
    EXPECT_EQ(chart.GetEditable(), 2);
    EXPECT_EQ(chart.GetEditor(), 3);
    EXPECT_EQ(chart.getChartId(), 7);
}

TEST_F(OmChartTest, DataMayBeSentAnewAfterDeleteData) {
    chart.SetBinaryDataStream("old", 3);
    chart.deleteData();
    chart.SetBinaryDataStream("new", 3);
    EXPECT_EQ(chart.GetXmlData(), "new");
}

TEST_F(OmChartTest, OptionsAreReplaced) {
    chart.setOptions("first");
    chart.setOptions("second");
    EXPECT_EQ(chart.getOptions(), "second");
}

// --- states

TEST_F(OmChartTest, SubTypeIsStoredAsGiven) {
    for (std::int32_t const value : {1, -1, std::numeric_limits<std::int32_t>::max()}) {
        chart.SetImageSubType(static_cast<ChartXMLContentSubType>(value));
        EXPECT_EQ(chart.GetChartSubType(), value);
    }
    static_assert(sizeof(ChartXMLContentSubType) == 4);
}

TEST_F(OmChartTest, DoneReadsEditableThenEditor) {
    chart.Done(DoneBytes(5, -6).data());
    EXPECT_EQ(chart.GetEditable(), 5);
    EXPECT_EQ(chart.GetEditor(), -6);
    static_assert(sizeof(OmChart::EDITABLE) == 4);
    static_assert(sizeof(OmChart::EDITOR) == 4);
}

TEST_F(OmChartTest, DoneReadsFromAnyAddress) {
    std::string const shifted = "x" + DoneBytes(5, 6);
    chart.Done(shifted.data() + 1);
    EXPECT_EQ(chart.GetEditable(), 5);
    EXPECT_EQ(chart.GetEditor(), 6);
}

// The last byte of a block of eight is its end; the sanitizers see a ninth.
TEST_F(OmChartTest, DoneReadsEightBytes) {
    auto const bytes = std::make_unique<char[]>(8);
    std::memcpy(bytes.get(), DoneBytes(-1, 2).data(), 8);
    chart.Done(bytes.get());
    EXPECT_EQ(chart.GetEditable(), -1);
    EXPECT_EQ(chart.GetEditor(), 2);
}

// --- attached files

TEST_F(OmChartTest, ContentsBelongToTheNamesTheyFollow) {
    CSVName("x");
    CSVContent("1");
    CSVContent("2");
    CSVName("y");
    CSVContent("3");
    EXPECT_EQ(chart.getCSVFileNames(), (Strings{"x", "y"}));
    EXPECT_EQ(chart.getCSVFiles(), (Strings{"12", "3"}));
}

TEST_F(OmChartTest, GeoJSONContentsBelongToTheNamesTheyFollow) {
    GeoName("x");
    GeoContent("1");
    GeoContent("2");
    GeoName("y");
    GeoContent("3");
    EXPECT_EQ(chart.getGeoJSONFileNames(), (Strings{"x", "y"}));
    EXPECT_EQ(chart.getGeoJSONContent(), (Strings{"12", "3"}));
}

// Joined to the first, the second chunk would read "12".
TEST_F(OmChartTest, ChunksBeforeAnyNameAreContentsOfTheirOwn) {
    CSVContent("1");
    CSVContent("2");
    EXPECT_EQ(chart.getCSVFiles(), (Strings{"1", "2"}));
    GeoContent("1");
    GeoContent("2");
    EXPECT_EQ(chart.getGeoJSONContent(), (Strings{"1", "2"}));
}

TEST_F(OmChartTest, NameThatCatchesUpMakesTheNextChunkAContinuation) {
    CSVContent("1");
    CSVName("x");
    CSVContent("2");
    EXPECT_EQ(chart.getCSVFiles(), Strings{"12"});
}

TEST_F(OmChartTest, TwoNamesInARowMakeTwoContents) {
    CSVName("x");
    CSVName("y");
    CSVContent("1");
    CSVContent("2");
    CSVContent("3");
    EXPECT_EQ(chart.getCSVFiles(), (Strings{"1", "23"}));
}

TEST_F(OmChartTest, HasCSVFileAfterANameAloneButNotAfterContentAlone) {
    CSVContent("1");
    EXPECT_FALSE(chart.hasCSVFile());
    CSVName("x");
    EXPECT_TRUE(chart.hasCSVFile());
    EXPECT_FALSE(chart.hasGeoJSONFile());
}

TEST_F(OmChartTest, HasGeoJSONFileAfterANameAloneButNotAfterContentAlone) {
    GeoContent("1");
    EXPECT_FALSE(chart.hasGeoJSONFile());
    GeoName("x");
    EXPECT_TRUE(chart.hasGeoJSONFile());
    EXPECT_FALSE(chart.hasCSVFile());
}

TEST_F(OmChartTest, NamesAndContentsKeepZeroBytes) {
    std::string const bytes("a\0b", 3);
    CSVName(bytes);
    CSVContent(bytes);
    CSVContent(bytes);
    EXPECT_EQ(chart.getCSVFileNames(), Strings{bytes});
    EXPECT_EQ(chart.getCSVFiles(), Strings{bytes + bytes});
}

// Names move when their list grows.
TEST_F(OmChartTest, NameMayBeAddedFromTheListOfNames) {
    CSVName("short");
    for (int k = 0; k < 20; ++k) {
        chart.addCSVFileName(chart.getCSVFileNames().front().data(), 5);
        chart.addCSVFileContent(chart.getCSVFileNames().front().data(), 5);
    }
    EXPECT_EQ(chart.getCSVFileNames(), Strings(21, "short"));
}

// --- copies

TEST_F(OmChartTest, CopySharesTitleAndRecord) {
    Undestroyed<OmChart> copy(chart);
    EXPECT_EQ(copy->Title(), chart.Title());
    copy->SetXmlDescription("x", 1);
    EXPECT_EQ(chart.GetXmlDescription(), "x");
    EXPECT_EQ(&copy->GetXmlDescription(), &chart.GetXmlDescription());
    EXPECT_EQ(copy->getChartId(), 7);
}

TEST_F(OmChartTest, CopyHasUserDataAndFlagsOfItsOwn) {
    chart.UserData(&chart);
    chart.Visible(false);
    Undestroyed<OmChart> copy(chart);
    EXPECT_EQ(copy->UserData(), &chart);
    EXPECT_FALSE(copy->Visible());
    EXPECT_TRUE(copy->Expanded());
    copy->Expanded(false);
    EXPECT_TRUE(chart.Expanded());
}

TEST(OmChart, AssignmentSharesAndDropsWhatWasThereWithoutDestroyingIt) {
    omtest::ForeignLog log;
    {
        OmChart const source(omtest::ForeignText(log, "s"), "", 1);
        OmChart former(omtest::ForeignText(log, "f"), "", 2);
        Undestroyed<OmChart> target(former);
        log.Take();
        *target = source;
        EXPECT_TRUE(log.Take().empty());
        EXPECT_EQ(target->Title(), source.Title());
        EXPECT_EQ(target->getChartId(), 1);
        EXPECT_EQ(former.getChartId(), 2);
    }
    EXPECT_EQ(log.alive, 0);
}

TEST(OmChart, OneOfTwoCopiesDestroysTitleAndRecord) {
    omtest::ForeignLog log;
    auto* const source = new OmChart(omtest::ForeignText(log, "t"), "", 1);
    source->SetBinaryDataStream("some bytes that are longer than a short string", 46);
    OmChart* const copy = new OmChart(*source);
    EXPECT_EQ(copy->GetXmlData().size(), 46U);
    EXPECT_EQ(log.alive, 1);
    delete copy;
    EXPECT_EQ(log.alive, 0);
    ::operator delete(source); // the storage alone
}
