#include "backend/tables/om/OmAnswerTree.h"

#include "omcell/OmStringCell.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"
#include "tests/support/VisitLog.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using omtest::SlotOf;
using omtest::Undestroyed;

unsigned int Length(std::string const& bytes) { return static_cast<unsigned int>(bytes.size()); }

/// One of the answer tree's chunked byte streams.
struct Stream {
    char const* name;
    void (*append)(OmAnswerTree&, char const*, unsigned int);
    std::string const& (OmAnswerTree::*read)() const;
};

Stream const Streams[] = {
    {"path", [](OmAnswerTree& t, char const* p, unsigned int n) { t.SetPath(p, n); }, &OmAnswerTree::GetPath},
    {"compressed XML", [](OmAnswerTree& t, char const* p, unsigned int n) { t.SetCompressedXML(p, n, 0); },
     &OmAnswerTree::GetCompressedXml},
    {"uncompressed XML", [](OmAnswerTree& t, char const* p, unsigned int n) { t.SetUncompressedXML(p, n); },
     &OmAnswerTree::GetUncompressedXml},
    {"display XML", [](OmAnswerTree& t, char const* p, unsigned int n) { t.SetUncompressedDisplayXML(p, n); },
     &OmAnswerTree::GetUncompressedDisplayXML},
};

std::string ContentsOf(OmAnswerTree const& tree) {
    std::string all;
    for (Stream const& stream : Streams) {
        all += std::string(stream.name) + "=" + (tree.*stream.read)() + ";";
    }
    return all;
}

class OmAnswerTreeTest : public ::testing::Test {
protected:
    std::string const kept = "kept";
    OmAnswerTree tree{OmStringCell("tree"), kept};
};

} // namespace

TEST_F(OmAnswerTreeTest, NewTreeHasTypeMinusOneAndLengthZero) {
    EXPECT_EQ(tree.GetTreeType(), -1);
    EXPECT_EQ(tree.GetXmlUncompressedLength(), 0U);
    EXPECT_EQ(ContentsOf(tree), "path=;compressed XML=;uncompressed XML=;display XML=;");
}

TEST_F(OmAnswerTreeTest, AcceptCallsTheVisitorsOverloadForAnswerTrees) {
    EXPECT_EQ(omtest::VisitsOf<omtest::FullVisitor>(tree), (std::vector<omtest::PartVisit>{{"OmAnswerTree", &tree}}));
}

TEST(OmAnswerTree, VirtualOperationsAreInTheirSlots) {
    EXPECT_EQ(SlotOf(&OmAnswerTree::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::SetTreeType), 3U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::SetPath), 4U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::SetCompressedXML), 5U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::SetUncompressedXML), 6U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::SetUncompressedDisplayXML), 7U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::Done), 8U);
    EXPECT_EQ(SlotOf(&OmAnswerTree::GetTreeType), omtest::NoSlot);
}

TEST(OmAnswerTree, HoldsTheBaseAndOnePointer) { EXPECT_EQ(sizeof(OmAnswerTree), sizeof(OmOutputPart) + sizeof(void*)); }

// A chart or an interactive item would take the string for a code page and convert the title.
TEST(OmAnswerTree, TitleIsKeptWhateverTheStringSays) {
    omtest::ForeignLog log;
    omtest::ForeignText const title(log, "t", "caf\xC3\xA9");
    std::string const kept = "windows-1252";
    OmAnswerTree const tree(title, kept);
    EXPECT_EQ(log.Take(), std::vector<std::string>{"t: Clone"});
    EXPECT_NE(dynamic_cast<omtest::ForeignText const*>(tree.Title()), nullptr);
}

// Copied, the long string would take a block of its own, and the short one would not.
TEST(OmAnswerTree, StringIsNotCopied) {
    std::string const strings[] = {"", "a", std::string(100000, 'x')};
    std::vector<std::ptrdiff_t> blocks;
    for (std::string const& kept : strings) {
        std::ptrdiff_t const before = omtest::Heap().live;
        auto const tree = std::make_unique<OmAnswerTree>(OmStringCell("t"), kept);
        blocks.push_back(omtest::Heap().live - before);
    }
    EXPECT_GT(blocks[0], 0);
    EXPECT_EQ(blocks[1], blocks[0]);
    EXPECT_EQ(blocks[2], blocks[0]);
}

TEST(OmAnswerTree, FailingHeapLeavesNothingBehind) {
    std::string const kept = "kept";
    OmStringCell const title("t");
    std::ptrdiff_t const before = omtest::Heap().live;
    int const refused = omtest::FailEachRequest([&] { std::make_unique<OmAnswerTree>(title, kept); },
                                                [&] { EXPECT_EQ(omtest::Heap().live, before); });
    EXPECT_GT(refused, 1);
}

TEST_F(OmAnswerTreeTest, TypeIsStoredAsGiven) {
    for (int const type : {3, 0, -7, std::numeric_limits<int>::max()}) {
        tree.SetTreeType(type);
        EXPECT_EQ(tree.GetTreeType(), type);
    }
}

TEST_F(OmAnswerTreeTest, EveryStreamJoinsItsChunksAndNoOther) {
    for (Stream const& stream : Streams) {
        stream.append(tree, "ab", 2);
        stream.append(tree, "cdef", 2);
        EXPECT_EQ((tree.*stream.read)(), "abcd") << stream.name;
    }
    EXPECT_EQ(ContentsOf(tree), "path=abcd;compressed XML=abcd;uncompressed XML=abcd;display XML=abcd;");
    EXPECT_EQ(tree.GetTreeType(), -1);
}

TEST_F(OmAnswerTreeTest, ZeroBytesAreKept) {
    for (Stream const& stream : Streams) {
        stream.append(tree, "\0a\0", 3);
        stream.append(tree, "\0", 1);
        EXPECT_EQ((tree.*stream.read)(), std::string("\0a\0\0", 4)) << stream.name;
    }
}

TEST_F(OmAnswerTreeTest, ChunkOfNoBytesAddsNothingWhateverItsAddress) {
    for (Stream const& stream : Streams) {
        stream.append(tree, "x", 1);
        stream.append(tree, nullptr, 0);
        EXPECT_EQ((tree.*stream.read)(), "x") << stream.name;
    }
}

TEST_F(OmAnswerTreeTest, PieceOfAStreamMayBeAppendedToItself) {
    std::string const start(100, 'a');
    for (Stream const& stream : Streams) {
        stream.append(tree, start.data(), Length(start));
        stream.append(tree, (tree.*stream.read)().data(), Length(start));
        EXPECT_EQ((tree.*stream.read)(), start + start) << stream.name;
    }
}

// Chunks are joined, their lengths are not summed.
TEST_F(OmAnswerTreeTest, UncompressedLengthIsThatOfTheLastChunk) {
    tree.SetCompressedXML("ab", 2, 100);
    EXPECT_EQ(tree.GetXmlUncompressedLength(), 100U);
    tree.SetCompressedXML("cd", 2, 4000000000U);
    EXPECT_EQ(tree.GetXmlUncompressedLength(), 4000000000U);
    tree.SetCompressedXML(nullptr, 0, 5);
    EXPECT_EQ(tree.GetXmlUncompressedLength(), 5U);
    EXPECT_EQ(tree.GetCompressedXml(), "abcd");
}

TEST_F(OmAnswerTreeTest, UncompressedXMLLeavesTheLengthAlone) {
    tree.SetUncompressedXML("abc", 3);
    tree.SetUncompressedDisplayXML("abc", 3);
    EXPECT_EQ(tree.GetXmlUncompressedLength(), 0U);
}

TEST_F(OmAnswerTreeTest, DoneChangesNothing) {
    for (Stream const& stream : Streams) {
        stream.append(tree, "x", 1);
    }
    tree.SetTreeType(2);
    tree.SetCompressedXML("y", 1, 9);
    std::string const before = ContentsOf(tree);
    tree.Done();
    EXPECT_EQ(ContentsOf(tree), before);
    EXPECT_EQ(tree.GetTreeType(), 2);
    EXPECT_EQ(tree.GetXmlUncompressedLength(), 9U);
    tree.SetPath("z", 1);
    EXPECT_EQ(tree.GetPath(), "xz");
}

TEST_F(OmAnswerTreeTest, CopySharesTitleAndRecord) {
    Undestroyed<OmAnswerTree> copy(tree);
    EXPECT_EQ(copy->Title(), tree.Title());
    copy->SetPath("x", 1);
    copy->SetTreeType(4);
    EXPECT_EQ(tree.GetPath(), "x");
    EXPECT_EQ(tree.GetTreeType(), 4);
}

TEST_F(OmAnswerTreeTest, AssignmentSharesAndDropsWhatWasThereWithoutDestroyingIt) {
    omtest::ForeignLog log;
    {
        OmAnswerTree const source(omtest::ForeignText(log, "s"), kept);
        OmAnswerTree const former(omtest::ForeignText(log, "f"), kept);
        Undestroyed<OmAnswerTree> target(former);
        log.Take();
        *target = source;
        EXPECT_TRUE(log.Take().empty());
        EXPECT_EQ(target->Title(), source.Title());
        EXPECT_EQ(&target->GetPath(), &source.GetPath());
    }
    EXPECT_EQ(log.alive, 0);
}

TEST_F(OmAnswerTreeTest, OneOfTwoCopiesDestroysTitleAndRecord) {
    omtest::ForeignLog log;
    auto* const source = new OmAnswerTree(omtest::ForeignText(log, "t"), kept);
    source->SetPath("some bytes that are longer than a short string", 46);
    OmAnswerTree* const copy = new OmAnswerTree(*source);
    EXPECT_EQ(copy->GetPath().size(), 46U);
    EXPECT_EQ(log.alive, 1);
    delete copy;
    EXPECT_EQ(log.alive, 0);
    ::operator delete(source); // the storage alone
}
