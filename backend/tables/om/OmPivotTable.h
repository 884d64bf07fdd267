#ifndef OMTREE_BACKEND_TABLES_OM_OMPIVOTTABLE_H
#define OMTREE_BACKEND_TABLES_OM_OMPIVOTTABLE_H

#include "backend/tables/Export.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/OmFootnote.h"
#include "backend/tables/om/OmOutputPart.h"
#include "backend/tables/om/OmVector.h"
#include "omcell/OmCellProperties.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class BackendSettings;
class OmCellText;
class OmDimension;
class icuTracker;

namespace om_detail {
class PrefixVisitor;
}

/// The rich item of the output document: any number of dimensions, a sparse store of cells, three axes, the texts that
/// frame the table, footnotes, formats and display properties.
///
/// Building a table: construct it; add dimensions (`AddDimension`) and grow their category trees
/// (`OmDimension::Child`); write each dimension's number into `Rows()`, `Columns()` or `Layers()`; store cells
/// (`Cell`); add footnotes, formats and properties; then `EndTable()`. Settings (`setBackendSettings`) may be given at
/// any time and apply to what is stored afterwards. The display headings lay a finished table out.
///
/// A cell index has one subscript for each dimension, entry k for dimension k, in the order in which the dimensions
/// were added. Cells are kept in a trie that stores nothing for empty positions. With dimensions 0 and 1:
///
///     root (dimension 1)     leaf vectors (dimension 0)
///     +---+                  +------+------+------+
///     | 0 | ---------------> | text | null | text |        cells (0,0) and (2,0)
///     +---+                  +------+------+------+
///     | 1 | null
///     +---+                  +------+------+
///     | 2 | ---------------> | null | text |               cell (1,2)
///     +---+                  +------+------+
///
/// Memory. The table's private record is its memory region: everything inside the table is a clone made there, owned by
/// the table, valid until it is replaced or the table is destroyed. Texts handed in are never kept. Destroying the
/// table gives the whole region back at once; cells of a foreign kind are then not destroyed one by one.
///
/// Texts of a program's own kind may call any operation of the table while they are cloned, visited (`Accept`,
/// `SetTracker`) or destroyed, also while the table ends: then they find what has gone no more, and what they add goes
/// too. What such a call does stands when the outer one goes on. The part's own title goes last, when the table's
/// record has gone, and uses nothing of the table. REQUIRES: a text that is asked something (its string, length, order,
/// comparison) changes nothing in the table, in a search and a dump as well. What is handed in stays until the call
/// returns. While a dimension is copied, that one is not changed. No text destroys the table.
///
/// Copying a table is shallow like that of every part: only one of the two may be destroyed.
class OMTREE_API OmPivotTable : public OmOutputPart {
public:
    class CellStore;
    class ConstIterator;
    class Data;
    class ICUHelper;
    class Iterator;
    class PointerVector;

    // --- construction ------------------------------------------------------------------------------------------------

    /// `title` becomes the part's title, `templateName` is cloned into the table. Whether the table is a table of
    /// warnings or of notes is decided here, by the template name's text ("Warnings", "Notes"), once and for all.
    OmPivotTable(OmCellText const& title, OmCellText const& templateName, bool hasSplits);
    ~OmPivotTable() override;

    OmPivotTable(OmPivotTable const&) = default;
    OmPivotTable& operator=(OmPivotTable const&) = default;

    void Accept(OmOutputPart::Visitor& visitor) override;

    bool HasSplits() const;
    bool IsWarnings() const;
    bool IsNotes() const;

    // --- dimensions --------------------------------------------------------------------------------------------------

    /// Adds a dimension without categories, named by a clone of `name`, and returns it; the table owns it. Cells stored
    /// before get subscript 0 on it. It stands on no axis until its number is written into one.
    OmDimension& AddDimension(OmCellText const& name);
    /// The same with a deep copy of `other`, which may belong to another table and need not have a name.
    OmDimension& AddDimension(OmDimension const& other);

    /// Number of the first dimension with this name, or -1. A dimension whose name an assignment took away is never
    /// found.
    int FindDimension(OmCellText const& name) const;

    /// The dimension; valid as long as the table. Throws OMSException "OmPivotTable::Dimension() -- which < 0" (which,
    /// 0) or "OmPivotTable::Dimension() -- which < NDimensions()" (which, number of dimensions).
    OmDimension& Dimension(int which);
    OmDimension const& Dimension(int which) const;
    std::size_t NDimensions() const;

    /// The dimension's number of categories, as positions along an axis count it: a number below 0, which a subscript
    /// of 2^31 - 1 or more can leave behind (`OmDimension::NumCategories`), is 0 here. Throws OMSException
    /// "OmPivotTable::Size() -- which < 0" or "OmPivotTable::Size() -- which < NDimensions()", values as for
    /// `Dimension`.
    std::size_t Size(int which) const;
    /// The numbers of categories of all dimensions as they keep them, one below 0 included.
    std::vector<int> SizeVector() const;

    /// Copies the dimensions, not the cells, axes or properties, of `source`, those that it has when the call begins.
    /// The copies keep the numbers that they have there, and their names get no tracker. When it throws for want of
    /// memory or because a label threw, the table has none, unless labels gave it cells or dimensions of its own.
    /// Throws OMSException "OmPivotTable::CopyDimensions() -- _my->_dimensions.size() != 0" (number of dimensions, 0)
    /// on a table that has dimensions.
    void CopyDimensions(OmPivotTable const& source);

    // --- axes --------------------------------------------------------------------------------------------------------

    /// Numbers of the dimensions on each axis. A position written past an axis's end fills the gap with -1.
    PuppetVector<short>& Rows();
    PuppetVector<short> const& Rows() const;
    PuppetVector<short>& Columns();
    PuppetVector<short> const& Columns() const;
    PuppetVector<short>& Layers();
    PuppetVector<short> const& Layers() const;

    /// Ends the building of the table: when the axes do not hold as many entries as there are dimensions, removes the
    /// -1 gaps. Counts entries only. Throws OMSException "OmPivotTable::Data::ReindexAxis() -- ndim != nCount" (number
    /// of dimensions, number of entries) when the counts differ still.
    void EndTable();

    // --- cells -------------------------------------------------------------------------------------------------------

    /// The cell, or null where there is none (subscripts past what is stored included). Valid until the cell is
    /// replaced or deleted. O(dimensions). Throws OMSException "OmPivotTable::Cell() -- nind !=
    /// _my->_dimensions.size()" (length of the index, number of dimensions) or "OmPivotTable::Cell() -- subscript < 0"
    /// (subscript, 0).
    OmCellText const* Cell(std::vector<int> const& index) const;
    OmCellText* Cell(std::vector<int> const& index);

    /// Stores a clone of `cell`, or nothing in the place when it is null. The old cell is destroyed before the new one
    /// is cloned; its metadata, if any, goes over to the new one. The clone gets the table's tracker. Returns true, or
    /// false when the cell limit is exceeded: the table is then scratched and nothing is stored. Every call counts
    /// towards the limit, whatever comes of it. Throws as the look-up does; a table without dimensions takes no cell.
    ///
    /// The clone is made first where both are of the library's own kinds, to the last part (when there is no memory the
    /// old cell stays), and where a cell is stored into its own place (nothing happens when it is its own clone).
    /// REQUIRES: otherwise `cell` is no part of the old cell (hardened check "text != held"; when its handler returns,
    /// the old cell stays). A program's text may call any operation of the table while it goes, is cloned or gets its
    /// tracker. What the call stores in the same place before the clone is there is replaced by it; what it stores
    /// there afterwards stays.
    bool Cell(std::vector<int> const& index, OmCellText const* cell);
    bool Cell(std::vector<int> const& index, OmCellText const& cell);

    /// Destroys the cell, if there is one, and the nodes above it that have become empty. The count is not lowered.
    /// O(dimensions); in a part of the table where cells are scattered (the whole when it has one or two dimensions) up
    /// to a look at each of them, until such looks have come to fifteen for each cell: the part is then made anew,
    /// once, which costs half a second and 64 MB for a million cells. Throws std::bad_alloc then; no cell has changed.
    /// REQUIRES: an index of the right length, each subscript inside what was stored (hardened checks
    /// "nind == _my->_dimensions.size()" and "subscript < node length").
    void deleteCell(std::vector<int> const& index);

    /// Calls of the storing `Cell` so far, failed ones included; not the number of cells present.
    long getNumCells() const;

    /// A scratched table was abandoned because it grew too large. The flag changes nothing else.
    void Scratch(bool scratched);
    bool IsScratched() const;

    /// Iterators over the stored cells, dimension 0 fastest, empty positions skipped. `FirstCell` and a step cost the
    /// empty entries that they pass, and coming to a part of the table where cells are scattered costs sorting the
    /// subscripts of that part (some 10 ns a cell; the whole table when it has one or two dimensions). Copying an
    /// iterator copies that order. Iterators know nothing of changes to the table after they were made: `Cell()` is not
    /// to be read once that cell was replaced or deleted. A step after a change leads to a cell that is there, behind
    /// the last one, and passes no cell that was there all the time, unless a dimension was added meanwhile.
    Iterator FirstCell();
    ConstIterator FirstCell() const;

    // --- texts -------------------------------------------------------------------------------------------------------

    // Each setter destroys the old text, then clones the new one and gives it the table's tracker. Where both texts are
    // of the library's own kinds, to the last part, the clone is made first; the new text may then be the old one or a
    // part of it, and when there is no memory the old one stays. A text whose `Clone` gives itself may be set again; it
    // stays.
    // REQUIRES: a text that is of a program's own kind, or has such a part or takes the place of one that is or has, is
    // neither the one that the table holds there nor a part of it (hardened check "text != held"; when its handler
    // returns, the text stays).
    // A program's text may call any operation of the table while it goes, is cloned or gets its tracker; the place is
    // empty meanwhile. What the call puts in the same place before the clone is there is replaced by it; what it puts
    // there afterwards stays.

    /// Null until set; null clears.
    OmCellText* CornerText();
    OmCellText const* CornerText() const;
    void CornerText(OmCellText const* text);

    OmCellText* Caption();
    OmCellText const* Caption() const;
    void Caption(OmCellText const* text);

    /// The table title stands beside the part's own title. Null until set.
    OmCellText const* GetTableTitle() const;
    /// REQUIRES: a table title was set (hardened check "_my->_tableTitle != 0"; there is nothing to return without).
    OmCellText& TableTitle();
    void SetTableTitle(OmCellText const& title);

    /// The constructor's second text.
    OmCellText* TemplateName();
    OmCellText const* TemplateName() const;

    // --- footnotes ---------------------------------------------------------------------------------------------------

    /// Registers a reference to a footnote and returns its number. The first record with an equal text is reused, takes
    /// the note's marker if it has one, and counts up by one, whatever its sign, but not past the largest `int`. With
    /// `alwaysNew`, or when there is none, a new record is appended; its count is 1, or the note's own if that is
    /// negative. O(footnotes). Numbers are positions in `Footnotes()`. The note may be one of the table's own; its
    /// marker is the one that it has when the text is there, none when a text has taken it out of the list meanwhile.
    ///
    /// A new record comes into the list with its text; then the text, and after it the marker, are visited; last the
    /// count goes up. A program's text may call any operation of the table meanwhile: records that it adds stand before
    /// the new one when it does so while the text is cloned, else behind it, and a record that it takes out of the list
    /// is not counted.
    int Footnote(OmFootnote const& note, bool alwaysNew);

    OmVector<OmFootnote>& Footnotes();
    OmVector<OmFootnote> const& Footnotes() const;

    /// Set by the program when it has dropped footnotes; the table does not act on it.
    void RemovedFootnotes(bool removed);
    bool HasRemovedFootnotes() const;

    /// Can only be raised.
    void setHasMarkers();
    bool hasMarkers() const;

    // --- display properties, stored for the rendering side and never interpreted -------------------------------------

    /// Whether the table is shown.
    bool Show() const;
    void Show(bool value);

    /// Whether row and column labels are turned.
    bool RotateRowLabels() const;
    void RotateRowLabels(bool value);
    bool RotateColumnLabels() const;
    void RotateColumnLabels(bool value);

    /// -1 until set.
    int OptionNumber() const;
    void OptionNumber(int value);

    /// -1 until set.
    long long TableId() const;
    void TableId(long long value);

    /// Empty until set.
    std::string const& TableLocale() const;
    void TableLocale(std::string const& value);

    /// Widths in points; -1, none given.
    int MinColumnWidth() const;
    void MinColumnWidth(int value);
    int MaxColumnWidth() const;
    void MaxColumnWidth(int value);
    int MinRowWidth() const;
    void MinRowWidth(int value);
    int MaxRowWidth() const;
    void MaxRowWidth(int value);

    /// The layer that a viewer showed last, as `OmDisplayLayerHeading::restoreLayer` takes it up; -1, before the first.
    int getLayerLoc() const;
    void setLayerLoc(int value);

    /// Strings for the rendering side.
    std::string const& getBorderInfo() const;
    void setBorderInfo(std::string const& value);
    std::string const& getTableLookInfo() const;
    void setTableLookInfo(std::string const& value);
    std::string const& getTablePropertiesInfo() const;
    void setTablePropertiesInfo(std::string const& value);

    /// Widths and heights of single columns and rows, replaced whole.
    std::vector<unsigned int> const& getTableCustomWidths() const;
    void setTableCustomWidths(std::vector<unsigned int> const& value);
    std::vector<unsigned int> const& getTableCustomHeights() const;
    void setTableCustomHeights(std::vector<unsigned int> const& value);

    /// Whether the caption is shown.
    bool showCaption() const;
    void showCaption(bool value);

    /// Language and display modes as the engine numbers them; 0 at first.
    int getLang() const;
    void setLang(int value);
    int getVariableMode() const;
    void setVariableMode(int value);
    int getValueMode() const;
    void setValueMode(int value);

    /// Whether the numbers come from imputed data.
    bool getImputed() const;
    void setImputed(bool value);

    /// Ends of a colour scale, kept as 32-bit values; -1, none given.
    long getStartColor() const;
    void setStartColor(long value);
    long getEndColor() const;
    void setEndColor(long value);

    /// Whether labels alone are shown.
    bool getLabelsOnly() const;
    void setLabelsOnly(bool value);

    /// Whether the table makes trackers and attaches them; true until the backend settings say otherwise.
    bool fastTable() const;
    void setFastTable(bool fast);

    bool backendOwns() const;
    void setBackendOwns(bool owns);

    /// Strings joined by commas, without escaping. Adding appends a comma first when something is stored already.
    std::string const& getMiscProperties() const;
    void addMiscProperty(std::string const& property);

    /// Styles of empty cells by the program's own key, and the table's cell styles; kept for the program.
    std::map<std::uint64_t, std::uint16_t>& getEmptyCellStyles() const;
    std::map<std::uint64_t, std::uint16_t>& emptyCellStyles();
    std::vector<OmCellProperties>& getCellStyles() const;
    std::vector<OmCellProperties>& cellStyles();

    // --- format areas ------------------------------------------------------------------------------------------------

    /// Takes ownership of `format` and destroys the one stored for its area before; null is ignored. A format for an
    /// area past the ninth is stored, but can never be read, and a second one for the same area takes its place without
    /// the first being destroyed. Whatever is stored at the end is destroyed with the table. REQUIRES: the object is
    /// not the one already stored (hardened check "format != getAreaFormat(format->getArea())").
    void setAreaFormat(FormatArea* format);
    /// The stored format, owned by the table, or null. Null for every area past the ninth.
    FormatArea* getAreaFormat(FormatArea::Area area) const;

    // --- settings and text conversion --------------------------------------------------------------------------------

    /// Takes the engine's settings. The cell limit holds from the next store on. The first call with fast tables on
    /// makes the table's trackers and attaches the first to the part's title, the template name, the table title, every
    /// category label and every footnote (not to the corner text, the caption, or cells stored before); later calls
    /// never replace a tracker. Throws what making a tracker throws, and what a text throws that gets one. The settings
    /// are as before when there was no memory for them; from then on they hold, and the next call with fast tables on
    /// makes up for what this one has not done (it goes over all these texts once more).
    ///
    /// In this order: the settings, the fast flag, the first tracker, the texts (title, template name, table title,
    /// dimensions, footnotes), and, if the fast flag is still up and there is none yet, the UTF-8 tracker. A program's
    /// text may call any operation of the table when it gets the tracker; what it adds is visited as it is added.
    /// O(labels + footnotes), and the depth of each label that is of a program's own kind.
    void setBackendSettings(BackendSettings const& settings);
    /// The stored copy.
    BackendSettings& getBackendSettings() const;

    /// Null until made; owned by the table. Both are one object when the data is Unicode.
    icuTracker* getICUTracker() const;
    icuTracker* getU8Tracker() const;

    /// Attaches the table's tracker (or null) to a text that the program placed in the table by other means.
    void setHelper(OmCellText& text);

    // --- debug dumps to standard output ------------------------------------------------------------------------------

    // What the program has set on the stream (width, fill, base, flags, locale) changes nothing in what these write,
    // and they leave it as it is. Texts of a program's own kind print themselves as they like. REQUIRES: no text of the
    // table changes the table when it is asked for its string.

    /// Writes dimensions, cells, corner text, caption and footnotes between two lines that name the table.
    /// REQUIRES: a table title was set (hardened check "_my->_tableTitle != 0").
    void Print() const;

    /// Writes every logical entry of the cell store, null ones included, with addresses: as many lines as the store's
    /// vectors are long, up to two thousand million for one far subscript.
    void PrintCells() const;

private:
    friend class OmDisplayLayerHeading;

    void TrackTexts();

    // What the headings ask of the cell store; see backend/tables/om/detail/CellProjection.h.
    std::size_t PresentCells() const;
    void VisitPrefixes(std::size_t lowest, std::vector<int> const& wanted, om_detail::PrefixVisitor visit) const;

    static void PrintLeavesIn(PointerVector& node, std::size_t level);
    static void PrintLeavesOfKeys(PointerVector const& node, std::size_t level);

    Data* _my;
};

/// Position on a stored cell, for a table that may be changed. A default-made iterator is over.
class OMTREE_API OmPivotTable::Iterator {
public:
    struct Data;

    Iterator();
    Iterator(Iterator const& other);
    Iterator& operator=(Iterator const& other);
    /// One that was moved from is over.
    Iterator(Iterator&& other) noexcept;
    Iterator& operator=(Iterator&& other) noexcept;
    ~Iterator();

    /// Advances to the next stored cell; does nothing once the iteration is over. Throws std::bad_alloc when there is
    /// no memory to sort scattered cells in; the iteration is over then.
    Iterator& operator++();

    /// The current cell, owned by the table; null when the iteration is over.
    OmCellText* Cell() const { return _data != nullptr ? _data->cell : nullptr; }

    /// The current cell's index, one entry for each dimension. Meaningless once the iteration is over.
    std::vector<int> Index() const;

private:
    friend class OmPivotTable;
    explicit Iterator(Data* data);

    /// The part of the record that can be read without a call.
    struct Head {
        OmCellText* cell = nullptr; ///< null when the iteration is over
    };
    Data& Record() const;

    Head* _data; ///< a Data
};

/// The same over a const table.
class OMTREE_API OmPivotTable::ConstIterator {
public:
    ConstIterator();
    ConstIterator(Iterator const& other);
    ConstIterator(Iterator&& other) noexcept;

    ConstIterator& operator++();
    OmCellText const* Cell() const { return _iterator.Cell(); }
    std::vector<int> Index() const;

private:
    Iterator _iterator;
};

#endif
