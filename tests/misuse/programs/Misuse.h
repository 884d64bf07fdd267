#ifndef OMTREE_TESTS_MISUSE_PROGRAMS_MISUSE_H
#define OMTREE_TESTS_MISUSE_PROGRAMS_MISUSE_H

#include "omcell/OmStringCell.h"
#include "omtree.h"

#include <string>
#include <utility>

/// One program that misuses the library, in a process of its own: `misuse NAME` runs it. `cases.cmake` says of each
/// name what is done wrong and who catches it.
///
///     MISUSE(text_kept_after_its_release) {
///         ...
///         Use(*text);
///     }
namespace misuse {

class Case {
public:
    using Body = void (*)();
    Case(char const* name, Body body);
};

/// Reads all of a text, out of the optimiser's sight.
void Use(OmCellText const& text);
/// Reads or writes one byte, likewise.
char Read(void const* place);
void Write(void* place);
/// Something that the optimiser has to compute.
void Use(std::size_t number);

inline OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }
/// A text whose clone takes another size of block than that of a short one, so that the block of neither serves the
/// other next: a text that is read after its release may else read as the one that came in its place.
inline OmStringCell LongText(char const* text) { return Text(text + std::string(100, '.')); }

/// A table with a dimension for rows (0: a, b, c) and one for columns (1: x, y), and a cell at each place.
struct SmallTable {
    SmallTable();

    OmPivotTable table;
    OmDimension& rows;
    OmDimension& columns;
};

} // namespace misuse

#define MISUSE(name)                                                                                                   \
    static void name();                                                                                                \
    static misuse::Case const name##_case(#name, name);                                                                \
    static void name()

#endif
