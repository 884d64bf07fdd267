#include "examples/page/HtmlPage.h"

#include "examples/page/HtmlText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using page::HtmlPage;
using testing::HasSubstr;
using testing::Not;

constexpr char const* Hostile = "<b>\"a\" & 'b'</b>";
constexpr char const* Escaped = "&lt;b&gt;\"a\" &amp; 'b'&lt;/b&gt;";

crosstab::LaidOutTable tableOf(std::string const& text) {
    crosstab::LaidOutLayer layer;
    layer.rows = layer.columns = 1;
    crosstab::LaidOutCell cell;
    cell.label.text = text;
    cell.label.markers = {text};
    layer.cells = {cell};
    crosstab::LaidOutTable table;
    table.title.text = text;
    table.layers = {layer};
    table.caption.text = text;
    table.footnotes = {{text, text}};
    return table;
}

TEST(HtmlPage, EveryTextIsEscaped) {
    HtmlPage page(Hostile);
    page.heading(2, Hostile);
    page.paragraph(Hostile);
    page.lines({Hostile}, Hostile);
    page.folded(Hostile, Hostile);
    page.image("<svg/>", Hostile);
    page.table(tableOf(Hostile));
    std::string const text = page.text();
    EXPECT_THAT(text, Not(HasSubstr("<b>")));
    EXPECT_THAT(text, HasSubstr(std::string("<h2 id=\"part-1\">") + Escaped + "</h2>"));
    EXPECT_THAT(text, HasSubstr("alt=\"&lt;b&gt;&quot;a&quot; &amp; 'b'&lt;/b&gt;\""));
    EXPECT_THAT(text, HasSubstr(std::string("<td>") + Escaped + "<sup>" + Escaped + "</sup></td>"));
}

TEST(HtmlPage, ElementsWithoutContentAreClosedAsHtmlWantsIt) {
    HtmlPage page("");
    page.table(tableOf(""));
    std::string const text = page.text();
    EXPECT_THAT(text, HasSubstr("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"));
    EXPECT_THAT(text, Not(HasSubstr("/>")));
    EXPECT_THAT(text, Not(HasSubstr("</meta>")));
}

TEST(HtmlPage, HeadingLevelsAreNeverSkipped) {
    HtmlPage page("Title");
    page.heading(4, "first");
    page.heading(9, "second");
    page.heading(2, "third");
    std::string const text = page.text();
    EXPECT_THAT(text, HasSubstr("<h2 id=\"part-1\">first</h2>"));
    EXPECT_THAT(text, HasSubstr("<h3 id=\"part-2\">second</h3>"));
    EXPECT_THAT(text, HasSubstr("<h2 id=\"part-3\">third</h2>"));
}

TEST(HtmlPage, ATitleThatTheHeadingSaysIsHiddenFromTheEyeAlone) {
    HtmlPage page("Title");
    page.heading(2, "Counts");
    crosstab::LaidOutTable table = tableOf("Counts");
    page.table(table);
    EXPECT_THAT(page.text(), HasSubstr("<caption><span class=\"said\">Counts</span></caption>"));
    table.title.text = "Other";
    page.table(table);
    EXPECT_THAT(page.text(), HasSubstr("<caption>Other</caption>"));
}

TEST(HtmlPage, ATableWithoutLayersSaysSo) {
    HtmlPage page("Title");
    page.table(crosstab::LaidOutTable());
    EXPECT_THAT(page.text(), HasSubstr("This table has no cells."));
    EXPECT_THAT(page.text(), Not(HasSubstr("<table")));
}

TEST(HtmlText, BytesThatADocumentMayNotHoldAreReplaced) {
    EXPECT_EQ(page::documentText("a\tb\nc"), "a\tb\nc");
    EXPECT_EQ(page::documentText(std::string("\0\x1B\x7F", 3)), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(page::documentText("\xFF\xC3"), "\uFFFD\uFFFD");
    EXPECT_EQ(page::documentText("\xC2\x85\xEF\xBF\xBF"), "\uFFFD\uFFFD");
    EXPECT_EQ(page::documentText("é日😀"), "é日😀");
}

TEST(HtmlText, Base64IsThatOfThePublishedExamples) {
    EXPECT_EQ(page::base64(""), "");
    EXPECT_EQ(page::base64("f"), "Zg==");
    EXPECT_EQ(page::base64("fo"), "Zm8=");
    EXPECT_EQ(page::base64("foo"), "Zm9v");
    EXPECT_EQ(page::base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(page::base64(std::string("\0\xFF", 2)), "AP8=");
}

} // namespace
