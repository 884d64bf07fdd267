/// omtree-report: builds one whole output document with every kind of item and shows it.

#include "examples/crosstab/CommandLine.h"
#include "examples/crosstab/Failure.h"
#include "examples/page/Output.h"
#include "examples/report/SampleDocument.h"
#include "examples/report/Writers.h"
#include "omtree.h"

#include <CLI/CLI.hpp>

#include <string>

namespace {

/// The whole program, but for what goes wrong.
void run(int argc, char** argv) {
    CLI::App app("Builds an output document with every kind of item and shows it as an outline or as an HTML page.",
                 "omtree-report");
    std::string file;
    CLI::Option const* const htmlOption =
        app.add_option("--html", file, "write one self-contained HTML page to FILE instead")->type_name("FILE");
    crosstab::parseWords(app, argc, argv);
    if (*htmlOption && file.empty()) {
        throw crosstab::Failure("--html: the name is empty");
    }
    auto const document = report::sampleDocument();
    if (file.empty()) {
        page::writeStandardOutput(report::terminalOutline(*document));
    } else {
        page::writeFile(file, report::htmlPage(*document));
    }
}

} // namespace

int main(int argc, char** argv) {
    return crosstab::runProgram("omtree-report", [argc, argv] {
        try {
            run(argc, argv);
        } catch (crosstab::HelpAsked const& help) {
            page::writeStandardOutput(help.text);
        }
    });
}
