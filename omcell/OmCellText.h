#ifndef OMTREE_OMCELL_OMCELLTEXT_H
#define OMTREE_OMCELL_OMCELLTEXT_H

#include "omcell/Export.h"
#include "omcell/OmCellMetaData.h"
#include "omcell/OmRegionManaged.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class icuTracker;

class OmComposite;
class OmStringCell;
class OmNumber;
class OmVariable;
class OmValue;
class OmMessage;
class OmBlank;

/// A text of the model: every label, title, caption, category name and cell value is one.
///
/// The seven kinds of this library are OmComposite, OmStringCell, OmNumber, OmVariable, OmValue, OmMessage and OmBlank;
/// programs may derive kinds of their own. The order of the virtual operations below is part of the interface.
///
/// Ownership. A holder never keeps the text that it is handed: it keeps a clone in its own region (`Clone`) and
/// destroys that through the virtual destructor (`delete text`), which hands the storage back with
/// `OmMemoryRegion::Release`.
///
/// A text stands wherever it was made with `new` (see OmRegionManaged); what it holds lies in its home, the region
/// named to its constructor. A kind whose constructor takes a region is given the same one in both places: a sweep of
/// another knows nothing of it.
///
/// What a text may hold outside its region. The metadata record is the only such thing, and only texts that named
/// their arena as home make it known there, so that sweeping an arena frees the records of our own kinds without
/// running a destructor; running the destructor afterwards is harmless. A foreign kind gets the same by handing its
/// region to the constructor below.
class OMCELL_API OmCellText : public OmRegionManaged {
public:
    class Visitor;

    /// How variables and values are labelled in outlines and tables.
    enum ModeType : std::int32_t {
        NameMode = 0,        ///< the name, or the value
        LabelMode = 1,       ///< the label
        LabelOrNameMode = 2, ///< the label where there is one, else the name or the value; the default
        BothMode = 3         ///< the name or value, and the label
    };

    /// Destroys the metadata record. The deleting form frees the text with `OmMemoryRegion::Release`.
    ~OmCellText() override;

    /// Calls the visitor's operation for the text's concrete kind. A kind of one's own calls the operation of the kind
    /// that it stands for, or attaches what it needs itself.
    virtual void Accept(Visitor& visitor) = 0;

    /// A code that orders texts of different kinds; one constant per kind.
    virtual short OrderCode() const = 0;

    /// The text as a string.
    virtual std::string AsString() const = 0;
    /// The text in UTF-8.
    virtual std::string AsU8String() const = 0;
    /// The text in its English form.
    virtual std::string AsEngString() const = 0;
    /// The text as it is shown in a cell. The base gives `AsString()`.
    virtual std::string AsFormattedString() const;
    /// The number that the text stands for. The base gives 0.0.
    virtual double NumericValue() const;
    /// Length that takes part in equality. The base gives 0.
    virtual std::size_t TextLength() const;
    /// Negative, zero or positive as this text sorts before, equal to or after the other.
    virtual short Compare(OmCellText const& other) const = 0;

    /// A deep copy in `region`, the default heap when null; the caller owns it. Metadata is copied with it. A copy made
    /// in the arena that the text itself lives in keeps the tracker; any other copy starts with none, because a tracker
    /// dies with its table.
    virtual OmCellText* Clone(OmMemoryRegion* region) const = 0;

    /// Stores the tracker, which may be null and is not owned, and returns it.
    virtual icuTracker* SetTracker(icuTracker* tracker);

    /// Writes the text to standard output, without a line end: two blanks for each `indent`, the text between double
    /// quotes, then ", Footnotes = " and ", Markers = " with their lists, each only when there is something in it.
    virtual void Print(unsigned int indent) const;

    /// Whether the text is a deliberately empty cell. The base says no.
    virtual bool IsBlank() const;

    /// Footnote numbers of the metadata; empty without metadata.
    std::vector<short> Footnotes() const;
    /// Footnote marker strings of the metadata; empty without metadata.
    std::vector<std::string> getMarkers() const;

    bool hasMeta() const { return _meta != 0 && (_meta & HomeTag) == 0; }
    /// The text's own record, or null. Valid until the next `setMeta` and no longer than the text.
    OmCellMetaData* getMeta() const { return hasMeta() ? reinterpret_cast<OmCellMetaData*>(_meta) : nullptr; }
    /// Copies the record; null takes the text's record away. The argument may be the text's own record.
    void setMeta(OmCellMetaData const* meta);

    /// The tracker that converts the text between code pages, or null. Not owned.
    icuTracker* Tracker() const { return _tracker; }

    /// Two texts are equal when their `TextLength` values are equal and then `Compare` gives 0; the length is asked
    /// first. `a` is the text that is asked to compare itself.
    static bool Equal(OmCellText const& a, OmCellText const& b) {
        return a.TextLength() == b.TextLength() && a.Compare(b) == 0;
    }

protected:
    /// `home` is the region that the text is built for; null means the default heap. A text that names its arena here
    /// can keep things outside of it (`Home()->Attach`) and still leave nothing behind when the arena is swept.
    explicit OmCellText(OmMemoryRegion* home = nullptr) : _meta(TaggedHome(home)) {}

    /// Copies the metadata; the copy has no tracker and the default heap as its home.
    OmCellText(OmCellText const& other);
    OmCellText& operator=(OmCellText const&) = delete;

    /// The region given to the constructor; never null. Not owned.
    OmMemoryRegion* Home() const {
        return _meta == 0   ? OmMemoryRegion::DefaultHeap()
               : !hasMeta() ? reinterpret_cast<OmMemoryRegion*>(_meta - HomeTag)
                            : HomeOfRecord();
    }

    /// For a clone just made: takes over the source's metadata, and its tracker when both live in the same arena.
    void TakeOver(OmCellText const& source) {
        if (source.hasMeta()) {
            TakeOverRecord(source);
        } else {
            _tracker = _meta != 0 && _meta == source._meta ? source._tracker : nullptr;
        }
    }

private:
    static constexpr std::uintptr_t HomeTag = 1;

    static std::uintptr_t TaggedHome(OmMemoryRegion* home) {
        return home != nullptr && !home->IsDefaultHeap() ? reinterpret_cast<std::uintptr_t>(home) + HomeTag : 0;
    }
    OmMemoryRegion* HomeOfRecord() const;
    void TakeOverRecord(OmCellText const& source);

    /// One word for two things, as few texts have a record: the address of the record, which knows the home; or, while
    /// there is none, the home with its lowest bit set; or 0, no record and the default heap. A word less a cell is an
    /// eighth of what a short string cell takes.
    std::uintptr_t _meta = 0;

protected:
    icuTracker* _tracker = nullptr;
};

/// Called by `OmCellText::Accept`, one operation for each kind, in the order of the slots.
class OMCELL_API OmCellText::Visitor {
public:
    virtual ~Visitor();
    virtual void Visit(OmComposite& text) = 0;
    virtual void Visit(OmStringCell& text) = 0;
    virtual void Visit(OmNumber& text) = 0;
    virtual void Visit(OmVariable& text) = 0;
    virtual void Visit(OmValue& text) = 0;
    virtual void Visit(OmMessage& text) = 0;
    virtual void Visit(OmBlank& text) = 0;
};

#endif
