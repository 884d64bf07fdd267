#include "examples/page/HtmlPage.h"

#include "examples/page/HtmlStyle.h"
#include "examples/page/HtmlText.h"

#include <algorithm>

namespace page {

using crosstab::CellKind;
using crosstab::LaidOutCell;
using crosstab::LaidOutLayer;
using crosstab::LaidOutTable;
using crosstab::LaidOutText;
using pugi::xml_node;

namespace {

constexpr unsigned int FirstLevel = 2;
constexpr unsigned int LastLevel = 6;

xml_node add(xml_node parent, char const* name, char const* style = nullptr) {
    xml_node const element = parent.append_child(name);
    if (style != nullptr) {
        xml_node(element).append_attribute("class").set_value(style);
    }
    return element;
}

void set(xml_node element, char const* name, std::string const& value) {
    element.append_attribute(name).set_value(value.c_str());
}

void addText(xml_node element, std::string_view text) {
    element.append_child(pugi::node_pcdata).set_value(documentText(text).c_str());
}

void addText(xml_node element, LaidOutText const& text) {
    addText(element, text.text);
    if (text.markers.empty()) {
        return;
    }
    std::string markers;
    for (std::string const& marker : text.markers) {
        markers += markers.empty() ? marker : "," + marker;
    }
    addText(add(element, "sup"), markers);
}

std::string numbered(char const* kind, std::size_t number) {
    std::string name = kind;
    name += std::to_string(number);
    return name;
}

std::string joined(std::vector<LaidOutText> const& texts) {
    std::string all;
    for (LaidOutText const& text : texts) {
        all += all.empty() ? text.text : ", " + text.text;
    }
    return all;
}

/// A cell of the grid. Headings name what they head: one row or column, or a group of them.
void addCell(xml_node row, LaidOutCell const& cell) {
    bool const isHeading = cell.kind != CellKind::Body && !cell.label.empty();
    xml_node const element = add(row, isHeading ? "th" : "td");
    std::string style;
    if (isHeading) {
        bool const isRow = cell.kind == CellKind::RowHeading;
        bool const isGroup = (isRow ? cell.rowSpan : cell.columnSpan) > 1;
        set(element, "scope", std::string(isRow ? "row" : "col") + (isGroup ? "group" : ""));
        style = cell.kind == CellKind::ColumnHeading && isGroup ? "over" : "";
    } else if (cell.kind != CellKind::Body) {
        style = "corner";
    }
    if (cell.isNumber || (cell.kind == CellKind::ColumnHeading && cell.columnSpan == 1)) {
        style = "number";
    }
    if (!style.empty()) {
        set(element, "class", style);
    }
    if (cell.rowSpan > 1) {
        set(element, "rowspan", std::to_string(cell.rowSpan));
    }
    if (cell.columnSpan > 1) {
        set(element, "colspan", std::to_string(cell.columnSpan));
    }
    addText(element, cell.label);
}

/// Whether an element's content stands as it is, and whether an element has no content and no end tag.
bool isRaw(std::string_view name) { return name == "style" || name == "script"; }
bool isVoid(std::string_view name) { return name == "meta" || name == "img"; }

void escape(std::string& out, std::string_view text, bool inAttribute) {
    for (char const c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += inAttribute ? "&quot;" : "\"";
            break;
        default:
            out += c;
        }
    }
}

/// Writes a node as HTML, which is not XML: no empty-element tags, and styles and scripts are not escaped. Pages are a
/// dozen elements deep at the most.
void write(std::string& out, xml_node node) {
    if (node.type() == pugi::node_pcdata) {
        std::string_view const parent = node.parent().name();
        if (isRaw(parent)) {
            out += node.value();
        } else {
            // A line break right behind the start tag of preformatted text would be dropped.
            if (parent == "pre" && node.value()[0] == '\n' && node.previous_sibling() == xml_node()) {
                out += '\n';
            }
            escape(out, node.value(), false);
        }
        return;
    }
    out += std::string("<") + node.name();
    for (pugi::xml_attribute const attribute : node.attributes()) {
        out += std::string(" ") + attribute.name() + "=\"";
        escape(out, attribute.value(), true);
        out += '"';
    }
    out += '>';
    if (isVoid(node.name())) {
        return;
    }
    for (xml_node const child : node.children()) {
        write(out, child);
    }
    out += std::string("</") + node.name() + ">";
    if (std::string_view const name = node.name(); name == "tr" || name == "p" || name == "li" || name == "div") {
        out += '\n';
    }
}

} // namespace

HtmlPage::HtmlPage(std::string_view title) {
    xml_node const html = add(_document, "html");
    set(html, "lang", "en");
    xml_node const head = add(html, "head");
    set(add(head, "meta"), "charset", "utf-8");
    xml_node const viewport = add(head, "meta");
    set(viewport, "name", "viewport");
    set(viewport, "content", "width=device-width, initial-scale=1");
    addText(add(head, "title"), title);
    add(head, "style").append_child(pugi::node_pcdata).set_value(StyleSheet);

    xml_node const body = add(html, "body");
    xml_node const all = add(body, "div", "page");
    addText(add(all, "h1"), title);
    xml_node const columns = add(all, "div", "columns");
    _outline = add(columns, "nav");
    set(_outline, "aria-label", "Outline");
    addText(add(_outline, "p", "outline-title"), "Outline");
    _main = add(columns, "main");
    add(body, "script").append_child(pugi::node_pcdata).set_value(Script);
}

void HtmlPage::heading(unsigned int level, std::string_view text) {
    level = std::clamp(level, FirstLevel, LastLevel);
    // A level is never skipped, neither by the headings nor by the outline's lists.
    level = std::min(level, FirstLevel + static_cast<unsigned int>(_outlineLists.size()));
    std::string const name = numbered("part-", ++_headings);
    xml_node const element = add(_main, numbered("h", level).c_str());
    set(element, "id", name);
    _lastHeading = text;
    // There would be nothing to click.
    std::string_view const shown = text.empty() ? "(untitled)" : text;
    addText(element, shown);

    std::size_t const depth = level - FirstLevel;
    if (_outlineLists.size() > depth + 1) {
        _outlineLists.resize(depth + 1);
    }
    if (_outlineLists.size() == depth) {
        _outlineLists.push_back(add(depth == 0 ? _outline : _outlineLists.back().last_child(), "ul"));
    }
    xml_node const link = add(add(_outlineLists.back(), "li"), "a");
    set(link, "href", "#" + name);
    addText(link, shown);
}

void HtmlPage::paragraph(std::string_view text, char const* style) { addText(add(_main, "p", style), text); }

void HtmlPage::lines(std::list<std::string> const& text, std::string_view label) {
    std::string all;
    for (std::string const& line : text) {
        all += line + "\n";
    }
    xml_node const block = add(_main, "pre");
    set(block, "tabindex", "0");
    set(block, "aria-label", documentText(label));
    addText(block, all);
}

void HtmlPage::table(LaidOutTable const& table) {
    ++_tables;
    xml_node const group = add(_main, "div", table.layers.size() > 1 ? "layers" : nullptr);
    if (table.layers.size() > 1) {
        std::string const name = numbered("layers-", _tables);
        xml_node const box = add(group, "div", "switch");
        set(box, "hidden", "hidden");
        xml_node const label = add(box, "label");
        set(label, "for", name);
        addText(label, "Layer");
        xml_node const select = add(box, "select");
        set(select, "id", name);
        for (LaidOutLayer const& one : table.layers) {
            addText(add(select, "option"), joined(one.labels));
        }
    }
    for (LaidOutLayer const& one : table.layers) {
        layer(table, one, add(group, "div", "layer"));
    }
    if (table.layers.empty()) {
        addText(add(group, "p", "table-caption"), "This table has no cells.");
    }
    if (!table.caption.empty()) {
        addText(add(group, "p", "table-caption"), table.caption);
    }
    footnotes(table, group);
}

void HtmlPage::layer(LaidOutTable const& table, LaidOutLayer const& layer, xml_node parent) {
    xml_node const scroll = add(parent, "div", "scroll");
    set(scroll, "tabindex", "0");
    set(scroll, "role", "region");
    set(scroll, "aria-label", documentText(table.title.text.empty() ? "Table" : table.title.text));
    xml_node const grid = add(scroll, "table");
    xml_node const caption = add(grid, "caption");
    bool const isSaid = table.title.text == _lastHeading && table.title.markers.empty();
    addText(isSaid ? add(caption, "span", "said") : caption, table.title);
    if (!layer.labels.empty()) {
        addText(add(caption, "span", "layer-labels"), joined(layer.labels));
    }
    xml_node const head = layer.headingRows > 0 ? add(grid, "thead") : xml_node();
    xml_node const body = layer.rows > layer.headingRows ? add(grid, "tbody") : xml_node();
    auto cell = layer.cells.begin();
    for (std::size_t row = 0; row < layer.rows; ++row) {
        xml_node const line = add(row < layer.headingRows ? head : body, "tr");
        for (; cell != layer.cells.end() && cell->row == row; ++cell) {
            addCell(line, *cell);
        }
    }
}

void HtmlPage::footnotes(LaidOutTable const& table, xml_node parent) {
    if (table.footnotes.empty()) {
        return;
    }
    xml_node const list = add(parent, "ul", "notes");
    for (crosstab::LaidOutFootnote const& footnote : table.footnotes) {
        xml_node const item = add(list, "li");
        addText(add(item, "sup"), footnote.marker);
        addText(item, " " + footnote.text);
    }
}

void HtmlPage::image(std::string_view svg, std::string_view alternativeText) {
    xml_node const figure = add(_main, "figure");
    xml_node const element = add(figure, "img");
    set(element, "src", "data:image/svg+xml;base64," + base64(svg));
    set(element, "alt", documentText(alternativeText));
    addText(add(figure, "figcaption"), alternativeText);
}

void HtmlPage::folded(std::string_view summary, std::string_view text) {
    xml_node const block = add(_main, "details");
    addText(add(block, "summary"), summary);
    xml_node const content = add(block, "pre");
    set(content, "tabindex", "0");
    addText(content, text);
}

std::string HtmlPage::text() const {
    std::string out = "<!DOCTYPE html>\n";
    write(out, _document.first_child());
    out += '\n';
    return out;
}

} // namespace page
