#ifndef OMTREE_PLATFORM_CODEPAGECONVERTER_H
#define OMTREE_PLATFORM_CODEPAGECONVERTER_H

#include "platform/Export.h"

#include <string>

/// Conversion of UTF-8 text into a code page by the C library's tables.
///
/// Names are accepted as writers spell them:
///
///     a name on the list        "UTF-8", "utf8", "Shift_JIS", "EUC_KR", "euckr", "latin-1", "ANSI_X3.4-1968"
///     a number on the list      "1252"
///     a prefix and the number   "windows-1252", "win1252", "cp1252", "ms932", "code-page-1252", "ibm-850"
///     a part of ISO 8859        "ISO-8859-15", "iso8859_15", "iso885915"
///     a locale and one of these "en_US.ISO-8859-15", "de_DE.cp1252@euro", "C.UTF-8"
///
/// Letter case makes no difference, and where one word ends and the next starts stands a '-', a '_' or nothing; nowhere
/// else ("u-t-f-8", "iso-88591-5" and "12-52" are no names). "ibm" means that maker's tables: "ibm-932" differs from
/// "cp932" and "windows-932", and where the C library has a table of Microsoft's alone, as for 949, there is no such
/// name. A locale is words with a '-' or '_' between them, a modifier one word. Everything else is refused: a name
/// outside the list, an empty one, one with a blank in it, and one with a conversion suffix ("//TRANSLIT").

/// Opaque converter into one code page.
struct QUORMBConverter;

/// A converter into the named code page, or null when the name is null or names no known one. The caller frees it with
/// `QUORMBConverterDelete_A`. Used by one thread at a time. Throws std::bad_alloc.
PLATDEP_API QUORMBConverter* QUORMBConverterNew_A(char const* codePage);

/// Converts `text` from UTF-8 into the converter's code page and puts the result in `out`. Returns 0 on success.
/// Anything else means failure, and `out` is as before: the converter is null, the text is ill-formed UTF-8, or the
/// code page cannot hold one of its characters. Nothing is transliterated or left out; what holds a character is the C
/// library's table for the code page, which in some East Asian ones has two characters in one place (in "EUC-JP" the
/// yen sign has the backslash's). The two encodings that switch tables within a text, ISO-2022-JP and ISO-2022-KR, hold
/// no U+000E, U+000F and U+001B: that is what they switch with.
///
/// `text` may be `out`. The result is made in one buffer, which starts at the length of the text and doubles when it is
/// full; the text is not copied.
PLATDEP_API int QUORMBU8ToGeneric(QUORMBConverter* converter, std::string& out, std::string const& text);

/// Frees the converter; null is ignored.
PLATDEP_API void QUORMBConverterDelete_A(QUORMBConverter* converter);

#endif
