#include "examples/report/PartText.h"

#include "examples/report/Writers.h"
#include "omtree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::HasSubstr;
using testing::Not;

std::string titleOfAChart(std::string const& title, std::string const& codePage) {
    OmChart const chart(OmStringCell(title), codePage, 1);
    return report::PartText().titleOf(chart, chart.LocaleCodePage());
}

TEST(PartText, ConvertedTitlesAreReadFromTheirCodePage) {
    EXPECT_EQ(titleOfAChart("Überlebende – nach Klasse", "windows-1252"), "Überlebende – nach Klasse");
    EXPECT_EQ(titleOfAChart("日本", "Shift_JIS"), "日本");
    EXPECT_EQ(titleOfAChart("日本", "ISO-2022-JP"), "日本");
    EXPECT_EQ(titleOfAChart("plain", "ibm-850"), "plain");
}

// Read as windows-1252 it would be "æ—¥æœ¬".
TEST(PartText, ATitleThatItsCodePageCannotHoldIsReadAsItIs) {
    EXPECT_EQ(titleOfAChart("日本 é", "windows-1252"), "日本 é");
    EXPECT_EQ(titleOfAChart("日本", "no-such-page"), "日本");
    EXPECT_EQ(titleOfAChart("日本", ""), "日本");
}

TEST(PartText, LinesAreReadFromTheBlocksCodePage) {
    OmTextBlock block(OmStringCell("t"), "windows-1252");
    block.TextList() = {"a \x97 b", "\x81"};
    EXPECT_EQ(report::PartText().linesOf(block), (std::list<std::string>{"a — b", "\x81"}));
}

// --- pages of documents that lack something --------------------------------------------------------------------------

TEST(HtmlReport, NullPartsAreSteppedOver) {
    OmOutputTree document;
    OmOutputTree::Node const empty = document.AppendChild(document.Root(), nullptr);
    document.AppendChild(empty, new OmHeading(OmStringCell("below")));
    EXPECT_THAT(report::htmlPage(document), HasSubstr("<h2 id=\"part-1\">below</h2>"));
    EXPECT_THAT(report::terminalOutline(document), HasSubstr("    below\n"));
}

TEST(HtmlReport, AChartWithoutAnImageSaysSo) {
    OmOutputTree document;
    document.AppendChild(document.Root(), new OmChart(OmStringCell("c"), "", 1));
    std::string const page = report::htmlPage(document);
    EXPECT_THAT(page, HasSubstr("This chart has no image."));
    EXPECT_THAT(page, Not(HasSubstr("<img")));
}

TEST(HtmlReport, LineEndsOfOtherSystemsAreLineEnds) {
    OmOutputTree document;
    std::string const codePage = "UTF-8";
    OmAnswerTree* const tree = new OmAnswerTree(OmStringCell("t"), codePage);
    document.AppendChild(document.Root(), tree);
    std::string const xml = "<a>\r\n</a>\r\n";
    tree->SetUncompressedXML(xml.data(), static_cast<unsigned int>(xml.size()));
    EXPECT_THAT(report::htmlPage(document), HasSubstr("&lt;a&gt;\n&lt;/a&gt;\n"));
    EXPECT_THAT(report::terminalOutline(document), HasSubstr("  | <a>\n  | </a>\n"));
}

} // namespace
