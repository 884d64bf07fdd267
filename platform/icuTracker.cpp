#include "platform/icuTracker.h"

icuTracker::icuTracker(std::pair<bool, std::string> const& settings)
    : _unicode(settings.first), _locale(settings.second) {}

icuTracker::~icuTracker() = default;
