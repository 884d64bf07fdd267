#include "backend/tables/om/OmModel.h"

#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"
#include "tests/support/VisitLog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace {

using omtest::SlotOf;
using omtest::Undestroyed;

/// One of the model's chunked byte streams.
struct Stream {
    char const* name;
    void (OmModel::*append)(char const*, unsigned int);
    std::string const& (OmModel::*read)() const;
    int typeAfter;
};

Stream const Streams[] = {
    {"PMML", &OmModel::SetPMML, &OmModel::GetPMML, 0},
    {"binary data", &OmModel::SetBinaryDataStream, &OmModel::GetBinaryDataStream, 0},
    {"PMML container", &OmModel::SetPMMLContainer, &OmModel::GetPMMLContainer, 1},
    {"StatXML container", &OmModel::SetStatXMLContainer, &OmModel::GetStatXMLContainer, 1},
};

std::string ContentsOf(OmModel const& model) {
    std::string all;
    for (Stream const& stream : Streams) {
        all += std::string(stream.name) + "=" + (model.*stream.read)() + ";";
    }
    return all;
}

class OmModelTest : public ::testing::Test {
protected:
    OmModel model{OmStringCell("model")};
};

} // namespace

TEST_F(OmModelTest, NewModelIsEmptyAndOfTypeZero) {
    EXPECT_EQ(model.GetModelType(), 0);
    EXPECT_EQ(ContentsOf(model), "PMML=;binary data=;PMML container=;StatXML container=;");
}

TEST(OmModel, KeepsACloneOfItsTitle) {
    omtest::ForeignLog log;
    omtest::ForeignText const title(log, "t");
    OmModel const model(title);
    EXPECT_EQ(log.Take(), std::vector<std::string>{"t: Clone"});
    EXPECT_NE(dynamic_cast<omtest::ForeignText const*>(model.Title()), nullptr);
}

TEST_F(OmModelTest, AcceptCallsTheVisitorsOverloadForModels) {
    EXPECT_EQ(omtest::VisitsOf<omtest::FullVisitor>(model), (std::vector<omtest::PartVisit>{{"OmModel", &model}}));
}

TEST(OmModel, VirtualOperationsAreInTheirSlots) {
    EXPECT_EQ(SlotOf(&OmModel::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmModel::SetPMML), 3U);
    EXPECT_EQ(SlotOf(&OmModel::SetBinaryDataStream), 4U);
    EXPECT_EQ(SlotOf(&OmModel::SetPMMLContainer), 5U);
    EXPECT_EQ(SlotOf(&OmModel::SetStatXMLContainer), 6U);
    EXPECT_EQ(SlotOf(&OmModel::SetModelType), omtest::NoSlot);
}

TEST(OmModel, HoldsTheBaseAndOnePointer) { EXPECT_EQ(sizeof(OmModel), sizeof(OmOutputPart) + sizeof(void*)); }

TEST_F(OmModelTest, EveryStreamJoinsItsChunksAndNoOther) {
    for (Stream const& stream : Streams) {
        (model.*stream.append)("ab", 2);
        (model.*stream.append)("cdef", 2);
        EXPECT_EQ((model.*stream.read)(), "abcd") << stream.name;
    }
    EXPECT_EQ(ContentsOf(model), "PMML=abcd;binary data=abcd;PMML container=abcd;StatXML container=abcd;");
}

TEST_F(OmModelTest, ZeroBytesAreKept) {
    for (Stream const& stream : Streams) {
        (model.*stream.append)("\0a\0", 3);
        (model.*stream.append)("\0", 1);
        EXPECT_EQ((model.*stream.read)(), std::string("\0a\0\0", 4)) << stream.name;
    }
}

TEST_F(OmModelTest, ChunkOfNoBytesAddsNothingWhateverItsAddress) {
    for (Stream const& stream : Streams) {
        (model.*stream.append)("x", 1);
        (model.*stream.append)(nullptr, 0);
        EXPECT_EQ((model.*stream.read)(), "x") << stream.name;
    }
}

TEST_F(OmModelTest, PieceOfAStreamMayBeAppendedToItself) {
    std::string const start(100, 'a');
    for (Stream const& stream : Streams) {
        (model.*stream.append)(start.data(), 100);
        (model.*stream.append)((model.*stream.read)().data(), 100);
        EXPECT_EQ((model.*stream.read)(), start + start) << stream.name;
    }
}

TEST(OmModel, ContainerChunksAloneSetTheTypeToOne) {
    for (Stream const& stream : Streams) {
        OmModel model{OmStringCell("t")};
        (model.*stream.append)("x", 1);
        EXPECT_EQ(model.GetModelType(), stream.typeAfter) << stream.name;
    }
}

TEST(OmModel, ContainerChunkOfNoBytesSetsTheTypeToo) {
    for (Stream const& stream : Streams) {
        OmModel model{OmStringCell("t")};
        (model.*stream.append)(nullptr, 0);
        EXPECT_EQ(model.GetModelType(), stream.typeAfter) << stream.name;
    }
}

TEST_F(OmModelTest, TypeStaysOneAfterOtherChunks) {
    model.SetStatXMLContainer("x", 1);
    model.SetPMML("y", 1);
    model.SetBinaryDataStream("z", 1);
    EXPECT_EQ(model.GetModelType(), 1);
}

TEST_F(OmModelTest, TypeMayBeSetToAnyValue) {
    model.SetPMMLContainer("x", 1);
    for (std::int32_t const type : {0, 2, -1, std::numeric_limits<std::int32_t>::max()}) {
        model.SetModelType(static_cast<OmModel::MODEL_TYPE>(type));
        EXPECT_EQ(model.GetModelType(), type);
    }
    static_assert(sizeof(OmModel::MODEL_TYPE) == 4);
}

// Not the first chunk only: a type set in between does not last.
TEST_F(OmModelTest, EveryContainerChunkSetsTheTypeAnew) {
    for (Stream const* const stream : {&Streams[2], &Streams[3]}) {
        (model.*stream->append)("x", 1);
        model.SetModelType(static_cast<OmModel::MODEL_TYPE>(5));
        (model.*stream->append)("y", 1);
        EXPECT_EQ(model.GetModelType(), 1) << stream->name;
        EXPECT_EQ((model.*stream->read)(), "xy");
    }
}

TEST_F(OmModelTest, BinaryDataAsksForTheWholeAndNoMore) {
    std::string const first(1000, 'x');
    std::string const second(5000, 'y');
    model.SetBinaryDataStream(first.data(), 1000);
    EXPECT_EQ(model.GetBinaryDataStream().capacity(), 1000U);
    model.SetBinaryDataStream(second.data(), 5000);
    EXPECT_EQ(model.GetBinaryDataStream().capacity(), 6000U);
}

TEST_F(OmModelTest, CopySharesTitleAndRecord) {
    Undestroyed<OmModel> copy(model);
    EXPECT_EQ(copy->Title(), model.Title());
    copy->SetPMMLContainer("x", 1);
    EXPECT_EQ(model.GetPMMLContainer(), "x");
    EXPECT_EQ(model.GetModelType(), 1);
}

TEST(OmModel, AssignmentSharesAndDropsWhatWasThereWithoutDestroyingIt) {
    omtest::ForeignLog log;
    {
        OmModel const source(omtest::ForeignText(log, "s"));
        OmModel const former(omtest::ForeignText(log, "f"));
        Undestroyed<OmModel> target(former);
        log.Take();
        *target = source;
        EXPECT_TRUE(log.Take().empty());
        EXPECT_EQ(target->Title(), source.Title());
        EXPECT_EQ(&target->GetPMML(), &source.GetPMML());
    }
    EXPECT_EQ(log.alive, 0);
}

TEST(OmModel, OneOfTwoCopiesDestroysTitleAndRecord) {
    omtest::ForeignLog log;
    auto* const source = new OmModel(omtest::ForeignText(log, "t"));
    source->SetPMML("some bytes that are longer than a short string", 46);
    OmModel* const copy = new OmModel(*source);
    EXPECT_EQ(copy->GetPMML().size(), 46U);
    EXPECT_EQ(log.alive, 1);
    delete copy;
    EXPECT_EQ(log.alive, 0);
    ::operator delete(source); // the storage alone
}
