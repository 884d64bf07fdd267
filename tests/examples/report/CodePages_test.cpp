// How many converters a document's texts cost: each code page's are opened once, whatever the number of lines.

#include "examples/report/Writers.h"
#include "omtree.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

namespace {

int converters = 0;

} // namespace

/// Stands before the C library's, which it calls.
extern "C" __attribute__((visibility("default"))) void* iconv_open(char const* to, char const* from) {
    ++converters;
    using Function = void* (*)(char const*, char const*);
    static auto const next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "iconv_open"));
    return next(to, from);
}

namespace {

/// Adds blocks of lines in two code pages in turn.
void addBlocks(OmOutputTree& document, int blocks, int lines) {
    for (int i = 0; i < blocks; ++i) {
        auto* const block = new OmTextBlock(OmStringCell("t"), i % 2 == 0 ? "windows-1252" : "ibm-850");
        document.AppendChild(document.Root(), block);
        block->TextList().assign(static_cast<std::size_t>(lines), "caf\xE9");
    }
}

template <typename Writer>
int convertersFor(Writer writer, int blocks, int lines) {
    OmOutputTree document;
    addBlocks(document, blocks, lines);
    converters = 0;
    EXPECT_FALSE(writer(document).empty());
    return converters;
}

TEST(CodePages, AreOpenedOnceForADocument) {
    for (auto* const writer : {&report::terminalOutline, &report::htmlPage}) {
        int const few = convertersFor(writer, 2, 1);
        EXPECT_GT(few, 0);
        EXPECT_EQ(convertersFor(writer, 40, 50), few);
        EXPECT_LE(few, 4); // both ways of two pages
    }
}

} // namespace
