/// omtree-crosstab: cross tabulates a CSV file. See `omtree-crosstab --help`.

#include "examples/crosstab/CommandLine.h"
#include "examples/crosstab/CsvReader.h"
#include "examples/crosstab/InputFile.h"
#include "examples/crosstab/Layout.h"
#include "examples/crosstab/Options.h"
#include "examples/crosstab/TableBuilder.h"
#include "examples/crosstab/Tally.h"
#include "examples/crosstab/TerminalWriter.h"
#include "examples/page/HtmlPage.h"
#include "examples/page/Output.h"
#include "omtree.h"

#include <memory>
#include <string>

namespace {

using namespace crosstab;

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

} // namespace

int main(int argc, char** argv) {
    return runProgram("omtree-crosstab", [argc, argv] { run(argc, argv); });
}
