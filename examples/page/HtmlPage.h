#ifndef OMTREE_EXAMPLES_PAGE_HTMLPAGE_H
#define OMTREE_EXAMPLES_PAGE_HTMLPAGE_H

#include "examples/crosstab/Layout.h"

#include <cstddef>
#include <list>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace page {

/// One self-contained HTML page: style and script inside, nothing fetched, an outline to click beside the content.
/// Follows the reader's light or dark setting, and fits a screen 360 pixels wide: wide tables scroll inside themselves.
///
/// Content is added from top to bottom. Every text may hold anything: it is made harmless for a document and escaped
/// when the page is written. Texts are UTF-8.
class HtmlPage {
public:
    /// An empty page whose title is also its one first-level heading.
    explicit HtmlPage(std::string_view title);

    /// A heading of the outline; level 2 to 6, deeper ones are shown as 6. It can be clicked in the outline.
    /// Without a text it reads "(untitled)".
    void heading(unsigned int level, std::string_view text);

    void paragraph(std::string_view text, char const* style = nullptr);

    /// Lines as they stand, in type of one width.
    void lines(std::list<std::string> const& text, std::string_view label);

    /// A table, each layer of its own, titled for the eye only when the heading in front does not say the title
    /// already; when there are several, the reader chooses which is seen. Without scripts all are seen, one after
    /// another.
    void table(crosstab::LaidOutTable const& table);

    /// An SVG image from a byte stream. It is shown as an image, so that nothing inside it runs.
    void image(std::string_view svg, std::string_view alternativeText);

    /// Text in a block that the reader opens.
    void folded(std::string_view summary, std::string_view text);

    /// The whole document, in UTF-8.
    std::string text() const;

private:
    void layer(crosstab::LaidOutTable const& table, crosstab::LaidOutLayer const& layer, pugi::xml_node parent);
    void footnotes(crosstab::LaidOutTable const& table, pugi::xml_node parent);

    pugi::xml_document _document;
    pugi::xml_node _main;
    pugi::xml_node _outline;
    std::vector<pugi::xml_node> _outlineLists; ///< by heading level, from 2 on
    std::string _lastHeading;
    std::size_t _headings = 0;
    std::size_t _tables = 0;
};

} // namespace page

#endif
