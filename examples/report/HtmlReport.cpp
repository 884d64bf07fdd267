#include "examples/crosstab/Layout.h"
#include "examples/page/HtmlPage.h"
#include "examples/report/PartText.h"
#include "examples/report/Writers.h"
#include "omtree.h"

namespace report {

namespace {

/// Adds each part to the page. Headings of the document become headings one level below the page's own; every other
/// titled part gets one as well, so that the outline leads to it.
class PageVisitor : public OmOutputPart::Visitor {
public:
    explicit PageVisitor(page::HtmlPage& page) : _page(page) {}

    void setLevel(int level) { _level = static_cast<unsigned int>(level) + 1; }

    using OmOutputPart::Visitor::Visit;

    void Visit(OmHeading& part) override { _page.heading(_level, titleOf(part)); }

    void Visit(OmPageTitle& part) override {
        for (std::string const& line : _parts.linesOf(part)) {
            _page.paragraph(line, "page-title");
        }
    }

    void Visit(OmTextBlock& part) override {
        _page.heading(_level, titleOf(part));
        if (part.IsLog()) {
            _page.lines(_parts.linesOf(part), titleOf(part));
            return;
        }
        for (std::string const& line : _parts.linesOf(part)) {
            _page.paragraph(line);
        }
    }

    void Visit(OmPivotTable& part) override {
        _page.heading(_level, titleOf(part));
        _page.table(crosstab::layOut(part, crosstab::LayoutOptions()));
    }

    void Visit(OmChart& part) override {
        std::string const title = _parts.titleOf(part, part.LocaleCodePage());
        _page.heading(_level, title);
        if (part.GetImageData().empty()) {
            _page.paragraph("This chart has no image.");
            return;
        }
        _page.image(part.GetImageData(), title);
    }

    void Visit(OmModel& part) override {
        _page.heading(_level, titleOf(part));
        _page.folded("Model as PMML", part.GetPMML());
    }

    void Visit(OmInteractive& part) override {
        _page.heading(_level, _parts.titleOf(part, part.LocaleCodePage()));
        _page.folded("Interactive item as JSON", part.getInteractiveJSON());
        for (std::size_t i = 0; i < part.getGeoJSONContent().size(); ++i) {
            bool const isNamed = i < part.getGeoJSONFileNames().size();
            _page.folded("Attached: " + (isNamed ? part.getGeoJSONFileNames()[i] : std::string("unnamed")),
                         part.getGeoJSONContent()[i]);
        }
    }

    void Visit(OmAnswerTree& part) override {
        _page.heading(_level, titleOf(part));
        _page.folded("Answer tree as XML", part.GetUncompressedXml());
    }

private:
    page::HtmlPage& _page;
    PartText _parts;
    unsigned int _level = 0;
};

} // namespace

std::string htmlPage(OmOutputTree const& document) {
    auto record = document.List().begin();
    page::HtmlPage page(record->value != nullptr ? titleOf(*record->value) : std::string("Output"));
    PageVisitor visitor(page);
    for (++record; record != document.List().end(); ++record) {
        if (record->value != nullptr) {
            visitor.setLevel(record->level);
            record->value->Accept(visitor);
        }
    }
    return page.text();
}

} // namespace report
