#ifndef OMTREE_TESTS_SUPPORT_CAPTUREDOUTPUT_H
#define OMTREE_TESTS_SUPPORT_CAPTUREDOUTPUT_H

#include <iostream>
#include <sstream>
#include <string>

namespace omtest {

/// Keeps what is written to standard output's stream from its construction to its end.
class CapturedOutput {
public:
    CapturedOutput() : _before(std::cout.rdbuf(_text.rdbuf())) {}
    ~CapturedOutput() { std::cout.rdbuf(_before); }
    CapturedOutput(CapturedOutput const&) = delete;
    CapturedOutput& operator=(CapturedOutput const&) = delete;

    /// What was written so far.
    std::string Text() const { return _text.str(); }

private:
    std::ostringstream _text;
    std::streambuf* _before;
};

/// What `text.Print(indent)` writes.
template <typename Printed>
std::string PrintedBy(Printed const& text, unsigned int indent) {
    CapturedOutput const output;
    text.Print(indent);
    return output.Text();
}

} // namespace omtest

#endif
