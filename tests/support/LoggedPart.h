#ifndef OMTREE_TESTS_SUPPORT_LOGGEDPART_H
#define OMTREE_TESTS_SUPPORT_LOGGEDPART_H

#include "backend/tables/om/OmOutputPart.h"
#include "backend/tables/om/OmOutputTree.h"
#include "omcell/OmCellText.h"
#include "tests/support/ForeignText.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace omtest {

/// A part that writes down its destruction, titled by a text that writes down everything.
///
///     ForeignLog log;
///     delete new LoggedPart(log, "a");   // log ends in "a: part", "a': destroy"
///
/// The first entry comes from this class's destructor, so a part that is not destroyed through its virtual destructor
/// leaves the second one alone.
class LoggedPart : public OmOutputPart {
public:
    LoggedPart(ForeignLog& log, std::string const& name)
        : OmOutputPart(ForeignText(log, name)), _log(log), _name(name) {}
    ~LoggedPart() override { _log.Add(_name, "part"); }
    LoggedPart(LoggedPart const&) = delete;
    LoggedPart& operator=(LoggedPart const&) = delete;

    void Accept(Visitor&) override { _log.Add(_name, "accepted"); }

private:
    ForeignLog& _log;
    std::string _name;
};

/// The document's titles and levels: "Output0 a1 b2"; a null part shows as "-".
inline std::string TitlesOf(ListTree<OmOutputPart*> const& tree) {
    std::string text;
    for (ListTreeData<OmOutputPart*> const& record : tree.List()) {
        text += text.empty() ? "" : " ";
        text += record.value != nullptr ? record.value->Title()->AsString() : "-";
        text += std::to_string(record.level);
    }
    return text;
}

/// A document whose parts log; its records are put in as they are said, whatever their levels.
///
///     LoggedDocument document("a0 b1 -2 c1");     four records, the third without a part
class LoggedDocument {
public:
    explicit LoggedDocument(std::string const& text) {
        delete tree.Root().Value();
        tree.List().clear();
        for (std::size_t at = 0; at < text.size();) {
            std::size_t const space = std::min(text.find(' ', at), text.size());
            std::string const name(1, text[at]);
            int const level = std::stoi(text.substr(at + 1, space - at - 1));
            tree.List().push_back({name != "-" ? new LoggedPart(log, name) : nullptr, level});
            at = space + 1;
        }
        log.Take();
    }

    /// A handle on the record with that title; on the end when there is none.
    OmOutputTree::Node At(std::string const& title) {
        auto position = tree.List().begin();
        while (position != tree.List().end() &&
               (position->value == nullptr || position->value->Title()->AsString() != title)) {
            ++position;
        }
        OmOutputTree::Node const node(tree, position);
        log.Take();
        return node;
    }

    OmOutputTree::Node End() { return {tree, tree.List().end()}; }

    std::string Titles() {
        std::string const titles = TitlesOf(tree);
        log.calls.erase(
            std::remove_if(log.calls.begin(), log.calls.end(),
                           [](std::string const& entry) { return entry.find(": AsString") != std::string::npos; }),
            log.calls.end());
        return titles;
    }

    /// Names of the logged parts destroyed so far, in their order: "c b a". The log is empty afterwards.
    std::string Destroyed() {
        std::string names;
        for (std::string const& entry : log.Take({"part"})) {
            names += names.empty() ? "" : " ";
            names += entry.substr(0, entry.find(':'));
        }
        return names;
    }

    ForeignLog log;
    OmOutputTree tree;
};

} // namespace omtest

#endif
