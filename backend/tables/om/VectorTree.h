#ifndef OMTREE_BACKEND_TABLES_OM_VECTORTREE_H
#define OMTREE_BACKEND_TABLES_OM_VECTORTREE_H

#include "backend/tables/Assert.h"
#include "backend/tables/om/OmVector.h"
#include "omcell/OmMemoryRegion.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#ifndef OMTREE_CHECK_HANDLES
#define OMTREE_CHECK_HANDLES 0
#endif

#if OMTREE_CHECK_HANDLES
#include <memory>
#endif

/// Ordered tree whose nodes hold their children by value, one block for each parent.
///
///     tree node                      children of one parent, in display order
///     +-------+----------+--------+      +-------+-------+-------+
///     | value | children | parent |      | node0 | node1 | node2 | ...
///     +-------+----|-----+----^---+      +--|----+--|----+--|----+
///                  `----------|------------>'       |       |
///                             `---------------------+-------'   each points back at its parent
///
/// The root node is embedded in the tree object; the region of its children vector is the tree's region, and every node
/// below is made with it. The tree object must not be moved: first-level nodes point at it.
///
/// Invariants
///  1. After every operation that ends with `Reparent`, each node's parent pointer names the node whose children vector
///     holds it. `AddChild` keeps this; `InsertBefore`, `InsertAt` and `EraseChild` leave the repair to their caller.
///  2. Children stay in the order in which the operations put them. Nothing sorts.
///  3. No operation, destructor or walk uses native stack in proportion to depth.
///
/// Handles (`Node`, `ConstNode`) are a node pointer and a depth, copied freely. A handle is valid until the children
/// vector that holds its node changes (any insertion, erasure or move relocates elements); re-fetch it from the root.
/// A build with OMTREE_CHECK_HANDLES=1 counts the changes of every children vector and lets the handles that `Child`,
/// `Parent`, `AddChild` and the ranges give remember the count; a stale one is reported at its first use ("stale
/// handle: the children around its node have changed, fetch it from the root again", source
/// `backend/tables/om/VectorTree`). So is, by whoever asks with `CheckHolds`, a handle of another tree ("handle of
/// another tree"). A handle made of a bare pointer is not followed.
///
/// REQUIRES of T: copyable; when T can be made from (T const&, OmMemoryRegion*), copies below the root are made that
/// way.
template <typename T>
class OmVectorTree {
public:
    struct TreeNode;
    class Node;
    class ConstNode;
    class Subtree;
    template <typename Handle>
    class ChildIterator;

    /// Asks a node for a copy of a value instead of a value made from arguments.
    struct CopyOf {};

#if OMTREE_CHECK_HANDLES
    /// Counts the changes of one children vector. Handles share it, so it can be asked after its node is gone.
    struct Epoch {
        std::uint64_t changes = 0;
        std::weak_ptr<Epoch const> above; ///< of the vector that holds the owner; empty while the owner is in none
    };
#endif

    /// One node. Trees hand these out through handles; programs do not make them.
    struct TreeNode {
        T value;
        OmVector<TreeNode> children;
        TreeNode* parent;

        template <typename... Arguments>
        TreeNode(OmMemoryRegion* region, TreeNode* above, Arguments&&... arguments)
            : value(std::forward<Arguments>(arguments)...), children(region), parent(above) {}

        /// A childless node that holds a copy of `source`, made for `region` where T can be copied into one.
        TreeNode(OmMemoryRegion* region, TreeNode* above, CopyOf, T const& source)
            : value(Copied(source, region)), children(region), parent(above) {}

        TreeNode(TreeNode const&) = delete;
        TreeNode& operator=(TreeNode const&) = delete;

        /// Destroys the children, first to last, each with its own subtree first; then the value.
        ~TreeNode() {
            DestroyChildren();
            CountChange();
        }

        /// Destroys the subtree below this node, iteratively.
        void DestroyChildren();

        /// Points every child at this node.
        void AdoptChildren() {
            for (TreeNode& child : children) {
                child.parent = this;
            }
        }

        /// For whoever put a node in among the children or took one out. A value with an operation
        /// `ChildrenRearranged()` hears of it. Appending a new child by `AddChild` is no rearrangement.
        void ChildrenChanged() {
            CountChange();
            Tell(value, 0);
        }

#if OMTREE_CHECK_HANDLES
        std::shared_ptr<Epoch> epoch = std::make_shared<Epoch>();
        void CountChange() { ++epoch->changes; }
        void StandsBelow(TreeNode const& above) { epoch->above = above.epoch; }
#else
        void CountChange() {}
        void StandsBelow(TreeNode const&) {}
#endif

    private:
        template <typename Value>
        static auto Tell(Value& value, int) -> decltype(value.ChildrenRearranged()) {
            value.ChildrenRearranged();
        }
        template <typename Value>
        static void Tell(Value&, long) {}

        static T Copied(T const& source, [[maybe_unused]] OmMemoryRegion* region) {
            if constexpr (std::is_constructible_v<T, T const&, OmMemoryRegion*>) {
                return T(source, region);
            } else {
                return T(source);
            }
        }
    };

    /// All ones: what `ChildPosition` gives for "no child".
    static constexpr unsigned int NoPosition = static_cast<unsigned int>(-1);

    /// A tree whose root value is made from `arguments`; children live in `region` (the default heap when null).
    template <typename... Arguments>
    explicit OmVectorTree(OmMemoryRegion* region, Arguments&&... arguments)
        : _root(region, nullptr, std::forward<Arguments>(arguments)...) {}

    OmVectorTree(OmVectorTree const&) = delete;
    OmVectorTree& operator=(OmVectorTree const&) = delete;

    Node Root() { return Node(&_root, 0); }
    ConstNode Root() const { return ConstNode(&_root, 0); }

    /// The tree's region; never null, not owned.
    OmMemoryRegion* Region() const { return _root.children.Region(); }

    /// For whoever is handed a handle that must be this tree's own: in a checking build one of another tree is
    /// reported. O(depth) there, nothing elsewhere.
#if OMTREE_CHECK_HANDLES
    void CheckHolds(ConstNode const& node) const {
        node.CheckFresh();
        OM_ASSERT(node.StandsUnder(_root), "handle of another tree", "backend/tables/om/VectorTree", __LINE__);
    }
#else
    void CheckHolds(ConstNode const&) const {}
#endif

    /// Appends a copy of `value` as the last child of `parent` and returns a handle to it. Invalidates the handles to
    /// parent's other children. Amortised O(1), plus the children and grandchildren of `parent` when its storage moves.
    Node AddChild(Node const& parent, T const& value) { return EmplaceChild(parent, CopyOf{}, value); }

    /// The same with a value made from `arguments`, which may refer to what is in the tree.
    template <typename... Arguments>
    Node EmplaceChild(Node const& parent, Arguments&&... arguments);

    /// Moves the subtree in just before the first child of `parent` whose value equals `*reference`; at the end when
    /// `reference` is null or no child equals it. Equal siblings are never told apart. Follow with `Reparent`.
    static void InsertBefore(Node const& parent, Subtree subtree, T const* reference);

    /// Moves the subtree in before position `position` of parent's children (0 to their number). Follow with
    /// `Reparent`.
    static void InsertAt(Node const& parent, Subtree subtree, std::size_t position);

    /// Moves the subtree in as the last child of `parent`, as `AddChild` does with a copy: parent pointers hold
    /// afterwards, but for the subtree's own. Throws std::bad_alloc; the tree is as it was then.
    static void AppendSubtree(Node const& parent, Subtree subtree);

    /// Makes room for one more child, as an insertion would, so that the next one cannot fail. Parent pointers hold
    /// afterwards. Throws std::bad_alloc; nothing has changed then.
    static void MakeRoom(Node const& parent);

    /// Takes child number `position` out, closes the gap by a plain memory move, and destroys the node with its whole
    /// subtree. The moved siblings' own children still point at the old addresses until `Reparent`.
    /// REQUIRES: position < parent.ChildCount(). A hardened check; the call does nothing when its handler returns.
    static void EraseChild(Node const& parent, std::size_t position);

    /// The same for the child that `node` names.
    /// REQUIRES: `node` is a child of `parent`. A hardened check, too.
    static void EraseChild(Node const& parent, ConstNode const& node);

    /// A child that was taken out of its parent as `EraseChild` does, and is destroyed with this object.
    class TakenChild;

    /// Position of the first child whose value equals `value`, or NoPosition.
    static unsigned int ChildPosition(ConstNode const& parent, T const& value);

    /// A deep copy of `source` and everything below it, in `region`, with parent pointer `newParent`. Values are copied
    /// in pre-order.
    static Subtree CopySubtree(ConstNode const& source, TreeNode* newParent, OmMemoryRegion* region);

    /// Points every child of `node` at `node`; with `recursive` does the same in every descendant.
    static void Reparent(Node const& node, bool recursive);

    /// The node that is reached from `root` by the same child positions as `node` is from its own root; the trees must
    /// have the same shape. A handle of depth 0 gives (root, 0). Assertion "0 <= offset && offset < vec.size()" (source
    /// `backend/tables/om/VectorTree`) when a parent pointer on the way does not hold its child; a handler that returns
    /// gets a null handle. O(depth).
    static Node Counterpart(ConstNode const& node, Node const& root);

    /// Calls `enter(ConstNode)` for `start` and its descendants in pre-order; a node for which it returns false is not
    /// descended into. Uses child order only, never parent pointers.
    template <typename Enter>
    static void WalkPreOrder(ConstNode const& start, Enter&& enter);

private:
    /// Appends a childless node whose value is made from `arguments`.
    template <typename... Arguments>
    static TreeNode& Append(TreeNode& above, OmMemoryRegion* region, Arguments&&... arguments) {
        TreeNode& child = above.children.emplace_back(region, &above, std::forward<Arguments>(arguments)...);
        child.StandsBelow(above);
        above.CountChange();
        return child;
    }

    /// Position of `node` among the children of `parent`; ChildCount() when it is none of them. The node may stand in
    /// an unrelated block, so the distance is taken on plain addresses.
    static std::size_t OffsetOf(TreeNode const* node, TreeNode const& parent) {
        OmVector<TreeNode> const& children = parent.children;
        std::size_t const offset =
            (reinterpret_cast<std::uintptr_t>(node) - reinterpret_cast<std::uintptr_t>(children.data())) /
            sizeof(TreeNode);
        return offset < children.size() ? offset : children.size();
    }

    /// After the children of `above` may have moved from `before`.
    static void AdoptGrandchildren(TreeNode& above, TreeNode const* before) {
        if (above.children.data() != before) {
            for (TreeNode& child : above.children) {
                child.AdoptChildren();
            }
        }
    }

    TreeNode _root;
};

template <typename T>
class OmVectorTree<T>::TakenChild {
public:
    /// REQUIRES: position < parent.ChildCount().
    TakenChild(Node const& parent, std::size_t position) : _taken(parent.Ptr()->children, position) {
        parent.Ptr()->ChildrenChanged();
    }

private:
    typename OmVector<TreeNode>::Taken _taken;
};

/// Steps over the children of one node, giving each as a handle.
template <typename T>
template <typename Handle>
class OmVectorTree<T>::ChildIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Handle;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Handle;

    ChildIterator(Handle const& parent, std::size_t position) : _parent(parent), _position(position) {}
    Handle operator*() const { return _parent.Child(_position); }
    ChildIterator& operator++() {
        ++_position;
        return *this;
    }
    ChildIterator operator++(int) { return ChildIterator(_parent, _position++); }
    friend bool operator==(ChildIterator const& a, ChildIterator const& b) { return a._position == b._position; }
    friend bool operator!=(ChildIterator const& a, ChildIterator const& b) { return a._position != b._position; }

private:
    Handle _parent;
    std::size_t _position;
};

/// Read-only handle: node pointer and depth (0 for the root). A default-made handle is null.
template <typename T>
class OmVectorTree<T>::ConstNode {
public:
    ConstNode() = default;
    ConstNode(TreeNode const* node, unsigned int depth) : _node(node), _depth(depth) {}

    bool IsNull() const { return _node == nullptr; }
    unsigned int Depth() const { return _depth; }

    /// REQUIRES of all below: the handle is valid.
    T const& Value() const { return Ptr()->value; }
    std::size_t ChildCount() const { return Ptr()->children.size(); }
    /// Child number k. REQUIRES: k < ChildCount().
    ConstNode Child(std::size_t k) const {
        ConstNode child(Ptr()->children.data() + k, _depth + 1);
        child.WatchBelow(*_node);
        return child;
    }
    /// The handle (parent pointer, depth - 1); null for the root.
    ConstNode Parent() const {
        ConstNode parent(Ptr()->parent, _depth - 1);
        parent.WatchAbove(*this);
        return parent;
    }

    using Iterator = ChildIterator<ConstNode>;
    Iterator begin() const { return Iterator(*this, 0); }
    Iterator end() const { return Iterator(*this, ChildCount()); }

    /// The tree node itself. In a checking build this is where a stale handle is reported.
    TreeNode const* Ptr() const {
        CheckFresh();
        return _node;
    }

    friend bool operator==(ConstNode const& a, ConstNode const& b) { return a._node == b._node; }
    friend bool operator!=(ConstNode const& a, ConstNode const& b) { return a._node != b._node; }

private:
    friend class Node;
    friend class OmVectorTree;

#if OMTREE_CHECK_HANDLES
    void WatchBelow(TreeNode const& parent) { Watch(parent.epoch); }
    // The parent pointer may still wait for `Reparent`, so the way up leads over the epochs alone.
    void WatchAbove(ConstNode const& child) {
        if (child._epoch != nullptr) {
            Watch(child._epoch->above.lock());
        }
    }
    void Watch(std::shared_ptr<Epoch const> epoch) {
        _epoch = std::move(epoch);
        _seen = _epoch != nullptr ? _epoch->changes : 0;
    }
    void CheckFresh() const {
        OM_ASSERT(_epoch == nullptr || _epoch->changes == _seen,
                  "stale handle: the children around its node have changed, fetch it from the root again",
                  "backend/tables/om/VectorTree", __LINE__);
    }
    // A tree may be a million levels deep, and each of them be asked about.
    static constexpr unsigned int LevelsFollowed = 64;
    // Over the epochs, as a stale handle or parent pointer leads anywhere.
    bool StandsUnder(TreeNode const& root) const {
        if (_epoch == nullptr) {
            return _depth > 0 || _node == &root;
        }
        std::shared_ptr<Epoch const> top = _epoch;
        for (unsigned int level = 0; std::shared_ptr<Epoch const> const above = top->above.lock(); ++level) {
            if (level == LevelsFollowed) {
                return true;
            }
            top = above;
        }
        return top == root.epoch;
    }
    std::shared_ptr<Epoch const> _epoch; ///< of the children vector that holds the node; null when not followed
    std::uint64_t _seen = 0;
#else
    void WatchBelow(TreeNode const&) {}
    void WatchAbove(ConstNode const&) {}
    void CheckFresh() const {}
#endif

    TreeNode const* _node = nullptr;
    unsigned int _depth = 0;
};

/// Handle that gives write access to the value. Converts to a ConstNode.
template <typename T>
class OmVectorTree<T>::Node {
public:
    Node() = default;
    Node(TreeNode* node, unsigned int depth) : _handle(node, depth) {}

    operator ConstNode() const { return _handle; }

    bool IsNull() const { return _handle.IsNull(); }
    unsigned int Depth() const { return _handle.Depth(); }
    T& Value() const { return Ptr()->value; }
    std::size_t ChildCount() const { return _handle.ChildCount(); }
    Node Child(std::size_t k) const { return Node(_handle.Child(k)); }
    Node Parent() const { return Node(_handle.Parent()); }
    TreeNode* Ptr() const { return const_cast<TreeNode*>(_handle.Ptr()); }

    using Iterator = ChildIterator<Node>;
    Iterator begin() const { return Iterator(*this, 0); }
    Iterator end() const { return Iterator(*this, ChildCount()); }

    friend bool operator==(Node const& a, Node const& b) { return a._handle == b._handle; }
    friend bool operator!=(Node const& a, Node const& b) { return a._handle != b._handle; }

private:
    // Only handles that came from a writable node are turned back into one.
    explicit Node(ConstNode const& handle) : _handle(handle) {}

    ConstNode _handle;
};

/// A subtree that stands in no tree yet, owned by this object until an insertion takes it. Move-only.
template <typename T>
class OmVectorTree<T>::Subtree {
public:
    /// A single node whose value is made from `arguments`, in `region` (the default heap when null).
    template <typename... Arguments>
    Subtree(OmMemoryRegion* region, TreeNode* parent, Arguments&&... arguments) {
        void* const place = OmMemoryRegion::OrDefault(region)->Allocate(sizeof(TreeNode));
        try {
            _node = ::new (place) TreeNode(region, parent, std::forward<Arguments>(arguments)...);
        } catch (...) {
            OmMemoryRegion::Release(place);
            throw;
        }
    }
    Subtree(Subtree&& other) noexcept : _node(std::exchange(other._node, nullptr)) {}
    Subtree& operator=(Subtree&& other) noexcept {
        std::swap(_node, other._node);
        return *this;
    }
    ~Subtree() {
        if (_node != nullptr) {
            _node->~TreeNode();
            OmMemoryRegion::Release(_node);
        }
    }

    TreeNode* Ptr() const { return _node; }

private:
    friend class OmVectorTree;

    // The node's bytes moved into a children vector: only the block is left.
    void Forget() { OmMemoryRegion::Release(std::exchange(_node, nullptr)); }

    TreeNode* _node = nullptr;
};

template <typename T>
void OmVectorTree<T>::TreeNode::DestroyChildren() {
    if (children.empty()) {
        return;
    }
    // The way back up is kept in the parent pointers of the nodes that are about to go.
    TreeNode* node = children.begin();
    node->parent = this;
    for (;;) {
        while (!node->children.empty()) {
            TreeNode* const below = node->children.begin();
            below->parent = node;
            node = below;
        }
        TreeNode* const above = node->parent;
        node->~TreeNode();
        ++node;
        if (node != above->children.end()) {
            node->parent = above;
            continue;
        }
        above->children.FreeRaw();
        if (above == this) {
            return;
        }
        node = above;
    }
}

template <typename T>
template <typename... Arguments>
typename OmVectorTree<T>::Node OmVectorTree<T>::EmplaceChild(Node const& parent, Arguments&&... arguments) {
    TreeNode* const above = parent.Ptr();
    OmVector<TreeNode>& children = above->children;
    TreeNode* const before = children.data();
    Append(*above, Region(), std::forward<Arguments>(arguments)...);
    if (children.size() > 1) {
        AdoptGrandchildren(*above, before);
    }
    return parent.Child(children.size() - 1);
}

template <typename T>
void OmVectorTree<T>::AppendSubtree(Node const& parent, Subtree subtree) {
    MakeRoom(parent);
    InsertAt(parent, std::move(subtree), parent.ChildCount());
    parent.Ptr()->children.back().parent = parent.Ptr();
    parent.Ptr()->children.back().AdoptChildren();
}

template <typename T>
void OmVectorTree<T>::MakeRoom(Node const& parent) {
    TreeNode* const above = parent.Ptr();
    TreeNode const* const before = above->children.data();
    above->children.MakeRoom();
    if (above->children.data() != before) {
        above->CountChange();
    }
    AdoptGrandchildren(*above, before);
}

template <typename T>
void OmVectorTree<T>::InsertBefore(Node const& parent, Subtree subtree, T const* reference) {
    std::size_t position = parent.ChildCount();
    if (reference != nullptr) {
        unsigned int const found = ChildPosition(parent, *reference);
        if (found != NoPosition) {
            position = found;
        }
    }
    InsertAt(parent, std::move(subtree), position);
}

template <typename T>
void OmVectorTree<T>::InsertAt(Node const& parent, Subtree subtree, std::size_t position) {
    TreeNode* const above = parent.Ptr();
    above->children.RelocateIn(position, subtree._node);
    subtree.Forget();
    above->children[position].StandsBelow(*above);
    above->ChildrenChanged();
}

template <typename T>
void OmVectorTree<T>::EraseChild(Node const& parent, std::size_t position) {
    if (OM_HARDENED(position < parent.ChildCount(), "position < parent.ChildCount()", "backend/tables/om/VectorTree",
                    __LINE__)) {
        TakenChild(parent, position);
    }
}

template <typename T>
void OmVectorTree<T>::EraseChild(Node const& parent, ConstNode const& node) {
    EraseChild(parent, OffsetOf(node.Ptr(), *parent.Ptr()));
}

template <typename T>
unsigned int OmVectorTree<T>::ChildPosition(ConstNode const& parent, T const& value) {
    OmVector<TreeNode> const& children = parent.Ptr()->children;
    for (std::size_t k = 0; k < children.size(); ++k) {
        if (children[k].value == value) {
            return static_cast<unsigned int>(k);
        }
    }
    return NoPosition;
}

template <typename T>
typename OmVectorTree<T>::Subtree OmVectorTree<T>::CopySubtree(ConstNode const& source, TreeNode* newParent,
                                                               OmMemoryRegion* region) {
    struct Frame {
        TreeNode const* from;
        TreeNode* to;
    };
    Subtree copy(region, newParent, CopyOf{}, source.Value());
    copy.Ptr()->children.reserve(source.ChildCount());
    std::vector<Frame> path{{source.Ptr(), copy.Ptr()}};
    while (!path.empty()) {
        Frame const frame = path.back();
        std::size_t const done = frame.to->children.size();
        if (done == frame.from->children.size()) {
            path.pop_back();
            continue;
        }
        TreeNode const& child = frame.from->children[done];
        TreeNode& below = Append(*frame.to, region, CopyOf{}, child.value);
        below.children.reserve(child.children.size());
        path.push_back({&child, &below});
    }
    return copy;
}

template <typename T>
void OmVectorTree<T>::Reparent(Node const& node, bool recursive) {
    TreeNode* const top = node.Ptr();
    top->AdoptChildren();
    if (!recursive) {
        return;
    }
    // Pre-order. Every pointer that leads back up was set on the way down.
    TreeNode* place = top;
    for (;;) {
        if (!place->children.empty()) {
            place = place->children.begin();
        } else {
            while (place != top && place + 1 == place->parent->children.end()) {
                place = place->parent;
            }
            if (place == top) {
                return;
            }
            ++place;
        }
        place->AdoptChildren();
    }
}

template <typename T>
typename OmVectorTree<T>::Node OmVectorTree<T>::Counterpart(ConstNode const& node, Node const& root) {
    std::vector<std::size_t> path;
    TreeNode const* place = node.Ptr();
    for (unsigned int depth = node.Depth(); depth > 0; --depth) {
        std::size_t const offset = OffsetOf(place, *place->parent);
        if (!OM_ASSERT(offset < place->parent->children.size(), "0 <= offset && offset < vec.size()",
                       "backend/tables/om/VectorTree", __LINE__)) {
            return Node();
        }
        path.push_back(offset);
        place = place->parent;
    }
    Node counterpart = root;
    while (!path.empty()) {
        counterpart = counterpart.Child(path.back());
        path.pop_back();
    }
    return counterpart;
}

template <typename T>
template <typename Enter>
void OmVectorTree<T>::WalkPreOrder(ConstNode const& start, Enter&& enter) {
    struct Frame {
        ConstNode node;
        std::size_t next;
    };
    std::vector<Frame> path;
    if (enter(start)) {
        path.push_back({start, 0});
    }
    while (!path.empty()) {
        Frame& frame = path.back();
        if (frame.next == frame.node.ChildCount()) {
            path.pop_back();
            continue;
        }
        ConstNode const child = frame.node.Child(frame.next++);
        if (enter(child)) {
            path.push_back({child, 0});
        }
    }
}

#endif
