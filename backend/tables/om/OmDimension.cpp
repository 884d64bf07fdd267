#include "backend/tables/om/OmDimension.h"

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/detail/ChildIndex.h"
#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "omcell/detail/PlainText.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <typeinfo>

using om_detail::ChildIndex;
using om_detail::LabelHash;
using om_detail::LabelKey;
using om_detail::PlainText;

namespace {

icuTracker* TrackerOf(OmDimensionNode const& node) { return node.Text() != nullptr ? node.Text()->Tracker() : nullptr; }

void SetTracker(OmDimensionNode& node, icuTracker* tracker) {
    if (node.Text() != nullptr) {
        node.Text()->SetTracker(tracker);
    }
}

/// The clone in the tree has a tracker of its own to keep; our own kinds carry it over inside an arena.
void SetTrackerAgain(OmDimensionNode& node, icuTracker* tracker) {
    if (TrackerOf(node) != tracker) {
        SetTracker(node, tracker);
    }
}

void RequireGroup(OmDimensionNode const& parent) {
    if (!parent.IsGroup()) {
        throw OMSException("OmDimension::Child -- parent is not group");
    }
}

/// Whether the text is just of one of the library's kinds; they know how to tell each other apart.
bool IsOurs(OmCellText const& text) {
    std::type_info const* const kind = &typeid(text);
    return kind == &typeid(OmStringCell) || kind == &typeid(OmValue) || kind == &typeid(OmVariable) ||
           kind == &typeid(OmNumber) || kind == &typeid(OmComposite) || kind == &typeid(OmMessage) ||
           kind == &typeid(OmBlank);
}

/// Whether there is a hash, and nobody has added children past it.
bool MayAsk(LabelHash const* hash, OmVector<OmDimension::Tree::TreeNode> const& children) {
    return hash != nullptr && children.begin() + hash->Size() == children.end();
}

// An entry past the children (the index may be out of step) counts as sorting after the probe.
template <typename IsBefore>
std::size_t LowerBound(ChildIndex::Entries const& entries, OmVector<OmDimension::Tree::TreeNode> const& children,
                       IsBefore&& isBefore) {
    int const* const lower = std::partition_point(entries.begin(), entries.end(), [&](int entry) {
        std::size_t const position = static_cast<unsigned int>(entry);
        return position < children.size() && isBefore(children[position].value);
    });
    return static_cast<std::size_t>(lower - entries.begin());
}

} // namespace

OmDimension::OmDimension(OmDimensionNode const& root, OmMemoryRegion* region) : _tree(region, root) {}

OmDimension::OmDimension(OmDimension const& other, OmMemoryRegion* region)
    : _tree(region, other._tree.Root().Value(), region), _categories(other._categories), _index(other._index) {
    struct Frame {
        TreeNode const* from;
        TreeNode* to; ///< stays in place: its later siblings are appended after its subtree is done
        std::size_t next;
    };
    std::vector<Frame> path{{other._tree.Root().Ptr(), _tree.Root().Ptr(), 0}};
    while (!path.empty()) {
        Frame& frame = path.back();
        if (frame.next == frame.from->children.size()) {
            path.pop_back();
            continue;
        }
        TreeNode const& child = frame.from->children[frame.next++];
        path.push_back({&child, _tree.AddChild(Node(frame.to, 0), child.value).Ptr(), 0});
    }
}

OmDimension::~OmDimension() = default;

// --- find and create -------------------------------------------------------------------------------------------------

OmDimension::Found OmDimension::Search(ConstNode const& parent, OmDimensionNode const& probe) {
    ChildIndex::Entries const entries = ChildIndex::EntriesOf(parent.Value()._childIndex);
    OmVector<TreeNode> const& children = parent.Ptr()->children;
    std::size_t const place =
        LowerBound(entries, children, [&](OmDimensionNode const& child) { return child < probe; });
    if (place < entries.size()) {
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): there is an entry, so there are entries
        std::size_t const position = static_cast<unsigned int>(entries.first[place]);
        if (position < children.size() && !(probe < children[position].value)) {
            return {place, entries.first[place]};
        }
    }
    return {place, -1};
}

std::optional<OmDimension::Found> OmDimension::Search(ConstNode const& parent, LabelKey const& label, bool isGroup) {
    ChildIndex::Entries const entries = ChildIndex::EntriesOf(parent.Value()._childIndex);
    OmVector<TreeNode> const& children = parent.Ptr()->children;
    bool allPlain = true;
    Found found{0, -1};
    found.place = LowerBound(entries, children, [&](OmDimensionNode const& child) {
        OmStringCell const* const text = PlainText::Of(child.Text());
        allPlain = allPlain && text != nullptr;
        if (!allPlain) {
            return false;
        }
        return child.IsGroup() != isGroup ? child.IsGroup() : PlainText::Bytes(*text) < label.Bytes();
    });
    if (allPlain && found.place < entries.size()) {
        std::size_t const position = static_cast<unsigned int>(entries.first[found.place]);
        if (position < children.size()) {
            OmDimensionNode const& child = children[position].value;
            OmStringCell const* const text = PlainText::Of(child.Text());
            allPlain = text != nullptr;
            if (allPlain && child.IsGroup() == isGroup && PlainText::Bytes(*text) == label.Bytes()) {
                found.position = entries.first[found.place];
            }
        }
    }
    return allPlain ? std::optional<Found>(found) : std::nullopt;
}

// A text of a program's own may use the dimension while it is cloned, so the clone that the tree gets is made beside
// it.
OmDimension::Tree::Subtree OmDimension::Cloned(OmDimensionNode const& value) const {
    Tree::Subtree child(&Region(), nullptr, Tree::CopyOf{}, value);
    SetTrackerAgain(child.Ptr()->value, TrackerOf(value));
    return child;
}

OmDimension::Node OmDimension::Append(Node const& parent, Tree::Subtree child, std::size_t place) {
    OmDimensionNode& above = parent.Value();
    bool const isGroup = child.Ptr()->value.IsGroup();
    Tree::MakeRoom(parent);
    ChildIndex::Insert(above._childIndex, place, static_cast<int>(ChildIndex::SizeOf(above._childIndex)),
                       above.Region());
    Tree::AppendSubtree(parent, std::move(child));
    if (!isGroup) {
        CountLeaf();
    }
    return parent.Child(parent.ChildCount() - 1);
}

OmDimension::Node OmDimension::AppendString(Node const& parent, OmDimensionNode const& value) {
    OmDimensionNode& above = parent.Value();
    std::size_t const place = ChildIndex::SizeOf(above._childIndex);
    ChildIndex::Insert(above._childIndex, place, static_cast<int>(place), above.Region());
    try {
        Node const child = _tree.AddChild(parent, value);
        SetTrackerAgain(child.Value(), TrackerOf(value));
        if (!value.IsGroup()) {
            CountLeaf();
        }
        return child;
    } catch (...) {
        ChildIndex::TakeBack(above._childIndex, place);
        throw;
    }
}

OmDimension::Node OmDimension::Append(Node const& parent, OmStringCell const& text, Fields const& fields) {
    Node const child = _tree.EmplaceChild(parent, text, fields.subscript, fields.isGroup, &Region());
    OmDimensionNode& value = child.Value();
    value.Text()->SetTracker(TrackerOf(parent.Value()));
    value._sort = fields.sort;
    value._hide = fields.hide;
    value._hideLabels = fields.hideLabels;
    if (!fields.isGroup) {
        CountLeaf();
    }
    return child;
}

OmDimension::Node OmDimension::Child(Node const& parent, OmDimensionNode const& value) {
    _tree.CheckHolds(parent);
    RequireGroup(parent.Value());
    OmStringCell const* const plain = PlainText::Of(value.Text());
    if (plain == nullptr) {
        return FindOrCreate(parent, value);
    }
    return FindOrCreate(parent, *plain,
                        {value.Subscript(), value.IsGroup(), value.Sort(), value.Hide(), value.HideLabels()});
}

// A short label that the hash knows is answered here; all else, and what it needs on the stack, is kept out of the way.
// Of 100,000 labels looked up at random, each call waits for the text and for the slot, and the fewer instructions a
// call takes, the more of the next one's waiting overlaps with it.
OmDimension::Node OmDimension::Child(Node const& parent, OmCellText const& text, unsigned long long subscript,
                                     bool isGroup) {
    _tree.CheckHolds(parent);
    OmStringCell const* const plain = PlainText::Of(&text);
    TreeNode const* const above = parent.Ptr();
    LabelHash const* const hash = ChildIndex::HashOf(above->value._childIndex);
    if (plain != nullptr && above->value._isGroup && MayAsk(hash, above->children)) {
        std::string_view const bytes = PlainText::Bytes(*plain);
        if (bytes.size() <= LabelKey::LongestShort) {
            int const position = hash->FindShort(LabelKey::Short(bytes, isGroup));
            if (position >= 0) {
                return parent.Child(static_cast<std::size_t>(position));
            }
        }
    }
    return FindOrCreate(parent, text, subscript, isGroup);
}

OmDimension::Node OmDimension::FindOrCreate(Node const& parent, OmCellText const& text, unsigned long long subscript,
                                            bool isGroup) {
    OmStringCell const* const plain = PlainText::Of(&text);
    if (plain == nullptr) {
        return Child(parent, OmDimensionNode(text, subscript, isGroup, nullptr));
    }
    RequireGroup(parent.Value());
    return FindOrCreate(parent, *plain, {subscript, isGroup, OmSort::None, false, false});
}

OmDimension::Node OmDimension::FindOrCreate(Node const& parent, OmDimensionNode const& value) {
    OmDimensionNode copy(value, &Region());
    SetTracker(copy, TrackerOf(parent.Value()));
    ChildIndex::Destroy(std::exchange(copy._childIndex, nullptr));
    ChildIndex*& index = parent.Value()._childIndex;
    ChildIndex::Settle(index);
    Found found = Search(parent, copy);
    if (found.position < 0) {
        std::size_t const entries = ChildIndex::SizeOf(index);
        std::size_t const children = parent.ChildCount();
        Tree::Subtree child = Cloned(copy);
        if (entries == ChildIndex::SizeOf(index) && children == parent.ChildCount()) {
            return Append(parent, std::move(child), found.place);
        }
        // The text has changed the children while it was cloned, and may even have added this one.
        ChildIndex::Settle(index);
        found = Search(parent, copy);
        if (found.position < 0) {
            return Append(parent, std::move(child), found.place);
        }
    }
    return parent.Child(static_cast<std::size_t>(found.position));
}

// The copies that a text of another kind would see made and discarded are not made: a string cell cannot tell.
OmDimension::Node OmDimension::FindOrCreate(Node const& parent, OmStringCell const& text, Fields const& fields) {
    LabelKey const label(PlainText::Bytes(text), fields.isGroup);
    ChildIndex*& index = parent.Value()._childIndex;
    if (!MayAsk(ChildIndex::HashOf(index), parent.Ptr()->children) &&
        (!ChildIndex::IsTimeToHash(index) || !TryToHash(*parent.Ptr()))) {
        return FindOrCreateByBisection(parent, text, label, fields);
    }
    int const position = ChildIndex::HashOf(index)->Find(label);
    if (position >= 0) {
        return parent.Child(static_cast<std::size_t>(position));
    }
    if (ChildIndex::SizeOf(index) == LabelHash::Most || !ChildIndex::Add(index, label, parent.Value().Region())) {
        return FindOrCreateByBisection(parent, text, label, fields);
    }
    try {
        return Append(parent, text, fields);
    } catch (...) {
        index->TakeBack(label);
        throw;
    }
}

OmDimension::Node OmDimension::FindOrCreateByBisection(Node const& parent, OmStringCell const& text,
                                                       LabelKey const& label, Fields const& fields) {
    ChildIndex*& index = parent.Value()._childIndex;
    ChildIndex::Settle(index);
    std::optional<Found> const found = Search(parent, label, fields.isGroup);
    if (!found) {
        OmDimensionNode value(text, fields.subscript, fields.isGroup, nullptr);
        value._sort = fields.sort;
        value._hide = fields.hide;
        value._hideLabels = fields.hideLabels;
        return FindOrCreate(parent, value);
    }
    if (found->position >= 0) {
        return parent.Child(static_cast<std::size_t>(found->position));
    }
    ChildIndex::Insert(index, found->place, static_cast<int>(ChildIndex::SizeOf(index)), parent.Value().Region());
    try {
        return Append(parent, text, fields);
    } catch (...) {
        ChildIndex::TakeBack(index, found->place);
        throw;
    }
}

// The hash hears of edits in the tree's region alone, so nodes and labels that live elsewhere keep a parent from it.
bool OmDimension::TryToHash(TreeNode& parent) const {
    OmMemoryRegion& region = Region();
    OmVector<TreeNode> const& children = parent.children;
    ChildIndex::Entries const entries = ChildIndex::EntriesOf(parent.value._childIndex);
    if (region.IsDefaultHeap() || entries.size() != children.size()) {
        return false;
    }
    OmDimensionNode const* before = nullptr;
    for (int const entry : entries) {
        std::size_t const position = static_cast<unsigned int>(entry);
        if (position >= children.size()) {
            return false;
        }
        OmDimensionNode const& child = children[position].value;
        OmStringCell const* const text = PlainText::Of(child.Text());
        if (text == nullptr || PlainText::Home(*text) != &region || child.Region() != &region ||
            (before != nullptr && !(*before < child))) {
            return false;
        }
        before = &child;
    }
    return ChildIndex::MakeHash(*parent.value._childIndex, region, [&](std::size_t position) {
        OmDimensionNode const& child = children[position].value;
        return LabelKey(PlainText::Bytes(*PlainText::Of(child.Text())), child.IsGroup());
    });
}

OmDimension::Node OmDimension::AddNewChild(Node const& parent, OmCellText const& text, unsigned long long subscript,
                                           bool isGroup) {
    _tree.CheckHolds(parent);
    OmDimensionNode const value(text, subscript, isGroup, nullptr);
    OmDimensionNode copy(value, &Region());
    SetTracker(copy, TrackerOf(parent.Value()));
    ChildIndex::Destroy(std::exchange(copy._childIndex, nullptr));
    ChildIndex* const& index = parent.Value()._childIndex;
    if (PlainText::Of(copy.Text()) != nullptr) {
        ChildIndex::Settle(index);
        return AppendString(parent, copy);
    }
    Tree::Subtree child = Cloned(copy);
    ChildIndex::Settle(index);
    return Append(parent, std::move(child), ChildIndex::SizeOf(index));
}

int OmDimension::FindChild(ConstNode parent, OmCellText const& text, bool isGroup) {
    LabelHash const* const hash = ChildIndex::HashOf(parent.Value()._childIndex);
    bool const isHashed = MayAsk(hash, parent.Ptr()->children);
    if (OmStringCell const* const plain = PlainText::Of(&text)) {
        LabelKey const label(PlainText::Bytes(*plain), isGroup);
        if (isHashed) {
            return hash->Find(label);
        }
        if (std::optional<Found> const found = Search(parent, label, isGroup)) {
            return found->position;
        }
    } else if (isHashed && IsOurs(text)) {
        return -1; // where all labels are string cells, nothing equals a text of another kind of ours
    }
    return Search(parent, OmDimensionNode(text, 0, isGroup, nullptr)).position;
}

OmDimension::Node OmDimension::Counterpart(Node& node) { return Tree::Counterpart(node, Root()); }

// --- counts ----------------------------------------------------------------------------------------------------------

unsigned long long OmDimension::LargestLeafSubscript(TreeNode const* without) const {
    std::uint32_t largest = 0;
    Tree::WalkPreOrder(Root(), [&](ConstNode const& node) {
        if (node.Ptr() == without) {
            return false;
        }
        if (node.Depth() == 0 || node.Value().IsGroup()) {
            return true;
        }
        largest = std::max(largest, static_cast<std::uint32_t>(node.Value().Subscript()));
        return false;
    });
    return largest;
}

unsigned int OmDimension::getDepth(ConstNode node) {
    unsigned int depth = node.Depth();
    Tree::WalkPreOrder(node, [&](ConstNode const& below) {
        depth = std::max(depth, below.Depth());
        return true;
    });
    return depth;
}

unsigned int OmDimension::getMaximumDepth() const { return getDepth(Root()) + 1; }

void OmDimension::getGroupCountsByLevel(ConstNode node, std::vector<unsigned long long>& counts) {
    struct Frame {
        ConstNode node;
        std::size_t next;
        bool counted; ///< a childless child of this node was counted already
    };
    std::vector<Frame> path{{node, 0, false}};
    while (!path.empty()) {
        Frame& frame = path.back();
        if (frame.next == frame.node.ChildCount()) {
            path.pop_back();
            continue;
        }
        ConstNode const child = frame.node.Child(frame.next++);
        if (child.Value().IsGroup() && !child.Value().Hide()) {
            ++counts[child.Depth()];
        } else if (!frame.counted && child.ChildCount() == 0) {
            frame.counted = true;
            ++counts[child.Depth()];
        }
        path.push_back({child, 0, false});
    }
}

unsigned long long OmDimension::getMaxVisibleGroupCount() const {
    std::vector<unsigned long long> counts(getMaximumDepth(), 0);
    getGroupCountsByLevel(Root(), counts);
    return *std::max_element(counts.begin(), counts.end());
}
