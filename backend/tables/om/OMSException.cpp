#include "backend/tables/om/OMSException.h"

#include <charconv>
#include <utility>

namespace {

// As a standard stream writes a double by default, but without a stream: no locale takes part.
std::string AsText(double value) {
    char digits[32];
    std::to_chars_result const written =
        std::to_chars(digits, digits + sizeof(digits), value, std::chars_format::general, 6);
    return {digits, written.ptr};
}

} // namespace

OMSException::OMSException(std::string message, double value1, double value2)
    : _message(std::move(message)), _value1(value1), _value2(value2) {}

OMSException::~OMSException() = default;

char const* OMSException::what() const noexcept {
    try {
        _text = _message + ", value 1 == " + AsText(_value1) + ", value 2 == " + AsText(_value2);
        return _text.c_str();
    } catch (...) {
        return _message.c_str();
    }
}
