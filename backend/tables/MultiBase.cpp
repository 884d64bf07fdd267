#include "backend/tables/MultiBase.h"

#include "backend/tables/Assert.h"

#include <cstddef>
#include <cstdlib>

namespace {

constexpr char Source[] = "backend/tables/MultiBase";

} // namespace

std::uint64_t MultiBase::Count() const {
    std::uint64_t count = 1;
    for (std::uint32_t const base : _bases) {
        count *= base;
    }
    return count;
}

std::vector<std::uint32_t> MultiBase::Digits(std::uint64_t number) const {
    std::vector<std::uint32_t> digits(_bases.size(), 0);
    Digits(number, digits.data());
    return digits;
}

std::uint64_t MultiBase::Digits(std::uint64_t number, std::uint32_t* digits) const {
    if (_bases.empty()) {
        return 0;
    }
    for (std::size_t position = _bases.size() - 1; position > 0; --position) {
        digits[position] = 0;
        if (number == 0) {
            continue;
        }
        std::uint32_t const b = _bases[position];
        if (!OM_ASSERT(b > 0, "b>0", Source, 126)) {
            std::abort();
        }
        digits[position] = static_cast<std::uint32_t>(number % b);
        number /= b;
    }
    digits[0] = static_cast<std::uint32_t>(number);
    return number;
}

std::uint64_t MultiBase::Number(std::vector<std::uint32_t> const& digits) const {
    std::uint64_t number = digits.empty() ? 0 : digits[0];
    for (std::size_t i = 1; i < _bases.size() && i < digits.size(); ++i) {
        number = number * _bases[i] + digits[i];
    }
    OM_ASSERT(digits.size() == _bases.size(), "digit == end && i == size", Source, 148);
    return number;
}
