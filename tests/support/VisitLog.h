#ifndef OMTREE_TESTS_SUPPORT_VISITLOG_H
#define OMTREE_TESTS_SUPPORT_VISITLOG_H

#include "backend/tables/om/OmOutputPart.h"

#include <string>
#include <vector>

/// Visitors of output parts that write down which overload was called, and with which object.
namespace omtest {

struct PartVisit {
    std::string overload; ///< the class that its argument names
    void const* part;
    friend bool operator==(PartVisit const& a, PartVisit const& b) {
        return a.overload == b.overload && a.part == b.part;
    }
};

/// Supplies what a visitor must supply and leaves the two defaults as they are.
class PlainVisitor : public OmOutputPart::Visitor {
public:
    using OmOutputPart::Visitor::Visit;

    void Visit(OmInteractive& part) override { visits.push_back({"OmInteractive", &part}); }
    void Visit(OmModel& part) override { visits.push_back({"OmModel", &part}); }
    void Visit(OmAnswerTree& part) override { visits.push_back({"OmAnswerTree", &part}); }
    void Visit(OmChart& part) override { visits.push_back({"OmChart", &part}); }
    void Visit(OmTextBlock& part) override { visits.push_back({"OmTextBlock", &part}); }
    void Visit(OmHeading& part) override { visits.push_back({"OmHeading", &part}); }
    void Visit(OmPivotTable& part) override { visits.push_back({"OmPivotTable", &part}); }

    std::vector<PartVisit> visits;
};

/// Overrides all nine.
class FullVisitor : public PlainVisitor {
public:
    using PlainVisitor::Visit;

    void Visit(OmPageTitle& part) override { visits.push_back({"OmPageTitle", &part}); }
    void Visit(OmProcedure& part) override { visits.push_back({"OmProcedure", &part}); }
};

/// The visits that `part.Accept` leads to.
template <typename Visitor>
std::vector<PartVisit> VisitsOf(OmOutputPart& part) {
    Visitor visitor;
    part.Accept(visitor);
    return visitor.visits;
}

} // namespace omtest

#endif
