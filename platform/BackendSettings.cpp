#include "platform/BackendSettings.h"

#include <utility>

BackendSettings::BackendSettings() = default;

void BackendSettings::setLocale(std::string locale) { _locale = std::move(locale); }
