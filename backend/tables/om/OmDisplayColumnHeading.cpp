#include "backend/tables/om/OmDisplayColumnHeading.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/HeadingLayout.h"

OmDisplayColumnHeading::OmDisplayColumnHeading(OmDisplayLayerHeading& layers, bool skipEmpty)
    : _layout(std::make_unique<om_detail::HeadingLayout>(layers, layers.Table().Columns(), layers.Table().Rows(),
                                                         skipEmpty, false)) {}

OmDisplayColumnHeading::~OmDisplayColumnHeading() = default;

int OmDisplayColumnHeading::NColumns() const { return _layout->Positions(); }

int OmDisplayColumnHeading::NRows() const { return _layout->Depth(); }

int OmDisplayColumnHeading::VisibleHeight(int i) const { return _layout->HeightAt(i); }

int OmDisplayColumnHeading::NDimensions() const { return _layout->NDimensions(); }

int OmDisplayColumnHeading::getDimensionIndex(int i) const { return _layout->DimensionAt(i); }

std::vector<unsigned long long> const& OmDisplayColumnHeading::getNonEmptyColumns() const {
    return _layout->NonEmpty();
}

std::deque<OmDisplayColumnHeading::ConstNode*> OmDisplayColumnHeading::Column(int c) { return _layout->Cells(c); }

std::deque<OmDisplayColumnHeading::ConstNode*> OmDisplayColumnHeading::Row(int r) { return _layout->Line(r); }

std::deque<OmDisplayColumnHeading::ConstNode*> OmDisplayColumnHeading::ColumnCategories(int c) {
    return _layout->Categories(c);
}

void OmDisplayColumnHeading::DimCatNodes(int c, std::vector<ConstNode*>& dimensions,
                                         std::vector<ConstNode*>& categories) const {
    _layout->DimCatNodes(c, dimensions, categories);
}

void OmDisplayColumnHeading::DimAllNodes(int c, std::vector<ConstNode*>& nodes) const {
    _layout->DimAllNodes(c, nodes);
}

void OmDisplayColumnHeading::Fill(std::vector<int>& index, int c) const { _layout->Fill(index, c); }

OmPivotTable& OmDisplayColumnHeading::Table() const { return _layout->Table(); }

bool OmDisplayColumnHeading::SkipEmpty() const { return _layout->SkipEmpty(); }
