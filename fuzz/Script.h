#ifndef OMTREE_FUZZ_SCRIPT_H
#define OMTREE_FUZZ_SCRIPT_H

#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// Bytes read as operation scripts.
namespace omfuzz {

/// Dice whose throws are an input's bytes: a choice of up to 256 takes one byte, a larger one two, four or eight.
///
/// When the bytes are used up, every throw gives its highest number. A loop that goes on while a chance comes true
/// (`while (dice.Percent(30))`) ends there, and so does a script that asks `Spent`.
class ByteDice : public omtest::Dice {
public:
    /// The bytes are borrowed.
    ByteDice(std::uint8_t const* bytes, std::size_t size) : Dice(0), _next(bytes), _left(size) {}

    std::size_t Below(std::size_t count) override {
        if (count <= 1) {
            return 0;
        }
        if (_left == 0) {
            return count - 1;
        }
        std::size_t width = count <= 0x100 ? 1 : count <= 0x10000 ? 2 : count <= 0x100000000 ? 4 : 8;
        std::uint64_t number = 0;
        for (; width > 0 && _left > 0; --width, --_left) {
            number = number << 8 | *_next++;
        }
        return static_cast<std::size_t>(number % count);
    }
    bool Spent() const override { return _left == 0; }

    /// A text of up to `most` bytes.
    std::string Text(std::size_t most) {
        std::string text(Below(most + 1), '\0');
        for (char& byte : text) {
            byte = static_cast<char>(Below(256));
        }
        return text;
    }

private:
    std::uint8_t const* _next;
    std::size_t _left;
};

/// Ends the process when a check of the test library failed; what failed is on standard output already.
inline void RequireNoFailure() {
    if (::testing::Test::HasFailure()) {
        std::abort();
    }
}

/// Runs one of the scripts that the tests run with seeds over the bytes of an input.
template <typename Script>
int RunScript(std::uint8_t const* data, std::size_t size) {
    ByteDice dice(data, size);
    Script(dice).Run();
    RequireNoFailure();
    return 0;
}

} // namespace omfuzz

#endif
