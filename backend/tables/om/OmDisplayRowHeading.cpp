#include "backend/tables/om/OmDisplayRowHeading.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/HeadingLayout.h"

OmDisplayRowHeading::OmDisplayRowHeading(OmDisplayLayerHeading& layers, bool skipEmpty, bool dimNamesInCorner)
    : _layout(std::make_unique<om_detail::HeadingLayout>(layers, layers.Table().Rows(), layers.Table().Columns(),
                                                         skipEmpty, dimNamesInCorner)) {
    Layout().MakeCorner();
}

OmDisplayRowHeading::~OmDisplayRowHeading() = default;

om_detail::HeadingLayout& OmDisplayRowHeading::Layout() const {
    return static_cast<om_detail::HeadingLayout&>(*_layout);
}

int OmDisplayRowHeading::NColumns() const { return Layout().Depth(); }

int OmDisplayRowHeading::VisibleWidth(int i) const { return Layout().HeightAt(i); }

int OmDisplayRowHeading::NDimensions() const { return Layout().NDimensions(); }

int OmDisplayRowHeading::getDimensionIndex(int i) const { return Layout().DimensionAt(i); }

std::vector<unsigned long long> const& OmDisplayRowHeading::getNonEmptyRows() const { return Layout().NonEmpty(); }

std::deque<OmDisplayRowHeading::ConstNode*> OmDisplayRowHeading::Row(int r) { return Layout().Cells(r); }

std::deque<OmDisplayRowHeading::ConstNode*> OmDisplayRowHeading::Column(int c) { return Layout().Line(c); }

std::deque<OmDisplayRowHeading::ConstNode*> OmDisplayRowHeading::RowCategories(int r) { return Layout().Categories(r); }

void OmDisplayRowHeading::DimCatNodes(int r, std::vector<ConstNode*>& dimensions,
                                      std::vector<ConstNode*>& categories) const {
    Layout().DimCatNodes(r, dimensions, categories);
}

void OmDisplayRowHeading::DimAllNodes(int r, std::vector<ConstNode*>& nodes) const { Layout().DimAllNodes(r, nodes); }

std::vector<OmCellText const*> OmDisplayRowHeading::CornerText() const { return Layout().Corner(); }

bool OmDisplayRowHeading::DimNamesInCorner() const { return Layout().DimNamesInCorner(); }

OmPivotTable& OmDisplayRowHeading::Table() const { return Layout().Table(); }

bool OmDisplayRowHeading::SkipEmpty() const { return Layout().SkipEmpty(); }
