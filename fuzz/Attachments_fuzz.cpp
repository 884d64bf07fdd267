// A chart's attached files and streams: chunks in any order against plain lists of names and contents.

#include "FuzzTarget.h"
#include "Require.h"
#include "Script.h"
#include "backend/tables/om/OmChart.h"
#include "omcell/OmStringCell.h"

#include <cstdint>
#include <string>
#include <vector>

namespace {

using omfuzz::Require;

struct Files {
    std::vector<std::string> names{};
    std::vector<std::string> contents{};

    /// Only a chunk behind a complete set of pairs goes on with the last content.
    void Content(std::string const& chunk) {
        bool const paired = names.size() == contents.size();
        if (paired && !names.empty()) {
            contents.back() += chunk;
            return;
        }
        contents.push_back(chunk);
    }
};

struct Model {
    Files csv{};
    Files json{};
    std::string xml{};
    std::string data{};
    std::string image{};
    std::string vizJson{};
    std::string vizTemplate{};
};

unsigned int Length(std::string const& chunk) { return static_cast<unsigned int>(chunk.size()); }

void Change(OmChart& chart, Model& model, std::size_t operation, std::string const& chunk) {
    char const* const bytes = chunk.empty() ? nullptr : chunk.data();
    switch (operation) {
    case 0:
        chart.addCSVFileName(bytes, Length(chunk));
        return model.csv.names.push_back(chunk);
    case 1:
        chart.addCSVFileContent(bytes, Length(chunk));
        return model.csv.Content(chunk);
    case 2:
        chart.addGeoJSONFileName(bytes, Length(chunk));
        return model.json.names.push_back(chunk);
    case 3:
        chart.addGeoJSONFileContent(bytes, Length(chunk));
        return model.json.Content(chunk);
    case 4:
        chart.SetXmlDescription(bytes, Length(chunk));
        return void(model.xml += chunk);
    case 5:
        chart.SetBinaryDataStream(bytes, Length(chunk));
        return void(model.data += chunk);
    case 6:
        chart.SetImageStream(bytes, Length(chunk));
        return void(model.image += chunk);
    case 7:
        chart.SetViZJSON(bytes, Length(chunk));
        return void(model.vizJson += chunk);
    case 8:
        chart.setVizJSONTemplate(bytes, Length(chunk));
        return void(model.vizTemplate += chunk);
    case 9:
        chart.SetXmlCompressedLength(Length(chunk));
        return;
    default:
        chart.deleteData();
        model.data.clear();
    }
}

/// A chunk that is a piece of the stream that it is appended to.
void AppendOwnPiece(OmChart& chart, Model& model, omfuzz::ByteDice& dice) {
    std::string const& data = chart.GetXmlData();
    std::string const& image = chart.GetImageData();
    std::size_t const from = dice.Below(data.size() + 1);
    std::size_t const length = dice.Below(data.size() - from + 1);
    std::size_t const imageFrom = dice.Below(image.size() + 1);
    std::size_t const imageLength = dice.Below(image.size() - imageFrom + 1);
    model.data += model.data.substr(from, length);
    model.image += model.image.substr(imageFrom, imageLength);
    chart.SetBinaryDataStream(data.data() + from, static_cast<unsigned int>(length));
    chart.SetImageStream(image.data() + imageFrom, static_cast<unsigned int>(imageLength));
}

void Compare(OmChart const& chart, Model const& model) {
    Require(chart.getCSVFileNames() == model.csv.names, "the names of the tables");
    Require(chart.getCSVFiles() == model.csv.contents, "the contents of the tables");
    Require(chart.hasCSVFile() == !model.csv.names.empty(), "a table is there when it has a name");
    Require(chart.getGeoJSONFileNames() == model.json.names, "the names of the maps");
    Require(chart.getGeoJSONContent() == model.json.contents, "the contents of the maps");
    Require(chart.hasGeoJSONFile() == !model.json.names.empty(), "a map is there when it has a name");
    Require(chart.GetXmlDescription() == model.xml, "the description");
    Require(chart.GetXmlData() == model.data, "the data");
    Require(chart.GetImageData() == model.image, "the image");
    Require(chart.GetViZJSONData() == model.vizJson, "the visualisation");
    Require(chart.getVizJSONTemplate() == model.vizTemplate, "the template of the visualisation");
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static OmStringCell const title("files", nullptr, false);
    omfuzz::ByteDice dice(data, size);
    OmChart chart(title, "", 1);
    Model model;
    std::size_t total = 0;
    while (!dice.Spent() && total < 4096) {
        std::size_t const operation = dice.Below(12);
        if (operation == 11) {
            AppendOwnPiece(chart, model, dice);
        } else {
            Change(chart, model, operation, dice.Text(12));
        }
        total = model.data.size() + model.image.size();
        Compare(chart, model);
    }
    return 0;
}
