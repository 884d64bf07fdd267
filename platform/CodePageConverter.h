#ifndef OMTREE_PLATFORM_CODEPAGECONVERTER_H
#define OMTREE_PLATFORM_CODEPAGECONVERTER_H

#include "platform/Export.h"

#include <string>

/// Conversion of UTF-8 text into a code page by the C library's tables.
///
/// Names are accepted as writers spell them: letter case, blanks' stand-ins ('-', '_') and the usual prefixes make no
/// difference ("windows-1252", "cp1252", "1252", "Shift_JIS", "ibm-850", "windows-949", "EUC_KR"), and a locale name
/// stands for the code page behind its dot ("en_US.ISO-8859-15"). A name outside the list of known code pages is
/// refused, and so are an empty name, one with a blank in it, and one with a conversion suffix ("//TRANSLIT").

/// Opaque converter into one code page.
struct QUORMBConverter;

/// A converter into the named code page, or null when the name is null or names no known one. The caller frees it with
/// `QUORMBConverterDelete_A`. Used by one thread at a time.
PLATDEP_API QUORMBConverter* QUORMBConverterNew_A(char const* codePage);

/// Converts `text` from UTF-8 into the converter's code page and puts the result in `out`. Returns 0 on success.
/// Anything else means failure, and `out` is as before: the converter is null, the text is ill-formed UTF-8, or the
/// code page cannot hold one of its characters. Nothing is transliterated or left out; what holds a character is the C
/// library's table for the code page, which in some East Asian ones has two characters in one place (in "EUC-JP" the
/// yen sign has the backslash's).
PLATDEP_API int QUORMBU8ToGeneric(QUORMBConverter* converter, std::string& out, std::string const& text);

/// Frees the converter; null is ignored.
PLATDEP_API void QUORMBConverterDelete_A(QUORMBConverter* converter);

#endif
