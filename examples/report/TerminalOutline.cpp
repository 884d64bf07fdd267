#include "examples/crosstab/Layout.h"
#include "examples/crosstab/TerminalWriter.h"
#include "examples/crosstab/Utf8.h"
#include "examples/report/PartText.h"
#include "examples/report/Writers.h"
#include "omtree.h"

#include <sstream>

namespace report {

namespace {

using crosstab::printable;

/// Writes each part below the level that it has in the document.
class OutlineVisitor : public OmOutputPart::Visitor {
public:
    std::string text() const { return _text; }
    void setLevel(int level) { _level = level; }

    using OmOutputPart::Visitor::Visit;

    void Visit(OmHeading& part) override { line(titleOf(part)); }

    void Visit(OmPageTitle& part) override {
        for (std::string const& one : _parts.linesOf(part)) {
            line("[page title] " + one);
        }
    }

    void Visit(OmTextBlock& part) override {
        line(std::string(part.IsLog() ? "[log] " : "[text] ") + titleOf(part));
        for (std::string const& one : _parts.linesOf(part)) {
            line("| " + one);
        }
    }

    void Visit(OmPivotTable& part) override {
        line("[table] " + titleOf(part));
        std::istringstream drawing(crosstab::terminalText(crosstab::layOut(part, crosstab::LayoutOptions())));
        for (std::string one; std::getline(drawing, one);) {
            appendLine(one);
        }
    }

    void Visit(OmChart& part) override {
        line("[chart] " + _parts.titleOf(part, part.LocaleCodePage()) + ", " +
             std::to_string(part.GetImageData().size()) + " bytes of image");
    }

    void Visit(OmModel& part) override {
        line("[model] " + titleOf(part) + ", " + std::to_string(part.GetPMML().size()) + " bytes of PMML");
    }

    void Visit(OmInteractive& part) override {
        line("[interactive] " + _parts.titleOf(part, part.LocaleCodePage()));
        for (std::string const& name : part.getGeoJSONFileNames()) {
            line("| attached: " + name);
        }
    }

    void Visit(OmAnswerTree& part) override {
        line("[answer tree] " + titleOf(part));
        std::istringstream xml(part.GetUncompressedXml());
        for (std::string one; std::getline(xml, one);) {
            if (!one.empty() && one.back() == '\r') {
                one.pop_back();
            }
            line("| " + one);
        }
    }

private:
    void line(std::string const& text) { appendLine(printable(text)); }

    void appendLine(std::string const& text) {
        if (!text.empty()) {
            _text.append(2 * static_cast<std::size_t>(_level), ' ');
        }
        _text += text + "\n";
    }

    PartText _parts;
    std::string _text;
    int _level = 0;
};

} // namespace

std::string terminalOutline(OmOutputTree const& document) {
    OutlineVisitor visitor;
    for (auto const& record : document.List()) {
        if (record.value != nullptr) {
            visitor.setLevel(record.level);
            record.value->Accept(visitor);
        }
    }
    return visitor.text();
}

} // namespace report
