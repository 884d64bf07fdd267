#ifndef OMTREE_TESTS_SUPPORT_MUTETEXT_H
#define OMTREE_TESTS_SUPPORT_MUTETEXT_H

#include "omcell/OmCellText.h"

#include <string>

namespace omtest {

/// What a foreign kind has to answer, for tests of how texts are cloned and destroyed: every text says the same and is
/// the same.
class MuteText : public OmCellText {
public:
    void Accept(Visitor&) override {}
    short OrderCode() const override { return 200; }
    std::string AsString() const override { return "mute"; }
    std::string AsU8String() const override { return AsString(); }
    std::string AsEngString() const override { return AsString(); }
    short Compare(OmCellText const&) const override { return 0; }

protected:
    using OmCellText::OmCellText;
};

/// A text that is its own clone, as a shared constant of a program may be. Counts its destructions.
class SelfCloning final : public MuteText {
public:
    explicit SelfCloning(int& destroyed) : _destroyed(destroyed) {}
    ~SelfCloning() override { ++_destroyed; }
    OmCellText* Clone(OmMemoryRegion*) const override { return const_cast<SelfCloning*>(this); }

private:
    int& _destroyed;
};

} // namespace omtest

#endif
