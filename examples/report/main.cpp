/// omtree-report: builds one whole output document with every kind of item and shows it.

#include "examples/crosstab/Failure.h"
#include "examples/page/Output.h"
#include "examples/report/SampleDocument.h"
#include "examples/report/Writers.h"
#include "omtree.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <string>

namespace {

constexpr int ExitFailure = 2;

int fail(char const* text) {
    std::fprintf(stderr, "omtree-report: %s\n", text);
    return ExitFailure;
}

/// The whole program, but for what goes wrong.
void run(int argc, char** argv) {
    CLI::App app("Builds an output document with every kind of item and shows it as an outline or as an HTML page.",
                 "omtree-report");
    std::string file;
    CLI::Option const* const htmlOption =
        app.add_option("--html", file, "write one self-contained HTML page to FILE instead")->type_name("FILE");
    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const&) {
        page::writeStandardOutput(app.help());
        return;
    }
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
    try {
        run(argc, argv);
        return 0;
    } catch (std::exception const& error) {
        return fail(error.what());
    }
}
