#include "backend/tables/om/OmDisplayColumnHeading.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/HeadingLayout.h"

OmDisplayColumnHeading::OmDisplayColumnHeading(OmDisplayLayerHeading& layers, bool skipEmpty)
    : _layout(std::make_unique<om_detail::HeadingLayout>(layers, layers.Table().Columns(), layers.Table().Rows(),
                                                         skipEmpty, false)) {}

OmDisplayColumnHeading::~OmDisplayColumnHeading() = default;

om_detail::HeadingLayout& OmDisplayColumnHeading::Layout() const {
    return static_cast<om_detail::HeadingLayout&>(*_layout);
}

int OmDisplayColumnHeading::NRows() const { return Layout().Depth(); }

int OmDisplayColumnHeading::VisibleHeight(int i) const { return Layout().HeightAt(i); }

int OmDisplayColumnHeading::NDimensions() const { return Layout().NDimensions(); }

int OmDisplayColumnHeading::getDimensionIndex(int i) const { return Layout().DimensionAt(i); }

std::vector<unsigned long long> const& OmDisplayColumnHeading::getNonEmptyColumns() const {
    return Layout().NonEmpty();
}

std::deque<OmDisplayColumnHeading::ConstNode*> OmDisplayColumnHeading::Column(int c) { return Layout().Cells(c); }

std::deque<OmDisplayColumnHeading::ConstNode*> OmDisplayColumnHeading::Row(int r) { return Layout().Line(r); }

std::deque<OmDisplayColumnHeading::ConstNode*> OmDisplayColumnHeading::ColumnCategories(int c) {
    return Layout().Categories(c);
}

void OmDisplayColumnHeading::DimCatNodes(int c, std::vector<ConstNode*>& dimensions,
                                         std::vector<ConstNode*>& categories) const {
    Layout().DimCatNodes(c, dimensions, categories);
}

void OmDisplayColumnHeading::DimAllNodes(int c, std::vector<ConstNode*>& nodes) const {
    Layout().DimAllNodes(c, nodes);
}

OmPivotTable& OmDisplayColumnHeading::Table() const { return Layout().Table(); }

bool OmDisplayColumnHeading::SkipEmpty() const { return Layout().SkipEmpty(); }
