#include "backend/tables/om/OMSException.h"

#include <locale>
#include <sstream>
#include <utility>

OMSException::OMSException(std::string message, double value1, double value2)
    : _message(std::move(message)), _value1(value1), _value2(value2) {}

OMSException::~OMSException() = default;

char const* OMSException::what() const noexcept {
    try {
        std::ostringstream text;
        // A process that sets its global locale must not change what a message looks like.
        text.imbue(std::locale::classic());
        text << _message << ", value 1 == " << _value1 << ", value 2 == " << _value2;
        _text = text.str();
        return _text.c_str();
    } catch (...) {
        return _message.c_str();
    }
}
