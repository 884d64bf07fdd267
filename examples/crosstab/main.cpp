/// omtree-crosstab: cross tabulates a CSV file. See `omtree-crosstab --help`.

#include "examples/crosstab/CsvReader.h"
#include "examples/crosstab/Failure.h"
#include "examples/crosstab/InputFile.h"
#include "examples/crosstab/Layout.h"
#include "examples/crosstab/Options.h"
#include "examples/crosstab/TableBuilder.h"
#include "examples/crosstab/Tally.h"
#include "examples/crosstab/TerminalWriter.h"
#include "examples/page/HtmlPage.h"
#include "examples/page/Output.h"
#include "omtree.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>

namespace {

using namespace crosstab;

constexpr int ExitFailure = 2;

LaidOutTable tableOf(Options const& options) {
    InputFile file(options.file);
    CsvReader reader(file.name(), [&file](char* bytes, std::size_t size) { return file.read(bytes, size); });
    Tally const tally(options, reader);
    std::unique_ptr<OmPivotTable> const table = buildTable(tally, options);
    LayoutOptions layout;
    layout.keepEmpty = options.keepEmpty;
    layout.namesInCorner = options.namesInCorner;
    return layOut(*table, layout);
}

std::string pageOf(Options const& options, LaidOutTable const& table) {
    std::string const source =
        options.file == "-" ? "standard input" : options.file.substr(options.file.rfind('/') + 1);
    page::HtmlPage page("Cross tabulation of " + source);
    page.heading(2, table.title.text);
    page.table(table);
    return page.text();
}

/// All output is made before its first byte is written, so a failure leaves nothing half written.
void run(int count, char const* const* words) {
    try {
        Options const options = parseOptions(count, words);
        LaidOutTable const table = tableOf(options);
        if (options.htmlFile.empty()) {
            page::writeStandardOutput(terminalText(table));
        } else {
            page::writeFile(options.htmlFile, pageOf(options, table));
        }
    } catch (HelpAsked const& help) {
        page::writeStandardOutput(help.text);
    }
}

int fail(char const* text) {
    std::fprintf(stderr, "omtree-crosstab: %s\n", text);
    return ExitFailure;
}

} // namespace

int main(int argc, char** argv) {
    try {
        run(argc, argv);
        return 0;
    } catch (Failure const& failure) {
        return fail(failure.what());
    } catch (std::bad_alloc const&) {
        return fail("out of memory");
    } catch (std::exception const& error) {
        return fail(error.what());
    }
}
