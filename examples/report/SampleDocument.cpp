#include "examples/report/SampleDocument.h"

#include "examples/report/SampleTables.h"
#include "omtree.h"

#include <string>

namespace report {

namespace {

OmStringCell text(std::string const& bytes) { return OmStringCell(bytes, nullptr, false); }

unsigned int lengthOf(std::string const& bytes) { return static_cast<unsigned int>(bytes.size()); }

/// The tree owns the part from here, also when there is no room for it.
template <typename Part>
OmOutputTree::Node append(OmOutputTree& tree, OmOutputTree::Node const& parent, std::unique_ptr<Part> part) {
    OmOutputTree::Node const node = tree.AppendChild(parent, part.get());
    part.release();
    return node;
}

std::unique_ptr<OmTextBlock> logBlock() {
    auto log = std::make_unique<OmTextBlock>(text("Log"), "UTF-8");
    log->TextList() = {"Read titanic.csv", "Cross tabulation: class by survival, a layer for each sex",
                       "  counts, and shares of the class", "Survival tree: from class, sex and age"};
    return log;
}

std::unique_ptr<OmPageTitle> pageTitle() {
    auto title = std::make_unique<OmPageTitle>("UTF-8");
    title->TextList() = {"Who survived the Titanic?"};
    return title;
}

std::unique_ptr<OmTextBlock> comment() {
    auto block = std::make_unique<OmTextBlock>(text("Reading the table"), "windows-1252");
    // Lines are in the block's code page: \x97 is a dash.
    block->TextList() = {"Choose a layer to see men or women.", "Women and first class first \x97 the numbers agree."};
    return block;
}

std::unique_ptr<OmChart> chart() {
    auto chart = std::make_unique<OmChart>(text("Survivors – by class"), "windows-1252", 1);
    std::string const svg = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 420 210" width="420" height="210">
<rect width="420" height="210" fill="#ffffff"/>
<g font-family="sans-serif" font-size="13" fill="#1a1d21">
<text x="8" y="38">1st</text><rect x="60" y="22" width="203" height="24" fill="#0b57a4"/><text x="270" y="38">203</text>
<text x="8" y="83">2nd</text><rect x="60" y="67" width="118" height="24" fill="#0b57a4"/><text x="185" y="83">118</text>
<text x="8" y="128">3rd</text><rect x="60" y="112" width="178" height="24" fill="#0b57a4"/><text x="245" y="128">178</text>
<text x="8" y="173">Crew</text><rect x="60" y="157" width="212" height="24" fill="#0b57a4"/><text x="279" y="173">212</text>
</g></svg>)";
    // Streams come in chunks.
    unsigned int const half = lengthOf(svg) / 2;
    chart->SetImageStream(svg.data(), half);
    chart->SetImageStream(svg.data() + half, lengthOf(svg) - half);
    return chart;
}

std::unique_ptr<OmModel> model() {
    auto model = std::make_unique<OmModel>(text("Survival tree"));
    std::string const pmml = "<PMML version=\"4.4\"><TreeModel functionName=\"classification\"/></PMML>";
    model->SetPMML(pmml.data(), lengthOf(pmml));
    return model;
}

std::unique_ptr<OmInteractive> interactive() {
    auto item = std::make_unique<OmInteractive>(text("Map of the ports"), "UTF-8", 2);
    std::string const json = R"({"type": "map", "layers": ["Southampton", "Cherbourg", "Queenstown"]})";
    item->setInteractiveJSON(json.data(), lengthOf(json));
    std::string const name = "ports.json";
    std::string const content = R"({"type": "FeatureCollection", "features": []})";
    item->addGeoJSONFileName(name.data(), lengthOf(name));
    item->addGeoJSONFileContent(content.data(), lengthOf(content));
    item->setProcedureName("Map");
    return item;
}

std::string const& answerTreeCodePage() {
    static std::string const codePage = "UTF-8"; // the item keeps a reference
    return codePage;
}

std::unique_ptr<OmAnswerTree> answerTree() {
    auto tree = std::make_unique<OmAnswerTree>(text("Tree diagram"), answerTreeCodePage());
    std::string const xml = "<tree>\n  <node split=\"sex\">\n    <leaf value=\"female\" survived=\"0.73\"/>\n"
                            "    <leaf value=\"male\" survived=\"0.21\"/>\n  </node>\n</tree>\n";
    tree->SetTreeType(0);
    tree->SetUncompressedXML(xml.data(), lengthOf(xml));
    tree->Done();
    return tree;
}

} // namespace

std::unique_ptr<OmOutputTree> sampleDocument() {
    auto document = std::make_unique<OmOutputTree>();
    OmOutputTree& tree = *document;
    OmOutputTree::Node const root = tree.Root();
    append(tree, root, pageTitle());
    append(tree, root, logBlock());

    OmOutputTree::Node const tabulation =
        append(tree, root, std::make_unique<OmProcedure>(text("Cross tabulation"), "en", "UTF-8", "en_US.UTF-8"));
    append(tree, tabulation, notesTable());
    append(tree, tabulation, warningsTable());
    append(tree, tabulation, survivalTable());
    append(tree, tabulation, comment());
    append(tree, tabulation, chart());

    OmOutputTree::Node const analysis =
        append(tree, root,
               std::make_unique<OmProcedure>(text("Survival by class, sex and age"), "en", "UTF-8", "en_US.UTF-8"));
    OmOutputTree::Node const models = append(tree, analysis, std::make_unique<OmHeading>(text("Models")));
    append(tree, models, model());
    append(tree, models, answerTree());
    append(tree, analysis, interactive());
    return document;
}

} // namespace report
