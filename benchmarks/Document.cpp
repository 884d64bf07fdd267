// A document: procedures stand, parts are appended under each, the whole is walked in reading order, and every
// procedure is removed, last to first. Beside it the tree that a user would write: vectors of unique_ptr.

#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Inputs.h"

#include <algorithm>
#include <list>

namespace om_bench {

namespace {

constexpr std::size_t UsualParts = 100'000;
constexpr std::size_t PartsEach = 100;
constexpr char CodePage[] = "UTF-8";

/// The fields of our parts, and the children.
struct RivalPart {
    RivalPart(RivalText const& text, std::string const& codePage)
        : title(text.Clone()), isLog(text.Given() == "Log"), localeCodePage(codePage) {}
    RivalPart(RivalPart const&) = delete;
    RivalPart& operator=(RivalPart const&) = delete;
    virtual ~RivalPart() = default;

    std::unique_ptr<RivalText> title;
    void* userData = nullptr;
    bool visible = true;
    bool expanded = true;
    bool isLog;
    std::list<std::string> textList;
    std::string localeCodePage;
    std::vector<std::unique_ptr<RivalPart>> children;
};

struct Seen {
    std::size_t parts = 0;
    std::size_t depths = 0; ///< sum over all parts

    friend bool operator==(Seen const&, Seen const&) = default;
};

void See(RivalPart const& part, std::size_t depth, Seen& seen) {
    seen.parts += part.visible ? 1U : 0U;
    seen.depths += depth;
    for (std::unique_ptr<RivalPart> const& child : part.children) {
        See(*child, depth + 1, seen);
    }
}

class RivalDocument {
public:
    using Text = RivalString;

    explicit RivalDocument(std::size_t procedures) : _root(Text("Output"), CodePage) {
        for (std::size_t i = 0; i < procedures; ++i) {
            _root.children.push_back(std::make_unique<RivalPart>(Text("procedure"), CodePage));
        }
    }

    std::size_t Procedures() const { return _root.children.size(); }

    void Append(std::size_t procedure, RivalText const& title, std::string const& codePage) {
        _root.children[procedure]->children.push_back(std::make_unique<RivalPart>(title, codePage));
    }

    Seen Walk() const {
        Seen seen;
        See(_root, 0, seen);
        return seen;
    }

    void Prune() { _root.children.pop_back(); }

private:
    RivalPart _root;
};

class OurDocument {
public:
    using Text = OmStringCell;

    explicit OurDocument(std::size_t procedures) {
        OmStringCell const title("procedure");
        for (std::size_t i = 0; i < procedures; ++i) {
            _procedures.push_back(_tree.AppendChild(_tree.Root(), new OmProcedure(title, "en", CodePage, "English")));
        }
    }

    std::size_t Procedures() const { return _procedures.size(); }

    void Append(std::size_t procedure, OmCellText const& title, std::string const& codePage) {
        _tree.AppendChild(_procedures[procedure], new OmTextBlock(title, codePage));
    }

    Seen Walk() const {
        Seen seen;
        for (OmOutputTree::Record const& record : _tree.List()) {
            seen.parts += record.value->Visible() ? 1U : 0U;
            seen.depths += static_cast<std::size_t>(record.level);
        }
        return seen;
    }

    void Prune() {
        _tree.Prune(_procedures.back());
        _procedures.pop_back();
    }

private:
    OmOutputTree _tree;
    std::vector<OmOutputTree::Node> _procedures;
};

template <typename Document>
void Live(benchmark::State& state) {
    std::size_t const procedures = std::max<std::size_t>(Count(UsualParts) / PartsEach, 1);
    std::size_t const parts = procedures * PartsEach;
    typename Document::Text const title("a part title");
    std::string const codePage = CodePage;

    Phases phases(state);
    Document document(procedures);
    TrimHeap();
    phases.Time("append", parts, [&] {
        for (std::size_t procedure = 0; procedure < procedures; ++procedure) {
            for (std::size_t i = 0; i < PartsEach; ++i) {
                document.Append(procedure, title, codePage);
            }
        }
    });
    Seen seen;
    phases.Time("walk", parts, [&] { seen = document.Walk(); });
    if (seen != Seen{1 + procedures + parts, procedures + 2 * parts}) {
        Fail(state, "another number of parts, or other depths");
    }
    phases.Time("prune", parts, [&] {
        for (std::size_t i = 0; i < procedures; ++i) {
            document.Prune();
        }
    });
    if (document.Walk() != Seen{1, 0}) {
        Fail(state, "parts are left");
    }
    phases.Finish();
}

[[maybe_unused]] bool const registered = [] {
    Register("document", "ours", Live<OurDocument>);
    Register("document", "vectors", Live<RivalDocument>);
    return true;
}();

} // namespace

} // namespace om_bench
