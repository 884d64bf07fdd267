#include "examples/crosstab/CommandLine.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

namespace crosstab {

namespace {

constexpr int ExitFailure = 2;

/// The parser's own message counts words and leaves the user to guess.
void failOnRepetition(CLI::App const& app) {
    for (CLI::Option const* const option : app.get_options()) {
        if (option->get_items_expected_max() == 1 && option->count() > 1) {
            throw Failure(option->get_name() + " is given more than once");
        }
    }
}

int fail(char const* name, char const* text) {
    std::fprintf(stderr, "%s: %s\n", name, text);
    return ExitFailure;
}

} // namespace

void parseWords(CLI::App& app, int count, char const* const* words) {
    try {
        app.parse(count, words);
    } catch (CLI::CallForHelp const&) {
        throw HelpAsked{app.help()};
    } catch (CLI::ArgumentMismatch const& error) {
        failOnRepetition(app);
        throw Failure(printable(error.what()));
    } catch (CLI::ParseError const& error) {
        throw Failure(printable(error.what()));
    }
}

int runProgram(char const* name, std::function<void()> const& run) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        run();
        return 0;
    } catch (std::bad_alloc const&) {
        return fail(name, "out of memory");
    } catch (std::exception const& error) {
        return fail(name, error.what());
    }
}

} // namespace crosstab
