#ifndef OMTREE_TESTS_SUPPORT_LABELINDEXWORLD_H
#define OMTREE_TESTS_SUPPORT_LABELINDEXWORLD_H

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CategoryText.h"
#include "tests/support/ForeignText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// One parent of a real dimension and beside it what its children and its child index are when every step is taken
/// literally: one list of children, one list of entries, one bisection. Every operation is made on both.
namespace omtest {

/// A string cell that sorts the other way round; as the left operand only, as the right one it is any string cell.
class Contrary final : public OmStringCell {
public:
    explicit Contrary(std::string const& text, OmMemoryRegion* region = nullptr) : OmStringCell(text, region) {}
    short Compare(OmCellText const& other) const override { return static_cast<short>(-OmStringCell::Compare(other)); }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        Contrary* const clone = new (region) Contrary(AsString(), region);
        clone->SetU8String(AsU8String());
        return clone;
    }
};

class LabelIndexWorld {
public:
    enum class Kind { None, Plain, Contrary, Foreign };

    struct Child {
        Kind kind = Kind::Plain;
        std::string given{};
        std::string u8{}; ///< what string cells compare
        bool isGroup = false;
        unsigned long long subscript = 0;
    };

    /// The parent is a group, the first child of the root.
    LabelIndexWorld() { _dimension->AddNewChild(_dimension->Root(), Label("P"), 0, true); }

    OmDimension& Dimension() { return *_dimension; }
    OmMemoryRegion& Region() { return _dimension->Region(); }
    OmDimension::Node Parent() { return _dimension->Root().Child(0); }
    std::size_t Size() const { return _children.size(); }
    Child const& At(std::size_t position) const { return _children[position]; }

    // --- find and create ---------------------------------------------------------------------------------------------

    /// What the library gave and what the steps give; equal, when all is well.
    struct Answers {
        long library;
        long steps;
    };

    Answers FindOrCreate(std::string const& label, bool isGroup, Kind kind = Kind::Plain, bool byValue = false) {
        Child const wanted{kind, label, label, isGroup, ++_subscript};
        std::unique_ptr<OmCellText> const text = TextOf(wanted);
        OmDimension::Node const parent = Parent();
        OmDimension::Node const found =
            byValue ? _dimension->Child(parent, OmDimensionNode(*text, wanted.subscript, isGroup, nullptr))
                    : _dimension->Child(parent, *text, wanted.subscript, isGroup);
        return {PositionOf(found), FindOrCreateLiterally(wanted)};
    }

    Answers Find(std::string const& label, bool isGroup, Kind kind = Kind::Plain) {
        Child const wanted{kind, label, label, isGroup, 0};
        OmDimension const& dimension = *_dimension;
        int const found = OmDimension::FindChild(dimension.Root().Child(0), *TextOf(wanted), isGroup);
        return {found, FoundAt(LowerBound(wanted), wanted)};
    }

    void Append(std::string const& label, bool isGroup, Kind kind = Kind::Plain) {
        Child const added{kind, label, label, isGroup, ++_subscript};
        _dimension->AddNewChild(Parent(), *TextOf(added), added.subscript, isGroup);
        _entries.push_back(static_cast<int>(_entries.size()));
        _children.push_back(added);
    }

    // --- edits -------------------------------------------------------------------------------------------------------

    void Relabel(std::size_t position, std::string const& label, Kind kind = Kind::Plain) {
        Child& child = _children[position];
        child.kind = kind;
        child.given = child.u8 = label;
        NodeAt(position).Value().Text(*TextOf(child));
    }

    void Regroup(std::size_t position) {
        _children[position].isGroup = !_children[position].isGroup;
        NodeAt(position).Value().IsGroup(_children[position].isGroup);
    }

    void SetU8(std::size_t position, std::string const& label) {
        if (OmStringCell* const cell = dynamic_cast<OmStringCell*>(NodeAt(position).Value().Text())) {
            cell->SetU8String(label);
            _children[position].u8 = label;
        }
    }

    /// The child takes over another one's label, subscript and flag; the other has no label then.
    void Assign(std::size_t position, std::size_t source) {
        NodeAt(position).Value() = NodeAt(source).Value();
        if (position != source) {
            _children[position] = _children[source];
            _children[source].kind = Kind::None;
        }
    }

    /// The child takes over a label that lives in another region.
    void AssignFromElsewhere(std::size_t position, std::string const& label) {
        Child& child = _children[position];
        child.kind = Kind::Plain;
        child.given = child.u8 = label;
        NodeAt(position).Value() = OmDimensionNode(*TextOf(child), child.subscript, child.isGroup, &_elsewhere);
    }

    /// The parent's value goes and comes back, child index and all.
    void AssignParent() {
        OmDimensionNode const copy(Parent().Value(), &Region());
        Parent().Value() = copy;
    }

    /// Somebody changes a text in the region that has nothing to do with labels.
    void EditElsewhere() {
        OmStringCell cell("cell", &Region());
        cell.SetU8String("other");
    }

    // --- rearrangements ----------------------------------------------------------------------------------------------

    void Delete(std::size_t position) {
        OmDimension::Node node = NodeAt(position);
        _dimension->Delete(node);
        OmDimension::Tree::Reparent(_dimension->Root(), true);
        Take(position);
        std::size_t i = 0;
        while (i < _entries.size()) {
            if (_entries[i] == static_cast<int>(position)) {
                std::size_t const at = position < _entries.size() ? position : i;
                _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(at));
                continue;
            }
            _entries[i] -= _entries[i] > static_cast<int>(position) ? 1 : 0;
            ++i;
        }
    }

    /// By the tree's own operation, which the dimension does not see.
    void Erase(std::size_t position) {
        OmDimension::Tree::EraseChild(Parent(), position);
        OmDimension::Tree::Reparent(_dimension->Root(), true);
        Take(position);
    }

    /// The same, into the dimension's region or another one.
    void Insert(std::size_t position, std::string const& label, bool isGroup, bool elsewhere) {
        OmMemoryRegion* const region = elsewhere ? &_elsewhere : &Region();
        Child const added{Kind::Plain, label, label, isGroup, ++_subscript};
        OmDimension::Tree::Subtree subtree(region, nullptr, *TextOf(added), added.subscript, isGroup, region);
        OmDimension::Tree::InsertAt(Parent(), std::move(subtree), position);
        OmDimension::Tree::Reparent(_dimension->Root(), true);
        _children.insert(_children.begin() + static_cast<std::ptrdiff_t>(position), added);
    }

    /// Takes a child out and puts its copy in elsewhere, so that the number of children is what it was.
    void Carry(std::size_t from, std::size_t to) {
        OmDimension::Tree::Subtree copy = OmDimension::Tree::CopySubtree(NodeAt(from), nullptr, &Region());
        OmDimension::Tree::EraseChild(Parent(), from);
        OmDimension::Tree::InsertAt(Parent(), std::move(copy), to);
        OmDimension::Tree::Reparent(_dimension->Root(), true);
        Child const carried = Take(from);
        _children.insert(_children.begin() + static_cast<std::ptrdiff_t>(to), carried);
    }

    /// Takes a child out and puts another one with the same label in its place, which lives in another region.
    void Replace(std::size_t position) {
        Child const child = _children[position];
        if (child.kind == Kind::Plain) {
            Erase(position);
            Insert(position, child.u8, child.isGroup, true);
        }
    }

    /// Another tree appends to the children, past the dimension.
    void AppendByAnotherTree(std::string const& label) {
        Child const added{Kind::Plain, label, label, false, ++_subscript};
        OmDimensionNode const value(*TextOf(added), added.subscript, false, nullptr);
        OmDimension::Tree(&Region(), value).AddChild(Parent(), value);
        _children.push_back(added);
    }

    void MoveToTheEnd(std::size_t position) {
        OmDimension::Node node = NodeAt(position);
        _dimension->moveChild(node, nullptr, false);
        _children.push_back(Take(position));
    }

    /// The parent's own node moves, bytes and all.
    void MoveParent() {
        for (int k = 0; k < 9; ++k) {
            _dimension->AddNewChild(_dimension->Root(), Label("beside"), 0, true);
        }
    }

    /// Goes on with a copy of the dimension.
    void Copy() { _dimension = &_table.AddDimension(*_dimension); }

    // --- comparison --------------------------------------------------------------------------------------------------

    std::string Entries() {
        OmDimension const& dimension = *_dimension;
        return ChildIndexOf(dimension.Root().Child(0));
    }
    std::string EntriesByTheSteps() const {
        std::string text;
        for (int const entry : _entries) {
            text += (text.empty() ? "" : ", ") + std::to_string(entry);
        }
        return text;
    }

    std::string Children() {
        std::string text;
        for (OmDimension::Node const& node : Parent()) {
            OmDimensionNode const& value = node.Value();
            text += (value.Text() != nullptr ? value.Text()->AsString() : "?") + "/" +
                    std::to_string(value.Subscript()) + (value.IsGroup() ? "g " : " ");
        }
        return text;
    }
    std::string ChildrenByTheSteps() const {
        std::string text;
        for (Child const& child : _children) {
            text += (child.kind != Kind::None ? child.given : "?") + "/" + std::to_string(child.subscript) +
                    (child.isGroup ? "g " : " ");
        }
        return text;
    }

private:
    OmDimension::Node NodeAt(std::size_t position) { return Parent().Child(position); }

    long PositionOf(OmDimension::Node const& node) {
        return static_cast<long>(node.Ptr() - Parent().Ptr()->children.begin());
    }

    std::unique_ptr<OmCellText> TextOf(Child const& child) {
        _log.Take();
        if (child.kind == Kind::Foreign) {
            return std::make_unique<ForeignText>(_log, child.given);
        }
        if (child.kind == Kind::Contrary) {
            return std::make_unique<Contrary>(child.given);
        }
        return std::make_unique<OmStringCell>(child.given);
    }

    Child Take(std::size_t position) {
        Child const taken = _children[position];
        _children.erase(_children.begin() + static_cast<std::ptrdiff_t>(position));
        return taken;
    }

    static int Compare(Child const& a, Child const& b) {
        if (a.kind == Kind::Foreign) {
            return a.given.compare(b.given);
        }
        if (b.kind == Kind::Foreign) {
            return a.kind == Kind::Contrary ? 1 : -1; // by order code
        }
        return a.kind == Kind::Contrary ? b.u8.compare(a.u8) : a.u8.compare(b.u8);
    }
    static bool Less(Child const& a, Child const& b) {
        if (a.isGroup != b.isGroup) {
            return a.isGroup;
        }
        if (a.kind == Kind::None || b.kind == Kind::None) {
            return a.kind == Kind::None && b.kind != Kind::None;
        }
        return Compare(a, b) < 0;
    }

    bool IsBefore(int entry, Child const& wanted) const {
        std::size_t const position = static_cast<std::size_t>(entry);
        return position < _children.size() && Less(_children[position], wanted);
    }
    std::size_t LowerBound(Child const& wanted) const {
        std::size_t first = 0;
        std::size_t length = _entries.size();
        while (length > 0) {
            std::size_t const half = length / 2;
            if (IsBefore(_entries[first + half], wanted)) {
                first += half + 1;
                length -= half + 1;
            } else {
                length = half;
            }
        }
        return first;
    }
    int FoundAt(std::size_t place, Child const& wanted) const {
        if (place == _entries.size()) {
            return -1;
        }
        std::size_t const position = static_cast<std::size_t>(_entries[place]);
        return position < _children.size() && !Less(wanted, _children[position]) ? _entries[place] : -1;
    }
    long FindOrCreateLiterally(Child const& wanted) {
        std::size_t const place = LowerBound(wanted);
        int const found = FoundAt(place, wanted);
        if (found >= 0) {
            return found;
        }
        _entries.insert(_entries.begin() + static_cast<std::ptrdiff_t>(place), static_cast<int>(_entries.size()));
        _children.push_back(wanted);
        return static_cast<long>(_children.size()) - 1;
    }

    ForeignLog _log{};
    OmMemoryRegion _elsewhere{false};
    OmPivotTable _table{Label("title"), Label("template"), false};
    OmDimension* _dimension{&_table.AddDimension(Label("D"))};
    std::vector<Child> _children{};
    std::vector<int> _entries{};
    unsigned long long _subscript = 0;
};

} // namespace omtest

#endif
