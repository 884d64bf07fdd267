// A chart's map record: any bytes are either split as a reader of our own splits them, or refused with the length that
// does not fit and the bytes that are left.

#include "FuzzTarget.h"
#include "Require.h"
#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmChart.h"
#include "omcell/OmStringCell.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using omfuzz::Require;
using Parts = std::array<std::string, 4>;

/// What is to come of a record.
struct Outcome {
    Parts parts{"kept 1", "kept 2", "kept 3", "kept 4"};
    bool refused = false;
    double length = 0.0;
    double remaining = 0.0;
};

/// A number of `width` bytes at `bytes`, in the machine's order or reversed.
std::uint64_t NumberAt(std::uint8_t const* bytes, std::size_t width, bool reversed) {
    std::uint16_t const one = 1;
    std::uint8_t lowest = 0;
    std::memcpy(&lowest, &one, 1);
    bool const lowestFirst = (lowest == 1) != reversed;
    std::uint64_t number = 0;
    for (std::size_t k = 0; k < width; ++k) {
        number = number * 256 + bytes[lowestFirst ? width - 1 - k : k];
    }
    return number;
}

/// Reads the record in the plainest way: a place, a width, and what is left.
Outcome Expected(std::uint8_t const* data, std::size_t size) {
    Outcome outcome;
    if (size == 0) {
        return outcome;
    }
    auto const refuse = [&outcome](std::uint64_t length, std::size_t remaining) {
        outcome = Outcome();
        outcome.refused = true;
        outcome.length = static_cast<double>(length);
        outcome.remaining = static_cast<double>(remaining);
        return outcome;
    };
    if (size < 2) {
        return refuse(2, size);
    }
    bool const reversed = NumberAt(data, 2, false) != 1;
    std::size_t place = 2;
    for (std::size_t k = 0; k < 4; ++k) {
        std::size_t const width = k % 2 == 0 ? 4 : 2;
        if (size - place < width) {
            return refuse(width, size - place);
        }
        std::uint64_t const length = NumberAt(data + place, width, reversed);
        place += width;
        if (length > size - place) {
            return refuse(length, size - place);
        }
        outcome.parts[k].assign(reinterpret_cast<char const*>(data + place), static_cast<std::size_t>(length));
        place += static_cast<std::size_t>(length);
    }
    return outcome;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static OmStringCell const title("map", nullptr, false);
    OmChart chart(title, "", 1);
    // In two chunks, so that a record is more than one call's bytes.
    char const* const bytes = reinterpret_cast<char const*>(data);
    chart.SetMapInfo(bytes, static_cast<unsigned int>(size / 2));
    chart.SetMapInfo(bytes + size / 2, static_cast<unsigned int>(size - size / 2));
    Require(chart.hasMap() == (size != 0), "a map is there from the first byte on");

    Outcome const expected = Expected(data, size);
    Parts parts = Outcome().parts;
    try {
        chart.getMapInfo(parts[0], parts[1], parts[2], parts[3]);
        Require(!expected.refused, "a record that does not fit is refused");
    } catch (OMSException const& refusal) {
        Require(expected.refused, "a record that fits is split");
        Require(refusal.Message() == "OmChart::getMapInfo() -- length > remaining", "the message");
        Require(refusal.Value1() == expected.length, "value 1 is the length");
        Require(refusal.Value2() == expected.remaining, "value 2 is what is left");
    }
    Require(parts == expected.parts, "the four strings");
    return 0;
}
