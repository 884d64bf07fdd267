#ifndef OMTREE_PLATFORM_ICUTRACKER_H
#define OMTREE_PLATFORM_ICUTRACKER_H

#include "platform/Export.h"

#include <string>
#include <utility>

/// Tells the texts that it is attached to how their data is encoded. A table makes its trackers and owns them; texts
/// only point at them, so a tracker outlives every text that it is attached to, or is detached first.
class PLATDEP_API icuTracker {
public:
    /// Whether the data is Unicode, and the locale name.
    explicit icuTracker(std::pair<bool, std::string> const& settings);
    ~icuTracker();

    icuTracker(icuTracker const&) = delete;
    icuTracker& operator=(icuTracker const&) = delete;

    bool Unicode() const { return _unicode; }
    std::string const& Locale() const { return _locale; }

private:
    bool _unicode;
    std::string _locale;
};

#endif
