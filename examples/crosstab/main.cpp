/// omtree-crosstab: cross tabulates a CSV file. See `omtree-crosstab --help`.

#include "examples/crosstab/CsvReader.h"
#include "examples/crosstab/Failure.h"
#include "examples/crosstab/InputFile.h"
#include "examples/crosstab/Layout.h"
#include "examples/crosstab/Options.h"
#include "examples/crosstab/TableBuilder.h"
#include "examples/crosstab/Tally.h"
#include "examples/crosstab/TerminalWriter.h"
#include "omtree.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <system_error>

namespace {

using namespace crosstab;

constexpr int ExitFailure = 2;

std::string tableOf(Options const& options) {
    InputFile file(options.file);
    CsvReader reader(file.name(), [&file](char* bytes, std::size_t size) { return file.read(bytes, size); });
    Tally const tally(options, reader);
    std::unique_ptr<OmPivotTable> const table = buildTable(tally, options);
    LayoutOptions layout;
    layout.keepEmpty = options.keepEmpty;
    layout.namesInCorner = options.namesInCorner;
    return terminalText(layOut(*table, layout));
}

/// What the tool prints. All of it is made before the first byte is written, so a failure leaves nothing half printed.
std::string outputOf(int count, char const* const* words) {
    try {
        return tableOf(parseOptions(count, words));
    } catch (HelpAsked const& help) {
        return help.text;
    }
}

void print(std::string const& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        throw Failure("standard output: " + std::generic_category().message(errno));
    }
}

int fail(char const* text) {
    std::fprintf(stderr, "omtree-crosstab: %s\n", text);
    return ExitFailure;
}

} // namespace

int main(int argc, char** argv) {
    // A reader that goes away is reported like any other write error.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        print(outputOf(argc, argv));
        return 0;
    } catch (Failure const& failure) {
        return fail(failure.what());
    } catch (std::bad_alloc const&) {
        return fail("out of memory");
    } catch (std::exception const& error) {
        return fail(error.what());
    }
}
