#include "backend/tables/om/OmDisplayRowHeading.h"

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/HeadingLayout.h"

OmDisplayRowHeading::OmDisplayRowHeading(OmDisplayLayerHeading& layers, bool skipEmpty, bool dimNamesInCorner)
    : _layout(std::make_unique<om_detail::HeadingLayout>(layers, layers.Table().Rows(), layers.Table().Columns(),
                                                         skipEmpty, dimNamesInCorner)) {
    _layout->MakeCorner();
}

OmDisplayRowHeading::~OmDisplayRowHeading() = default;

int OmDisplayRowHeading::NRows() const { return _layout->Positions(); }

int OmDisplayRowHeading::NColumns() const { return _layout->Depth(); }

int OmDisplayRowHeading::VisibleWidth(int i) const { return _layout->HeightAt(i); }

int OmDisplayRowHeading::NDimensions() const { return _layout->NDimensions(); }

int OmDisplayRowHeading::getDimensionIndex(int i) const { return _layout->DimensionAt(i); }

std::vector<unsigned long long> const& OmDisplayRowHeading::getNonEmptyRows() const { return _layout->NonEmpty(); }

std::deque<OmDisplayRowHeading::ConstNode*> OmDisplayRowHeading::Row(int r) { return _layout->Cells(r); }

std::deque<OmDisplayRowHeading::ConstNode*> OmDisplayRowHeading::Column(int c) { return _layout->Line(c); }

std::deque<OmDisplayRowHeading::ConstNode*> OmDisplayRowHeading::RowCategories(int r) { return _layout->Categories(r); }

void OmDisplayRowHeading::DimCatNodes(int r, std::vector<ConstNode*>& dimensions,
                                      std::vector<ConstNode*>& categories) const {
    _layout->DimCatNodes(r, dimensions, categories);
}

void OmDisplayRowHeading::DimAllNodes(int r, std::vector<ConstNode*>& nodes) const { _layout->DimAllNodes(r, nodes); }

void OmDisplayRowHeading::Fill(std::vector<int>& index, int r) const { _layout->Fill(index, r); }

std::vector<OmCellText const*> OmDisplayRowHeading::CornerText() const { return _layout->Corner(); }

bool OmDisplayRowHeading::DimNamesInCorner() const { return _layout->DimNamesInCorner(); }

OmPivotTable& OmDisplayRowHeading::Table() const { return _layout->Table(); }

bool OmDisplayRowHeading::SkipEmpty() const { return _layout->SkipEmpty(); }
