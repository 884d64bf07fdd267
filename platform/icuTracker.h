#ifndef OMTREE_PLATFORM_ICUTRACKER_H
#define OMTREE_PLATFORM_ICUTRACKER_H

#include "platform/Export.h"

#include <memory>
#include <string>
#include <utility>

/// Tells the texts that it is attached to how their data is encoded. A table makes its trackers and owns them; texts
/// only point at them, so a tracker outlives every text that it is attached to, or is detached first. Its conversions,
/// and so the UTF-8 forms of all its texts, are used by one thread at a time.
class PLATDEP_API icuTracker {
public:
    /// Whether the data is Unicode, and the locale name.
    explicit icuTracker(std::pair<bool, std::string> const& settings);
    ~icuTracker();

    icuTracker(icuTracker const&) = delete;
    icuTracker& operator=(icuTracker const&) = delete;

    bool Unicode() const { return _unicode; }
    std::string const& Locale() const { return _locale; }

    /// Converts `text` into UTF-8 from the code page that the locale names. When the data is Unicode the text is UTF-8
    /// already and is copied. False, with `out` as before, when the locale names no known code page or the text is
    /// ill-formed in it. The converter is made at the first call and kept;
    /// when there is no memory for it, std::bad_alloc is thrown and the next call tries again.
    bool ToU8(std::string const& text, std::string& out) const;

    /// The same the other way: from UTF-8 into the locale's code page. False also when the code page cannot hold one of
    /// the characters.
    bool FromU8(std::string const& text, std::string& out) const;

private:
    struct Converters;

    Converters& Open() const;

    bool _unicode;
    std::string _locale;
    mutable std::unique_ptr<Converters> _converters;
};

#endif
