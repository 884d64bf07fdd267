#include "platform/icuTracker.h"

#include "platform/detail/CodePageNames.h"
#include "platform/detail/Transcoder.h"

struct icuTracker::Converters {
    std::unique_ptr<om_detail::Transcoder> toU8;
    std::unique_ptr<om_detail::Transcoder> fromU8;
};

icuTracker::icuTracker(std::pair<bool, std::string> const& settings)
    : _unicode(settings.first), _locale(settings.second) {}

icuTracker::~icuTracker() = default;

icuTracker::Converters& icuTracker::Open() const {
    if (_converters == nullptr) {
        char const* const codePage = om_detail::CodePageNamed(_locale);
        // Both or none: a half made pair would refuse every later text.
        auto converters = std::make_unique<Converters>();
        converters->toU8 = om_detail::Transcoder::Open("UTF-8", codePage);
        converters->fromU8 = om_detail::Transcoder::Open(codePage, "UTF-8");
        _converters = std::move(converters);
    }
    return *_converters;
}

bool icuTracker::ToU8(std::string const& text, std::string& out) const {
    if (_unicode) {
        out = text;
        return true;
    }
    om_detail::Transcoder const* const converter = Open().toU8.get();
    return converter != nullptr && converter->Convert(text, out);
}

bool icuTracker::FromU8(std::string const& text, std::string& out) const {
    if (_unicode) {
        out = text;
        return true;
    }
    om_detail::Transcoder const* const converter = Open().fromU8.get();
    return converter != nullptr && converter->Convert(text, out);
}
