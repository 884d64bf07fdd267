#include "omcell/OmPartedText.h"

#include "omcell/detail/Ordering.h"

#include <algorithm>
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

OmCellText* OmPartedText::Clone(OmMemoryRegion* region) const {
    struct Pair {
        OmPartedText const* source;
        OmPartedText* copy;
    };
    std::unique_ptr<OmPartedText> top(Shell(region));
    std::vector<Pair> pending{{this, top.get()}};
    std::vector<Part> parts;
    std::vector<Part> slots;
    while (!pending.empty()) {
        Pair const pair = TakeLast(pending);
        parts.clear();
        slots.clear();
        pair.source->ListParts(parts);
        pair.copy->ListParts(slots);
        for (std::size_t k = 0; k < parts.size(); ++k) {
            OmCellText const* const part = *parts[k].slot;
            OmCellText*& slot = const_cast<OmCellText*&>(*slots[k].slot);
            if (OmPartedText const* const parted = AsParted(part)) {
                OmPartedText* const shell = parted->Shell(region);
                slot = shell;
                pending.push_back({parted, shell});
            } else if (part != nullptr) {
                slot = part->Clone(region);
            }
        }
    }
    return top.release();
}

icuTracker* OmPartedText::SetTracker(icuTracker* tracker) {
    std::vector<OmCellText*> pending{this};
    std::vector<Part> parts;
    while (!pending.empty()) {
        OmCellText* const text = TakeLast(pending);
        OmPartedText* const parted = AsParted(text);
        if (parted == nullptr) {
            if (text != nullptr) {
                text->SetTracker(tracker);
            }
            continue;
        }
        parted->OmCellText::SetTracker(tracker);
        parts.clear();
        parted->ListParts(parts);
        for (std::size_t k = parts.size(); k > 0; --k) {
            pending.push_back(*parts[k - 1].slot);
        }
    }
    return tracker;
}

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

void OmPartedText::DestroyParts() noexcept {
    Bin bin;
    GiveUpParts(bin);
    while (bin._next != nullptr) {
        OmPartedText* const text = bin._next;
        bin._next = text->_doomed;
        text->GiveUpParts(bin);
        delete text;
    }
}
