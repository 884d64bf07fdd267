#ifndef OMTREE_H
#define OMTREE_H

/// The public face of omtree: the pivot table with its dimensions and display headings, the output parts, and the texts
/// that all of them are made of.

#include "backend/tables/Assert.h"
#include "backend/tables/MultiBase.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmDimensionNode.h"
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "backend/tables/om/OmFootnote.h"
#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmOutputPart.h"
#include "backend/tables/om/OmPageTitle.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmSort.h"
#include "backend/tables/om/OmTextBlock.h"
#include "backend/tables/om/OmUtility.h"
#include "backend/tables/om/OmVector.h"
#include "backend/tables/om/VectorTree.h"
#include "omcell/OmBlank.h"
#include "omcell/OmCellMetaData.h"
#include "omcell/OmCellProperties.h"
#include "omcell/OmCellText.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMemoryRegion.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmRegionManaged.h"
#include "omcell/OmStringCell.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"

#endif
