#include "omcell/OmPartedText.h"

#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "omcell/detail/Belonging.h"
#include "omcell/detail/Ordering.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <typeinfo>
#include <utility>

/// One step of a comparison: two texts to compare (a parted pair is replaced by the steps of its parts), or a verdict
/// that holds when everything before it was equal.
struct OmPartedText::Step {
    OmCellText const* text;
    OmCellText const* other;
    short verdict;
};

namespace {

OmPartedText* AsParted(OmCellText* text) { return dynamic_cast<OmPartedText*>(text); }
OmPartedText const* AsParted(OmCellText const* text) { return dynamic_cast<OmPartedText const*>(text); }

bool SameClass(OmCellText const& text, OmCellText const& other) { return typeid(text) == typeid(other); }

/// Whether the text is just of one of the library's kinds with parts.
bool IsOfOurKinds(OmCellText const& text) {
    std::type_info const* const kind = &typeid(text);
    return kind == &typeid(OmComposite) || kind == &typeid(OmValue) || kind == &typeid(OmVariable) ||
           kind == &typeid(OmMessage);
}

template <typename T>
T TakeLast(std::vector<T>& stack) {
    T const last = stack.back();
    stack.pop_back();
    return last;
}

// What was pushed last comes off first, so a run is turned round once it is complete.
template <typename T>
void TurnRound(std::vector<T>& stack, std::size_t from) {
    std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(from), stack.end());
}

} // namespace

OmPartedText::OmPartedText(OmMemoryRegion* home) : OmCellText(home) {}

OmPartedText::~OmPartedText() = default;

std::size_t OmPartedText::OwnLength() const { return 0; }

short OmPartedText::CompareOwn(OmPartedText const&) const { return 0; }

std::string OmPartedText::AsString() const { return PutTogether(Form::Given); }

std::string OmPartedText::AsU8String() const { return PutTogether(Form::U8); }

std::string OmPartedText::AsEngString() const { return PutTogether(Form::English); }

std::string OmPartedText::AsFormattedString() const { return PutTogether(Form::Formatted); }

std::string OmPartedText::PutTogether(Form form) const {
    auto const inForm = [form](OmCellText const& text) {
        switch (form) {
        case Form::U8:
            return text.AsU8String();
        case Form::English:
            return text.AsEngString();
        case Form::Formatted:
            return text.AsFormattedString();
        case Form::Given:
            break;
        }
        return text.AsString();
    };
    std::string result;
    Pieces pieces;
    pieces.Add(*this);
    while (!pieces._pieces.empty()) {
        Pieces::Piece const piece = TakeLast(pieces._pieces);
        switch (piece.kind) {
        case Pieces::Piece::Bytes:
            result += piece.bytes;
            continue;
        case Pieces::Piece::Again:
            result.append(result, pieces._runs[piece.shown].first, pieces._runs[piece.shown].length);
            continue;
        case Pieces::Piece::End:
            pieces._runs[piece.shown].length = result.size() - pieces._runs[piece.shown].first;
            continue;
        case Pieces::Piece::First:
            pieces._runs[piece.shown].first = result.size();
            pieces._pieces.push_back({Pieces::Piece::End, nullptr, {}, piece.shown});
            break;
        case Pieces::Piece::Part:
            break;
        }
        if (OmPartedText const* const parted = AsParted(piece.text)) {
            std::size_t const from = pieces._pieces.size();
            parted->Expand(form, pieces);
            TurnRound(pieces._pieces, from);
        } else {
            result += inForm(*piece.text);
        }
    }
    return result;
}

std::size_t OmPartedText::Pieces::AddFirst(OmCellText const& text) {
    _runs.push_back({0, 0});
    _pieces.push_back({Piece::First, &text, {}, _runs.size() - 1});
    return _runs.size() - 1;
}

std::size_t OmPartedText::TextLength() const {
    std::size_t length = 0;
    std::vector<OmPartedText const*> pending{this};
    std::vector<Part> parts;
    while (!pending.empty()) {
        OmPartedText const* const text = TakeLast(pending);
        length += text->OwnLength();
        parts.clear();
        text->ListParts(parts);
        for (Part const& part : parts) {
            if (OmPartedText const* const parted = AsParted(*part.slot)) {
                pending.push_back(parted);
            } else if (*part.slot != nullptr) {
                length += (*part.slot)->TextLength();
            }
        }
    }
    return length;
}

short OmPartedText::Compare(OmCellText const& other) const {
    std::vector<Step> steps{{this, &other, 0}};
    while (!steps.empty()) {
        Step const step = TakeLast(steps);
        if (step.verdict != 0) {
            return step.verdict;
        }
        OmPartedText const* const parted = AsParted(step.text);
        if (parted == nullptr) {
            short const order = step.text->Compare(*step.other);
            if (order != 0) {
                return order;
            }
        } else if (SameClass(*parted, *step.other)) {
            std::size_t const from = steps.size();
            parted->AddSteps(static_cast<OmPartedText const&>(*step.other), steps);
            TurnRound(steps, from);
        } else {
            return om_detail::OrderKinds(*parted, *step.other);
        }
    }
    return 0;
}

void OmPartedText::AddSteps(OmPartedText const& sameKind, std::vector<Step>& steps) const {
    auto const addVerdict = [&steps](short verdict) {
        if (verdict != 0) {
            steps.push_back({nullptr, nullptr, verdict});
        }
    };
    std::vector<Part> parts;
    std::vector<Part> others;
    ListParts(parts);
    sameKind.ListParts(others);
    addVerdict(CompareOwn(sameKind));
    for (std::size_t k = 0; k < std::min(parts.size(), others.size()); ++k) {
        OmCellText const* const part = *parts[k].slot;
        OmCellText const* const other = *others[k].slot;
        addVerdict(om_detail::Order(parts[k].key, others[k].key));
        addVerdict(om_detail::Order(part != nullptr, other != nullptr));
        if (part != nullptr && other != nullptr) {
            steps.push_back({part, other, 0});
        }
    }
    addVerdict(om_detail::Order(parts.size(), others.size()));
}

// --- walks that foreign parts may disturb ---------------------------------------------------------------------------

/// The parts of a text and of the parted texts among them, each before its own parts, without the null ones. What the
/// caller does with a part may change the texts on the way down to it: parts that were taken away are passed over.
class OmPartedText::Walk {
public:
    struct Entry {
        OmCellText* part;
        OmCellText** copy; ///< the slot for its copy; null in a walk without
    };

    /// Goes on with the parts of `text`; `shell` is null, or a fresh shell of it.
    void Enter(OmPartedText const& text, OmPartedText* shell) {
        std::size_t const first = _entries.size();
        _parts.clear();
        text.ListParts(_parts);
        for (Part const& part : _parts) {
            _entries.push_back({*part.slot, nullptr});
        }
        if (shell != nullptr) {
            _parts.clear();
            shell->ListParts(_parts);
            for (std::size_t k = 0; k < _parts.size(); ++k) {
                _entries[first + k].copy = const_cast<OmCellText**>(_parts[k].slot);
            }
        }
        _levels.push_back({&text, first, first, text._edits});
    }

    /// The next part; one without a part at the end.
    Entry Next() {
        while (!_levels.empty()) {
            Level& level = _levels.back();
            if (level.next == _entries.size()) {
                _entries.resize(level.first);
                _levels.pop_back();
                continue;
            }
            if (level.text->_edits != level.edits) {
                PassOverMissing(level);
            }
            Entry const entry = _entries[level.next++];
            if (entry.part != nullptr) {
                return entry;
            }
        }
        return {nullptr, nullptr};
    }

private:
    struct Level {
        OmPartedText const* text;
        std::size_t first; ///< of its entries, which go on to the end
        std::size_t next;
        std::size_t edits; ///< of the text when its entries were known to be there
    };

    void PassOverMissing(Level& level) {
        _parts.clear();
        level.text->ListParts(_parts);
        std::vector<OmCellText const*> there;
        for (Part const& part : _parts) {
            there.push_back(*part.slot);
        }
        std::sort(there.begin(), there.end(), std::less<>());
        for (std::size_t k = level.next; k < _entries.size(); ++k) {
            if (!std::binary_search(there.begin(), there.end(), _entries[k].part, std::less<>())) {
                _entries[k].part = nullptr;
            }
        }
        level.edits = level.text->_edits;
    }

    std::vector<Level> _levels;
    std::vector<Entry> _entries;
    std::vector<Part> _parts;
};

OmCellText* OmPartedText::Clone(OmMemoryRegion* region) const {
    std::unique_ptr<OmPartedText> top(Shell(region));
    Walk walk;
    walk.Enter(*this, top.get());
    for (Walk::Entry entry = walk.Next(); entry.part != nullptr; entry = walk.Next()) {
        if (OmPartedText const* const parted = AsParted(entry.part)) {
            OmPartedText* const shell = parted->Shell(region);
            *entry.copy = shell;
            walk.Enter(*parted, shell);
        } else {
            *entry.copy = entry.part->Clone(region);
        }
    }
    return top.release();
}

icuTracker* OmPartedText::SetTracker(icuTracker* tracker) {
    OmCellText::SetTracker(tracker);
    Walk walk;
    walk.Enter(*this, nullptr);
    for (Walk::Entry entry = walk.Next(); entry.part != nullptr; entry = walk.Next()) {
        if (OmPartedText* const parted = AsParted(entry.part)) {
            parted->OmCellText::SetTracker(tracker);
            walk.Enter(*parted, nullptr);
        } else {
            entry.part->SetTracker(tracker);
        }
    }
    return tracker;
}

template <typename See>
bool OmPartedText::AllParts(See see) const {
    std::vector<OmPartedText const*> pending{this};
    std::vector<Part> parts;
    while (!pending.empty()) {
        OmPartedText const* const text = TakeLast(pending);
        parts.clear();
        text->ListParts(parts);
        for (Part const& part : parts) {
            if (*part.slot == nullptr) {
                continue;
            }
            if (!see(**part.slot)) {
                return false;
            }
            if (OmPartedText const* const parted = AsParted(*part.slot)) {
                pending.push_back(parted);
            }
        }
    }
    return true;
}

bool OmPartedText::IsOurs() const {
    return IsOfOurKinds(*this) &&
           AllParts([](OmCellText const& part) { return om_detail::Belonging::IsPlain(part) || IsOfOurKinds(part); });
}

bool OmPartedText::HasPart(OmCellText const& text) const {
    return !AllParts([&text](OmCellText const& part) { return &part != &text; });
}

// --- destruction -----------------------------------------------------------------------------------------------------

void OmPartedText::Bin::Take(OmCellText*& slot) {
    OmCellText* const part = std::exchange(slot, nullptr);
    OmPartedText* const parted = AsParted(part);
    if (parted == nullptr) {
        delete part;
        return;
    }
    parted->_doomed = _next;
    _next = parted;
}

// A text stays until all that lies in it is gone, for its parts may use it while they are destroyed; what they add to
// it goes too.
void OmPartedText::DestroyParts() noexcept {
    Bin bin;
    _doomed = nullptr;
    bin._next = this;
    for (;;) {
        OmPartedText* const text = bin._next;
        text->GiveUpParts(bin);
        if (bin._next != text) {
            continue;
        }
        if (text == this) {
            return;
        }
        bin._next = text->_doomed;
        delete text;
    }
}
